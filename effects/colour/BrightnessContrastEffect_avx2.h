#pragma once

#include "effects/base/frame_views.h"
#include "effects/colour/tone_line.h"

/// The routines of brightness, contrast and saturation for AVX2.
namespace AVBased {

void ChangeTonesComponentAvx2(ComponentView plane, ToneLine line);
void ChangeTonesRgba32Avx2(PackedView picture, const PackedTones& tones);
void ChangeColoursRgba32Avx2(PackedView picture, const PackedTones& tones);

}  // namespace AVBased
