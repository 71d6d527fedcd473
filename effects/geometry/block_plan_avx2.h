#pragma once

#include "effects/geometry/block_bands.h"

namespace AVBased {

/// PlanBand with windows, wherever the sources of each half of a block lie in one. The plane holds a window.
Box PlanWindowsAvx2(const BlockBand& band, const CopiedPlane& plane, SampleBlock* blocks, std::uint32_t* data,
                    std::size_t* used);

}  // namespace AVBased
