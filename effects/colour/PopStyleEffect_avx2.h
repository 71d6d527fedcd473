#pragma once

#include "effects/base/frame_views.h"
#include "effects/colour/PopStyleEffect.h"

/// The printing of pop art for AVX2.
namespace AVBased {

/// The numbers of the inks at corners, two for each cell. Whole vectors are read and written.
void InkCornersAvx2(std::uint8_t* numbers, const std::int16_t* upper, const std::int16_t* lower, unsigned cells,
                    const InkSteps& steps);

/// Each sample becomes the mean of the inks at its corners, of which `above` and `below` hold the numbers, count + 1
/// each.

void PrintSamplesAvx2(std::uint8_t* row, const std::uint8_t* above, const std::uint8_t* below, unsigned count,
                      const std::uint8_t (&inks)[mostInks]);
void PrintPixelsAvx2(Rgba32* row, const std::uint8_t* above, const std::uint8_t* below, unsigned count,
                     const std::uint32_t (&inks)[mostInks]);

}  // namespace AVBased
