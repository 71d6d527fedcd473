#pragma once

#include "effects/base/frame_views.h"

/// The tones of a print for AVX2.
namespace AVBased {

/// Of cells of 2 x 2 pixels, from two rows of pixels.
void TonesOfPixelsAvx2(std::int16_t* tones, const Rgba32* upper, const Rgba32* lower, unsigned cells);

}  // namespace AVBased
