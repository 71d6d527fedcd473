#pragma once

#include "effects/base/frame_views.h"
#include "effects/geometry/block_plan.h"

namespace AVBased {

/// Rewrites a plane of the planned size. `set` is the planner's.
void GatherBlocks(const BlockPlan& plan, const ComponentView& plane, std::uint8_t white, InstructionSet set);

}  // namespace AVBased
