#include "effects/block_gather.h"
#include "effects/row_loops.h"

namespace AVBased {
namespace {

constexpr unsigned halfColumns = blockColumns / 2, halfSamples = blockSamples / 2;

struct Range {
    std::uint32_t least = UINT32_MAX, most = 0;

    std::uint32_t Length() const { return most - least; }
    void Include(const Range& other) {
        least = std::min(least, other.least);
        most = std::max(most, other.most);
    }
};

template <unsigned count>
Range RangeOf(const std::uint32_t* values) {
    Range range;
    for (unsigned i = 0; i < count; ++i) range.Include({values[i], values[i]});
    return range;
}

struct Reach {
    Range x, y;

    void Include(const Reach& other) {
        x.Include(other.x);
        y.Include(other.y);
    }
    bool FitsWindow() const { return x.Length() < windowColumns && y.Length() < windowRows; }
};

struct Band {
    const std::uint32_t *columns, *rows;
    std::size_t pitch;
    unsigned blocks;
};

struct Plane {
    std::uint32_t width, height, pitch;
};

// The sources of a block's left half, row by row, then of its right one.
struct BlockSources {
    std::uint32_t x[blockSamples], y[blockSamples];

    BlockSources(const Band& band, unsigned block) {
        for (unsigned half = 0; half < 2; ++half)
            for (unsigned row = 0; row < blockRows; ++row) {
                const std::size_t from = row * band.pitch + block * std::size_t(blockColumns) + half * halfColumns;
                const unsigned to = half * halfSamples + row * halfColumns;
                std::copy_n(band.columns + from, halfColumns, x + to);
                std::copy_n(band.rows + from, halfColumns, y + to);
            }
    }
    Reach HalfReach(unsigned half) const {
        return {RangeOf<halfSamples>(x + half * halfSamples), RangeOf<halfSamples>(y + half * halfSamples)};
    }
};

// Writes the data of a half for a window that begins at `reach`, or before it where the plane ends; answers the
// window's position. It lies inside the plane, since all of it is loaded.
std::uint32_t PickHalf(const BlockSources& from, unsigned half, const Reach& reach, const Plane& plane,
                       std::uint32_t* data) {
    const std::uint32_t left = std::min(reach.x.least, plane.width - windowColumns),
                        top = std::min(reach.y.least, plane.height - windowRows);
    auto* const picks = reinterpret_cast<std::uint8_t*>(data) + half * halfSamples;
    const std::uint32_t *const x = from.x + half * halfSamples, *const y = from.y + half * halfSamples;
    for (unsigned i = 0; i < halfSamples; ++i) picks[i] = std::uint8_t((y[i] - top) * windowColumns + (x[i] - left));
    return top * plane.pitch + left;
}

// The words of data that were written.
unsigned NumberBlock(const Band& band, unsigned index, const Plane& plane, SampleBlock& block, std::uint32_t* data) {
    std::uint32_t positions[blockSamples];
    for (unsigned row = 0; row < blockRows; ++row)
        for (unsigned column = 0; column < blockColumns; ++column) {
            const std::size_t at = row * band.pitch + index * std::size_t(blockColumns) + column;
            positions[row * blockColumns + column] = band.rows[at] * plane.pitch + band.columns[at];
        }
    const Range range = RangeOf<blockSamples>(positions);
    block.base[0] = block.base[1] = range.least;
    if (range.Length() > UINT16_MAX) {
        block.kind = SampleBlock::Kind::Far;
        std::copy_n(positions, blockSamples, data);
        return blockSamples;
    }
    block.kind = SampleBlock::Kind::Near;
    auto* const near = reinterpret_cast<std::uint16_t*>(data);
    for (unsigned i = 0; i < blockSamples; ++i) near[i] = std::uint16_t(positions[i] - range.least);
    return blockSamples / 2;
}

// Plans the blocks of a band, whose data begin at index `used`; moves that on and answers what the band reads.
template <bool windows>
Reach PlanBand(const Band& band, const Plane& plane, SampleBlock* blocks, std::uint32_t* data, std::size_t* used) {
    Reach bandReach;
    std::size_t at = *used;
    for (unsigned b = 0; b < band.blocks; ++b) {
        const BlockSources from(band, b);
        const Reach halves[] = {from.HalfReach(0), from.HalfReach(1)};
        Reach all = halves[0];
        all.Include(halves[1]);
        bandReach.Include(all);
        SampleBlock& block = blocks[b];
        block.white = 0;
        block.data = std::uint32_t(at) & 0x3FFFFFFF;
        if (windows && halves[0].FitsWindow() && halves[1].FitsWindow()) {
            const bool one = all.FitsWindow();
            block.kind = one ? SampleBlock::Kind::Window : SampleBlock::Kind::Windows;
            for (unsigned half = 0; half < 2; ++half)
                block.base[half] = PickHalf(from, half, one ? all : halves[half], plane, data + at);
            at += blockSamples / sizeof(std::uint32_t);
        } else {
            at += NumberBlock(band, b, plane, block, data + at);
        }
    }
    *used = at;
    return bandReach;
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
    m_plan.source = {width, 0, height, 0};
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

void BlockPlanner::AddBand(unsigned y, unsigned rows) {
    const std::size_t width = m_plan.target.Width();
    BlockPlan::Span span{0, m_plan.bandBlocks};
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

    const bool windows = m_set == InstructionSet::Avx2 && m_width >= windowColumns && m_height >= windowRows;
    const auto plan = (windows ? variantsOf<PlanBand<true>> : variantsOf<PlanBand<false>>).For(m_set);
    const Reach reach = plan({m_columns.data(), m_rows.data(), m_padded, m_plan.bandBlocks},
                             {m_width, m_height, std::uint32_t(m_plan.pitch)}, blocks, m_plan.data.get(), &m_used);
    Box& source = m_plan.source;
    source = {std::min(source.xBegin, reach.x.least), std::max(source.xEnd, reach.x.most + 1),
              std::min(source.yBegin, reach.y.least), std::max(source.yEnd, reach.y.most + 1)};

    for (unsigned row = 0; row < rows; ++row)
        for (std::size_t x = 0; x < width; ++x)
            if (m_white[row * m_padded + x])
                blocks[x / blockColumns].white |= 1u << (row * blockColumns + x % blockColumns);

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
