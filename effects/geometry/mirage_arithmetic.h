#pragma once

#include <algorithm>

#include "effects/geometry/row_sampler.h"

/// What mirage makes of samples.
namespace AVBased {

/// What each position of an axis shows of the picture enlarged by factor / 200 about its middle, in 16.16 steps.
inline AxisMap ZoomMap(std::uint32_t factor, unsigned size) {
    const std::uint32_t zoom = (factor << 16) / 200, step = 0xC80000 / factor;
    std::uint32_t position = ((zoom * size >> 16) - size) * step >> 1;
    AxisMap map(size);
    for (unsigned& shown : map) {
        shown = std::min(position >> 16, size - 1);
        position += step;
    }
    return map;
}

/// `weight` is that of the enlarged sample, in 1/256.
inline std::uint16_t Mix(std::uint16_t own, std::uint16_t enlarged, std::uint16_t weight) {
    return std::uint16_t(std::uint16_t(own * std::uint16_t(256 - weight)) + std::uint16_t(enlarged * weight)) >> 8;
}

/// Deliberate: alpha is the copy's.
inline void BlendSamples(Rgba32* row, const Rgba32* enlarged, unsigned count, std::uint16_t weight, unsigned) {
    for (unsigned x = 0; x < count; ++x) {
        const Rgba32 own = row[x], copy = enlarged[x];
        row[x] = {std::uint8_t(Mix(own.blue, copy.blue, weight)), std::uint8_t(Mix(own.green, copy.green, weight)),
                  std::uint8_t(Mix(own.red, copy.red, weight)), copy.alpha};
    }
}

/// Deliberate: a sample is blended once for each luma position that it serves.
inline void BlendSamples(std::uint8_t* __restrict row, std::uint8_t* __restrict enlarged, unsigned count,
                         std::uint16_t weight, unsigned times) {
    for (unsigned n = 0; n < times; ++n)
        for (unsigned x = 0; x < count; ++x) enlarged[x] = std::uint8_t(Mix(row[x], enlarged[x], weight));
    std::copy_n(enlarged, count, row);
}

}  // namespace AVBased
