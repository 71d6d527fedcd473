#pragma once

#include "effects/geometry/pixel_gather.h"

namespace AVBased {

/// Writes so many whole runs of a plan, one after another.
void GatherRunsAvx2(const PixelPlan& plan, std::size_t firstRun, unsigned count, const Rgba32* copy, Rgba32* to);

}  // namespace AVBased
