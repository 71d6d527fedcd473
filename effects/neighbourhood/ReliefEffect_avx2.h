#pragma once

#include "effects/base/frame_views.h"
#include "effects/neighbourhood/relief_kernel.h"

/// Relief for AVX2.
namespace AVBased {

void ReliefRgba32EffectAvx2(PackedView picture, const ReliefKernel& kernel);
void ReliefComponentEffectAvx2(ComponentView plane, const ReliefKernel& kernel);

}  // namespace AVBased
