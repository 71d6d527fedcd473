#pragma once

#include <functional>

#include "dvd_effects/canvas/layer.h"
#include "dvd_effects/canvas/placement.h"
#include "effects/base/box.h"

namespace AVBased {

struct WarpPlanes;

/// A layer on its way onto a frame.
struct Laying {
    const Layer& layer;
    Placement placement;
    Projection projection;  ///< of the placement, onto the layer, or onto the map where there is one
    std::uint8_t opacity;
    Box window;
    const WarpPlanes* map = nullptr;

    /// How much of the frame it covers at a place: 0 to 1.
    double CoverageAt(Spot at) const;
};

/// Sees what is laid on a canvas, in its order.
using LayingWatcher = std::function<void(const Laying&)>;

}  // namespace AVBased
