#pragma once

#include <cstdint>

#include "effects/base/fixed_point.h"

/// How brightness, contrast and saturation change tones.
namespace AVBased {

/// A straight line through tones: 127 becomes `middle`, each step from it counts slope / 256.
struct ToneLine {
    std::int32_t slope = 256, middle = 127;

    std::uint8_t operator()(std::int32_t tone) const { return ClampToByte((slope * (tone - 127) >> 8) + middle); }
};

struct PackedTones {
    const std::int32_t* table;  ///< what `line` makes of each byte
    ToneLine line;
    std::int32_t colourFactor;  ///< how far colours move from their mean, in 1/256
};

}  // namespace AVBased
