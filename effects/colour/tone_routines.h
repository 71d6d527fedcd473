#pragma once

#include <cstdint>

#include "effects/base/fixed_point.h"
#include "effects/base/frame_views.h"

/// The routines of brightness, contrast and saturation for each instruction set.
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

struct ToneRoutines {
    void (*component)(ComponentView plane, ToneLine line);
    void (*tonesRgba32)(PackedView picture, const PackedTones& tones);
    void (*coloursRgba32)(PackedView picture, const PackedTones& tones);
};

extern const ToneRoutines plainToneRoutines;
#if defined(__x86_64__)
extern const ToneRoutines avx2ToneRoutines;
#else
inline const ToneRoutines& avx2ToneRoutines = plainToneRoutines;
#endif

}  // namespace AVBased
