#pragma once

#include "effects/base/fixed_point.h"
#include "effects/base/frame_views.h"

/// The brightness of packed pixels as a row of its own, to be worked on like luma.
namespace AVBased {

inline void TonesOfPixels(const Rgba32* row, std::uint8_t* __restrict tones, unsigned width) {
    for (unsigned x = 0; x < width; ++x) {
        const std::uint32_t p = LoadWord(row + x);
        tones[x] = std::uint8_t((29 * Blue(p) + 150 * Green(p) + 77 * Red(p)) >> 8);
    }
}

/// Gives each pixel the tone `changed` in place of its own `tones`, and `kept` 256ths of what sets its colours apart
/// from its tone.
inline void ChangeTones(Rgba32* row, const std::uint8_t* __restrict changed, const std::uint8_t* __restrict tones,
                        unsigned width, int kept) {
    for (unsigned x = 0; x < width; ++x) {
        const std::uint32_t p = LoadWord(row + x);
        const auto colour = [=](std::uint32_t c) {
            return std::uint32_t(ClampToByte(changed[x] + ((int(c) - tones[x]) * kept >> 8)));
        };
        StoreWord(row + x, WithAlphaOf(p, colour(Blue(p)), colour(Green(p)), colour(Red(p))));
    }
}

}  // namespace AVBased
