#pragma once

#include <memory>

#include "avbase/avbase_srcutils/avbase_crawvideoframe.h"
#include "dvd_effects/canvas/layer.h"
#include "effects/base/instruction_sets.h"

namespace AVBased {

/// What a picture of another shape than the frame leaves free: black bands; nothing, its edges are cut off; or bands
/// that hold a dark, blurred copy of it.
enum class SlideFit { Pad, Crop, Blur };

/// Fills `slide`, which is opaque black, with a picture of any shape and format; `frameRows` are the rows of the frame
/// on which it will be seen. Transparent parts stay black. Raises what LayerMaker raises.
void FitPicture(IRawVideoFrame& picture, SlideFit fit, unsigned frameRows, CRawVideoFrame& slide, InstructionSet set);

}  // namespace AVBased
