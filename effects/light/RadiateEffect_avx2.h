#pragma once

#include "effects/light/radiate_axis.h"

namespace AVBased {

template <class Sample>
using RadiateRoutine = void(const RadiateAxis& columns, const RadiateAxis& rows, std::uint32_t bias,
                            const PlaneView<Sample>& to, const PlaneView<Sample>& from);

/// The plain routines, which stand beside the effect and serve axes too whose samples lie far apart.
RadiateRoutine<Rgba32> RadiateRgba32Effect;
RadiateRoutine<std::uint8_t> RadiateComponentEffect;
RadiateRoutine<Rgba32> RadiateRgba32EffectAvx2;
RadiateRoutine<std::uint8_t> RadiateComponentEffectAvx2;

}  // namespace AVBased
