#pragma once

#include <algorithm>

#include "dvd_effects/canvas/placement.h"

/// Where on a menu pictures stand.
namespace AVBased {

/// A rectangle of the menu, in pixels.
struct StageArea {
    double left = 0, top = 0, width = 0, height = 0;

    double Right() const { return left + width; }
    double Bottom() const { return top + height; }
    /// A place by its parts of the way across and down.
    Spot At(double across, double down) const { return {left + across * width, top + down * height}; }
    Spot Middle() const { return At(0.5, 0.5); }
    StageArea Shrunk(double across, double down) const {
        return {left + across, top + down, width - 2 * across, height - 2 * down};
    }
    /// How much larger a rectangle becomes that touches two sides from within.
    double ScaleOf(double itsWidth, double itsHeight) const { return std::min(width / itsWidth, height / itsHeight); }
};

/// Equal cells for any number of pictures, row by row; a last row that is not full stands in the middle.
struct Grid {
    StageArea area;
    unsigned count = 1, columns = 1, rows = 1;

    /// As many columns as let rectangles with this ratio of width to height become largest.
    static Grid For(unsigned count, const StageArea& area, double aspect = 1.5) {
        Grid best{area, std::max(1u, count)};
        double largest = 0;
        for (unsigned columns = 1; columns <= best.count; ++columns) {
            const unsigned rows = (best.count + columns - 1) / columns;
            const double size = std::min(area.width / columns / aspect, area.height / rows);
            if (size <= largest) continue;
            largest = size;
            best.columns = columns;
            best.rows = rows;
        }
        return best;
    }

    StageArea Cell(unsigned index) const {
        const unsigned row = index / columns, inRow = row + 1 < rows ? columns : count - row * columns;
        const double width = area.width / columns, height = area.height / rows;
        const double indent = (columns - inRow) * width / 2;
        return {area.left + indent + index % columns * width, area.top + row * height, width, height};
    }
};

}  // namespace AVBased
