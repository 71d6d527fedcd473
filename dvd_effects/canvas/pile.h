#pragma once

#include <vector>

#include "dvd_effects/canvas/compositor.h"

namespace AVBased {

/// Layers that are laid on one another, and drawn when all are known: what opaque ones hide of those under them is left
/// out. The frame comes out as if each had been laid by itself.
class Pile {
 public:
    /// Lays a layer on top, as Canvas::LayTransformed does. It is borrowed until the pile is drawn; `isOpaque` says
    /// that all its pixels are.
    void Put(const Layer& layer, const Placement& placement, std::uint8_t opacity, bool isOpaque = false);
    void Draw(Canvas& canvas) const;

 private:
    struct Sheet {
        const Layer* layer;
        Placement placement;
        std::uint8_t opacity;
        bool hides;
        Spot least, most;
        Cover cover;
    };
    std::vector<Sheet> m_sheets;
};

}  // namespace AVBased
