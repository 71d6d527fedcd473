#include "effects/geometry/pixel_gather.h"

#include <algorithm>
#include <cstring>

#include "effects/base/streaming_stores.h"
#include "effects/geometry/pixel_gather_avx2.h"

namespace AVBased {
namespace {

// Past the last run, where the loops look ahead.
constexpr unsigned spareRuns = 8;

void GatherRuns(const PixelPlan& plan, std::size_t firstRun, unsigned count, const Rgba32* copy, Rgba32* to) {
    for (std::size_t run = firstRun; run < firstRun + count; ++run, to += runPixels) {
        const std::uint32_t base = plan.bases[run];
        if (base == PixelPlan::farApart) {
            const std::uint32_t* const positions = plan.PositionsOf(run);
            for (unsigned i = 0; i < runPixels; ++i) to[i] = copy[positions[i]];
        } else {
            const std::uint16_t* const offsets = plan.OffsetsOf(run);
            for (unsigned i = 0; i < runPixels; ++i) to[i] = copy[base + offsets[i]];
        }
    }
}

// Writes the base and the offsets of a run, unless its positions lie too far apart.
bool EncodeRun(const std::uint32_t* positions, std::uint32_t* base, std::uint16_t* offsets) {
    std::uint32_t least = positions[0], most = positions[0];
    for (unsigned i = 1; i < runPixels; ++i) {
        least = std::min(least, positions[i]);
        most = std::max(most, positions[i]);
    }
    if (most - least > UINT16_MAX) return false;
    *base = least;
    for (unsigned i = 0; i < runPixels; ++i) offsets[i] = std::uint16_t(positions[i] - least);
    return true;
}

// Whether the pixels of a run are their own sources, the first of which has the number `own`.
bool IsAtHome(const std::uint32_t* positions, std::uint32_t own) {
    std::uint32_t differences = 0;
    for (std::uint32_t i = 0; i < runPixels; ++i) differences |= positions[i] ^ (own + i);
    return differences == 0;
}

struct RunRow {
    std::uint32_t* bases;
    std::uint16_t* offsets;
    std::vector<std::uint32_t>& positions;
};

void EncodeRow(const std::uint32_t* row, unsigned runs, const RunRow& to) {
    for (std::size_t run = 0; run < runs; ++run) {
        const std::uint32_t* const positions = row + run * runPixels;
        std::uint16_t* const offsets = to.offsets + run * runPixels;
        if (EncodeRun(positions, to.bases + run, offsets)) continue;
        to.bases[run] = PixelPlan::farApart;
        const std::uint64_t index = to.positions.size();
        std::memcpy(offsets, &index, sizeof index);
        to.positions.insert(to.positions.end(), positions, positions + runPixels);
    }
}

}  // namespace

const std::uint32_t* PixelPlan::PositionsOf(std::size_t run) const {
    std::uint64_t index;
    std::memcpy(&index, OffsetsOf(run), sizeof index);
    return positions.data() + index;
}

PixelPlanner::PixelPlanner(const Box& target, unsigned width, unsigned height, InstructionSet set, PixelPlan spent)
    : m_plan(std::move(spent)), m_set(set) {
    m_plan.target = target;
    m_plan.width = width;
    m_plan.height = height;
    m_plan.rowRuns = unsigned((target.Width() + runPixels - 1) / runPixels);
    m_row.resize(std::size_t(m_plan.rowRuns) * runPixels);
    const std::size_t runs = m_plan.rowRuns * target.Height() + spareRuns;
    if (m_plan.runs < runs) {
        m_plan.runs = 0;
        m_plan.bases = std::make_unique_for_overwrite<std::uint32_t[]>(runs);
        m_plan.offsets = std::make_unique_for_overwrite<std::uint16_t[]>(runs * runPixels);
        m_plan.runs = runs;
    }
    std::fill_n(&m_plan.bases[runs - spareRuns], spareRuns, PixelPlan::farApart);
    m_plan.positions.clear();
    m_plan.positions.reserve(runs * runPixels);
    m_plan.spans.clear();
    m_plan.spans.reserve(target.Height());
}

void PixelPlanner::AddRow() {
    const std::size_t width = m_plan.target.Width(), y = m_plan.target.yBegin + m_plan.spans.size();
    Span span{0, m_plan.rowRuns};
    const auto own = std::uint32_t(y * m_plan.width + m_plan.target.xBegin);
    // A run that stands over the target's edge reads the last pixel again.
    for (std::size_t i = width; i < m_row.size(); ++i) m_row[i] = m_row[width - 1];
    const std::size_t firstRun = m_plan.spans.size() * m_plan.rowRuns;
    variantsOf<EncodeRow>.For(m_set)(
        m_row.data(), m_plan.rowRuns,
        {&m_plan.bases[firstRun], &m_plan.offsets[firstRun * runPixels], m_plan.positions});
    const auto stays = [&](unsigned run) {
        return width >= (run + std::size_t(1)) * runPixels &&
               IsAtHome(&m_row[std::size_t(run) * runPixels], own + run * runPixels);
    };
    while (span.begin < span.end && stays(span.begin)) ++span.begin;
    while (span.begin < span.end && stays(span.end - 1)) --span.end;
    m_plan.spans.push_back(span);
}

PixelPlan PixelPlanner::Finish(const Box& source) {
    m_plan.source = source.xBegin < source.xEnd ? source.ClippedTo(m_plan.width, m_plan.height) : Box{};
    return std::move(m_plan);
}

void GatherPixels(const PixelPlan& plan, const PackedView& picture, Rgba32 white, InstructionSet set) {
    const std::size_t width = plan.width, count = width * plan.height;
    const auto copy = std::make_unique_for_overwrite<Rgba32[]>(count + 1);
    copy[count] = white;
    for (std::size_t y = plan.source.yBegin; y < plan.source.yEnd; ++y)
        std::memcpy(&copy[y * width + plan.source.xBegin], picture.Row(y) + plan.source.xBegin,
                    plan.source.Width() * sizeof(Rgba32));
    const auto gather = variantsOf<GatherRuns, GatherRunsAvx2>.For(set);
    [[maybe_unused]] const StreamingStores stores;  // for the vectors of the gathers
    for (std::size_t row = 0; row < plan.spans.size(); ++row) {
        const Span span = plan.spans[row];
        if (span.IsEmpty()) continue;
        Rgba32* const to = picture.Row(plan.target.yBegin + row) + plan.target.xBegin;
        const std::size_t firstRun = row * plan.rowRuns;
        const auto whole = unsigned(plan.target.Width() / runPixels), end = std::min(span.end, whole);
        if (span.begin < end)
            gather(plan, firstRun + span.begin, end - span.begin, copy.get(), to + std::size_t(span.begin) * runPixels);
        if (span.end <= whole) continue;
        Rgba32 rest[runPixels];
        gather(plan, firstRun + whole, 1, copy.get(), rest);
        std::copy_n(rest, plan.target.Width() % runPixels, to + std::size_t(whole) * runPixels);
    }
}

}  // namespace AVBased
