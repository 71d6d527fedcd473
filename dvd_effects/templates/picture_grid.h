#pragma once

#include <algorithm>

#include "dvd_effects/canvas/layer.h"
#include "dvd_effects/canvas/placement.h"

/// Where on a menu pictures stand.
namespace AVBased {

/// An upright rectangle of the menu, in pixels and parts of them.
struct Region {
    double left = 0, top = 0, width = 0, height = 0;

    /// A place by its parts of the way across and down.
    Spot At(double across, double down) const { return {left + across * width, top + down * height}; }
    Spot Middle() const { return At(0.5, 0.5); }
    Region Shrunk(double across, double down) const {
        return {left + across, top + down, width - 2 * across, height - 2 * down};
    }
    /// How much larger a rectangle becomes that touches two sides from within.
    double ScaleOf(double itsWidth, double itsHeight) const { return std::min(width / itsWidth, height / itsHeight); }
};

/// Equal cells in rows for a number of pictures, of which no picture counts as one. Shapes are width by height.
class PictureGrid {
 public:
    /// Cells of this shape, `gap` pixels apart, as large as can be, all in the middle of a region. No row has two cells
    /// more than another; the first ones have one more.
    static PictureGrid Spaced(const Region& region, unsigned count, double shape, double gap);

    unsigned Columns() const { return m_columns; }
    unsigned Rows() const { return m_rows; }
    unsigned RowOf(unsigned index) const { return Find(index).row; }
    Region Cell(unsigned index) const;
    /// The middle of a cell; exactly the region's in a row or column of one.
    Spot MiddleOf(unsigned index) const;
    /// A cell in whole pixels, at least one and never above what a picture may have.
    FrameSize CellSize() const;

 private:
    struct Place {
        unsigned row = 0, column = 0;
    };
    PictureGrid(const Region& region, unsigned count, double gap);
    void SetCells(unsigned columns, unsigned rows, double width, double height);
    unsigned InRow(unsigned row) const;
    Place Find(unsigned index) const;

    Region m_region;
    Spot m_corner;  // of a full row of cells
    unsigned m_count, m_columns = 1, m_rows = 1;
    double m_gap, m_width = 0, m_height = 0;
};

}  // namespace AVBased
