#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "effects/geometry/pixel_gather.h"

/// A packed picture rewritten from itself where neighbours come from all over it, so that nearly every pixel read one
/// by one would wait for a line of its own. The pixels are taken part by part of the picture, each of which fits a near
/// cache, and put down in turn; then every one is fetched to its place, from as many places at a time as there are
/// parts.
namespace AVBased {

struct SortedPlan {
    static constexpr unsigned partPixels = 1 << 15;

    Box target;
    unsigned width = 0, height = 0;
    std::vector<std::size_t> ends;             ///< of the parts' pixels among all of them in turn
    std::unique_ptr<std::uint16_t[]> offsets;  ///< of the pixels in turn, within their parts
    std::unique_ptr<std::uint32_t[]> turns;    ///< of the target's pixels, row by row
};

/// Nothing for a plan whose neighbours mostly come from one another's neighbourhood, or that turns pixels white.
std::optional<SortedPlan> Sorted(const PixelPlan& plan);

/// Rewrites a picture of the planned size.
void GatherSorted(const SortedPlan& plan, const PackedView& picture, InstructionSet set);

}  // namespace AVBased
