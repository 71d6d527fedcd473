#pragma once

#include "effects/base/instruction_sets.h"
#include "effects/base/shared_samples.h"
#include "effects/geometry/magnifier_arithmetic.h"

namespace AVBased {

/// Magnifies what lies under a glass in one plane of bytes or pixels, in place.
template <class Sample>
void MagnifyPlane(const Glass& glass, const SharedAxis& across, const SharedAxis& down, const PlaneView<Sample>& plane,
                  Mixing mixing, InstructionSet set);

}  // namespace AVBased
