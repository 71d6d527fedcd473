#pragma once

#include <cstdint>

#include "avbase/IRawVideoFrame.h"
#include "effects/base/instruction_sets.h"

namespace AVBased {

/// A part of one axis, in pixels with 16 bits after the point: from `begin` on, `length` long.
struct FixedSpan {
    std::int64_t begin = 0, length = 0;
};

/// A rectangle between pixels.
struct FixedRegion {
    FixedSpan x, y;
};

/// All of a picture.
FixedRegion WholeRegion(unsigned width, unsigned height);

/// Draws the part `shown` of a picture so that it fills `place` on a frame of the same format, as far as both reach;
/// samples that `place` only touches count as inside, all others keep what they hold. Between the picture's samples it
/// is bilinear, in steps of 1/256; a part of the picture's own size at whole samples is copied. A picture without
/// samples is black. Sides are up to 16384, `place` is longer than 0.
void DrawView(IRawVideoFrame& frame, IRawVideoFrame& picture, const FixedRegion& shown, const FixedRegion& place,
              InstructionSet set);

}  // namespace AVBased
