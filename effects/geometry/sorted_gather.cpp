#include "effects/geometry/sorted_gather.h"

#include <algorithm>
#include <cstring>

#include "effects/base/streaming_stores.h"
#include "effects/geometry/sorted_gather_avx2.h"

namespace AVBased {
namespace {

template <class Place>
void Take(Rgba32* to, const Rgba32* from, const Place* places, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) to[i] = from[places[i]];
}

// Writes the positions of a plan's pixels, row by row over its target.
void WritePositions(const PixelPlan& plan, std::uint32_t* to) {
    for (std::size_t y = 0; y < plan.target.Height(); ++y)
        for (unsigned run = 0; run < plan.rowRuns; ++run) {
            const std::size_t at = y * plan.rowRuns + run;
            const unsigned count = unsigned(std::min<std::size_t>(runPixels, plan.target.Width() - run * runPixels));
            const std::uint32_t base = plan.bases[at];
            if (base == PixelPlan::farApart)
                std::copy_n(plan.PositionsOf(at), count, to);
            else
                std::transform(plan.OffsetsOf(at), plan.OffsetsOf(at) + count, to,
                               [base](std::uint16_t offset) { return base + offset; });
            to += count;
        }
}

}  // namespace

std::optional<SortedPlan> Sorted(const PixelPlan& plan) {
    constexpr unsigned part = SortedPlan::partPixels;
    const std::size_t pixels = plan.target.Width() * plan.target.Height();
    if (2 * plan.positions.size() < pixels) return std::nullopt;
    SortedPlan sorted{plan.target,
                      plan.width,
                      plan.height,
                      {},
                      std::make_unique_for_overwrite<std::uint16_t[]>(pixels),
                      std::make_unique_for_overwrite<std::uint32_t[]>(pixels)};
    std::uint32_t* const turns = sorted.turns.get();
    WritePositions(plan, turns);
    const std::uint32_t white = plan.width * plan.height;
    std::vector<std::size_t> begins(white / part + 2);
    for (std::size_t i = 0; i < pixels; ++i) {
        if (turns[i] == white) return std::nullopt;
        ++begins[turns[i] / part + 1];
    }
    for (std::size_t i = 1; i < begins.size(); ++i) begins[i] += begins[i - 1];
    for (std::size_t i = 0; i < pixels; ++i) {
        const std::uint32_t position = turns[i];
        const std::size_t turn = begins[position / part]++;
        sorted.offsets[turn] = std::uint16_t(position % part);
        turns[i] = std::uint32_t(turn);
    }
    // Its pixels have moved the mark from where a part begins to where it ends.
    begins.pop_back();
    sorted.ends = std::move(begins);
    return sorted;
}

void GatherSorted(const SortedPlan& plan, const PackedView& picture, InstructionSet set) {
    // Nothing is written before all has been taken, so that rows which follow one another need no copy.
    const std::size_t rowBytes = plan.width * sizeof(Rgba32);
    std::vector<Rgba32> copy;
    const Rgba32* from = picture.Row(0);
    if (picture.pitch != rowBytes) {
        copy.resize(std::size_t(plan.width) * plan.height);
        for (std::size_t y = 0; y < plan.height; ++y) std::copy_n(picture.Row(y), plan.width, &copy[y * plan.width]);
        from = copy.data();
    }
    const auto taken = std::make_unique_for_overwrite<Rgba32[]>(plan.target.Width() * plan.target.Height());
    const auto take = variantsOf<Take<std::uint16_t>, TakePixelsAvx2>.For(set);
    for (std::size_t part = 0, begin = 0; part < plan.ends.size(); begin = plan.ends[part++])
        if (begin < plan.ends[part])
            take(&taken[begin], from + part * SortedPlan::partPixels, &plan.offsets[begin], plan.ends[part] - begin);
    const auto fetch = variantsOf<Take<std::uint32_t>, FetchPixelsAvx2>.For(set);
    [[maybe_unused]] const StreamingStores stores;  // for the vectors of the gathers
    for (std::size_t y = 0; y < plan.target.Height(); ++y)
        fetch(picture.Row(plan.target.yBegin + y) + plan.target.xBegin, taken.get(),
              &plan.turns[y * plan.target.Width()], plan.target.Width());
}

}  // namespace AVBased
