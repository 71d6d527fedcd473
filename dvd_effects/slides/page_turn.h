#pragma once

#include <cstdint>

#include "avbase/IRawVideoFrame.h"
#include "effects/base/instruction_sets.h"

namespace AVBased {

/// Turns a page over from the right: `page` is printed on it and `frame` holds what lies beneath, both of one format.
/// At t = 0 the page lies flat, at fixedOne it is gone. Its free corner, the lower right one, is lifted first; the page
/// bends around a cylinder whose axis becomes upright on its way to the left, and shows its back, pale with the print
/// shining through, shaded along the bend. It throws a soft shadow on both sides.
void TurnPage(IRawVideoFrame& frame, IRawVideoFrame& page, std::int64_t t, InstructionSet set);

}  // namespace AVBased
