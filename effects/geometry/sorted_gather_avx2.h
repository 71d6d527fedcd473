#pragma once

#include "effects/base/frame_views.h"

namespace AVBased {

/// to[i] = from[places[i]]
void TakePixelsAvx2(Rgba32* to, const Rgba32* from, const std::uint16_t* places, std::size_t count);
/// The same past the caches, where `to` begins a vector.
void FetchPixelsAvx2(Rgba32* to, const Rgba32* from, const std::uint32_t* places, std::size_t count);

}  // namespace AVBased
