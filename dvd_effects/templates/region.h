#pragma once

#include <algorithm>

#include "dvd_effects/canvas/placement.h"

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

}  // namespace AVBased
