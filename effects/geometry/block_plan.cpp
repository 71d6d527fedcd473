#include "effects/geometry/block_plan.h"

#include <cstring>

#include "effects/base/row_loops.h"
#include "effects/geometry/block_plan_avx2.h"

namespace AVBased {
namespace {

// Plans the blocks of a band, whose data begin at index `used`; advances it and returns what the band reads.
Box PlanBand(const BlockBand& band, const CopiedPlane& plane, SampleBlock* blocks, std::uint32_t* data,
             std::size_t* used) {
    for (unsigned b = 0; b < band.blocks; ++b) {
        SampleBlock& block = BeginBlock(blocks, b, *used);
        *used += PlanByPositions(band, b, plane, block, data + *used);
    }
    Box reach = nothing;
    const std::size_t count = std::size_t(band.blocks) * blockColumns;
    for (unsigned row = 0; row < blockRows; ++row)
        for (std::size_t i = row * band.pitch; i < row * band.pitch + count; ++i)
            reach = reach.JoinedTo({band.columns[i], band.columns[i] + 1, band.rows[i], band.rows[i] + 1});
    return reach;
}

// One bit for each of a block's flags in a row, which are 0 or 1.
std::uint32_t BitsOf(const std::uint8_t* flags) {
    std::uint64_t any;
    static_assert(sizeof any == blockColumns);
    std::memcpy(&any, flags, sizeof any);
    std::uint32_t bits = 0;
    if (any)
        for (unsigned i = 0; i < blockColumns; ++i) bits |= std::uint32_t(flags[i]) << i;
    return bits;
}

// An odd count of cache lines, so that the rows that a turned row crosses share no sets of the caches.
std::size_t CopyPitch(unsigned width) { return ((std::size_t(width) + cacheLine - 1) / cacheLine | 1) * cacheLine; }

}  // namespace

bool BlockPlanner::CanPlan(unsigned width, unsigned height) {
    // The index of a block's data has 30 bits.
    return std::uint64_t(CopyPitch(width)) * (std::uint64_t(height) + blockRows) < 1u << 30;
}

BlockPlanner::BlockPlanner(const Box& target, unsigned width, unsigned height, InstructionSet set)
    : m_width(width), m_height(height), m_set(set) {
    m_plan.target = target;
    m_plan.pitch = CopyPitch(width);
    m_plan.bandBlocks = unsigned((target.Width() + blockColumns - 1) / blockColumns);
    const std::size_t bands = (target.Height() + blockRows - 1) / blockRows, blocks = bands * m_plan.bandBlocks;
    m_plan.blocks = std::make_unique_for_overwrite<SampleBlock[]>(blocks);
    m_plan.data = std::make_unique_for_overwrite<std::uint32_t[]>(blocks * blockSamples);
    m_plan.spans.reserve(bands);
    m_padded = std::size_t(m_plan.bandBlocks) * blockColumns;
    m_columns.resize(m_padded * blockRows);
    m_rows.resize(m_padded * blockRows);
    m_white.resize(m_padded * blockRows);
}

BlockPlanner::Row BlockPlanner::Next() {
    if (m_bandRows == blockRows) AddBand();
    const std::size_t at = m_bandRows++ * m_padded;
    return {m_columns.data() + at, m_rows.data() + at, m_white.data() + at};
}

BlockPlan BlockPlanner::Finish() {
    if (m_bandRows) AddBand();
    return std::move(m_plan);
}

void BlockPlanner::AddBand() {
    const std::size_t width = m_plan.target.Width();
    const unsigned rows = std::exchange(m_bandRows, 0);
    if (width == 0) return;
    const unsigned y = unsigned(m_plan.target.yBegin + m_plan.spans.size() * blockRows);
    Span span{0, m_plan.bandBlocks};
    SampleBlock* const blocks = &m_plan.blocks[m_plan.spans.size() * m_plan.bandBlocks];

    // A block that stands over the target's edge reads the last samples again.
    const auto complete = [&](auto& values) {
        for (unsigned row = 0; row < rows; ++row)
            std::fill_n(&values[row * m_padded + width], m_padded - width, values[row * m_padded + width - 1]);
        for (unsigned row = rows; row < blockRows; ++row)
            std::copy_n(&values[(rows - 1) * m_padded], m_padded, &values[row * m_padded]);
    };
    complete(m_columns);
    complete(m_rows);

    const bool holdsWindows = m_width >= windowColumns && m_height >= windowRows;
    const auto& plan = holdsWindows ? variantsOf<PlanBand, PlanWindowsAvx2> : variantsOf<PlanBand>;
    const Box reach =
        plan.For(m_set)({m_columns.data(), m_rows.data(), m_padded, m_plan.bandBlocks},
                        {m_width, m_height, std::uint32_t(m_plan.pitch)}, blocks, m_plan.data.get(), &m_used);
    m_plan.source = m_plan.source.JoinedTo(reach);

    for (unsigned row = 0; row < rows; ++row)
        for (unsigned b = 0; b < m_plan.bandBlocks; ++b)
            blocks[b].white |= BitsOf(&m_white[row * m_padded + b * blockColumns]) << (row * blockColumns);

    const auto stays = [&](unsigned block) {
        for (unsigned row = 0; row < rows; ++row)
            for (unsigned column = 0; column < blockColumns; ++column) {
                const std::size_t x = block * std::size_t(blockColumns) + column, at = row * m_padded + x;
                if (x < width && (m_columns[at] != m_plan.target.xBegin + x || m_rows[at] != y + row)) return false;
            }
        return blocks[block].white == 0;
    };
    while (span.begin < span.end && stays(span.begin)) ++span.begin;
    while (span.begin < span.end && stays(span.end - 1)) --span.end;
    m_plan.spans.push_back(span);
}

}  // namespace AVBased
