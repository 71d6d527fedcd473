#include <cstring>

#include "effects/geometry/block_gather.h"
#include "effects/base/row_loops.h"

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace AVBased {
namespace {

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
};

struct Band {
    const std::uint32_t *columns, *rows;
    std::size_t pitch;
    unsigned blocks;
};

struct Plane {
    std::uint32_t width, height, pitch;
};

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

// The next block, whose data begin at index `at`.
SampleBlock& BeginBlock(SampleBlock* blocks, unsigned index, std::size_t at) {
    blocks[index].white = 0;
    blocks[index].data = std::uint32_t(at) & 0x3FFFFFFF;
    return blocks[index];
}

// Plans the blocks of a band, whose data begin at index `used`; moves that on and answers what the band reads.
Reach PlanNumbers(const Band& band, const Plane& plane, SampleBlock* blocks, std::uint32_t* data, std::size_t* used) {
    Reach reach;
    for (unsigned b = 0; b < band.blocks; ++b) {
        SampleBlock& block = BeginBlock(blocks, b, *used);
        *used += NumberBlock(band, b, plane, block, data + *used);
    }
    const std::size_t count = std::size_t(band.blocks) * blockColumns;
    for (unsigned row = 0; row < blockRows; ++row)
        for (std::size_t i = row * band.pitch; i < row * band.pitch + count; ++i) {
            reach.x.Include({band.columns[i], band.columns[i]});
            reach.y.Include({band.rows[i], band.rows[i]});
        }
    return reach;
}

#if defined(__x86_64__)

// Ranges of eight numbers by place, or of each half of eight in all its places.
struct Ranges {
    __m256i least, most;
};

[[NIFIKRAL_AVX2]] inline Ranges Joined(const Ranges& a, const Ranges& b) {
    return {_mm256_min_epu32(a.least, b.least), _mm256_max_epu32(a.most, b.most)};
}
template <int order>
[[NIFIKRAL_AVX2]] inline Ranges Shuffled(const Ranges& r) {
    return {_mm256_shuffle_epi32(r.least, order), _mm256_shuffle_epi32(r.most, order)};
}
[[NIFIKRAL_AVX2]] inline Ranges Swapped(const Ranges& r) {
    return {_mm256_permute2x128_si256(r.least, r.least, 1), _mm256_permute2x128_si256(r.most, r.most, 1)};
}
[[NIFIKRAL_AVX2]] inline Ranges OfHalves(const __m256i* rows) {
    Ranges range{rows[0], rows[0]};
    for (unsigned row = 1; row < blockRows; ++row) range = Joined(range, {rows[row], rows[row]});
    range = Joined(range, Shuffled<0x4E>(range));
    return Joined(range, Shuffled<0xB1>(range));
}
[[NIFIKRAL_AVX2]] inline bool FitWindows(const Ranges& x, const Ranges& y) {
    static_assert((windowColumns & (windowColumns - 1)) == 0 && (windowRows & (windowRows - 1)) == 0);
    const __m256i tooWide = _mm256_and_si256(_mm256_sub_epi32(x.most, x.least), _mm256_set1_epi32(-int(windowColumns)));
    const __m256i tooHigh = _mm256_and_si256(_mm256_sub_epi32(y.most, y.least), _mm256_set1_epi32(-int(windowRows)));
    const __m256i beyond = _mm256_or_si256(tooWide, tooHigh);
    return _mm256_testz_si256(beyond, beyond);
}
[[NIFIKRAL_AVX2]] inline Range Whole(const Ranges& ranges) {
    std::uint32_t least[8], most[8];
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(least), ranges.least);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(most), ranges.most);
    return {*std::min_element(least, least + 8), *std::max_element(most, most + 8)};
}

// The same with windows, wherever the sources of each half of a block lie in one.
[[NIFIKRAL_AVX2, gnu::flatten]] Reach PlanWindows(const Band& band, const Plane& plane, SampleBlock* blocks,
                                                  std::uint32_t* data, std::size_t* used) {
    static_assert(blockRows == 4 && blockColumns == 8 && windowColumns == 16);
    // A window lies inside the plane, since all of it is loaded.
    const __m256i lastLeft = _mm256_set1_epi32(int(plane.width - windowColumns)),
                  lastTop = _mm256_set1_epi32(int(plane.height - windowRows));
    const __m256i pitch = _mm256_set1_epi32(int(plane.pitch)), none = _mm256_setzero_si256();
    Ranges bandX{_mm256_set1_epi32(-1), none}, bandY = bandX;
    std::size_t at = *used;
    for (unsigned b = 0; b < band.blocks; ++b) {
        __m256i x[blockRows], y[blockRows];
        for (unsigned row = 0; row < blockRows; ++row) {
            const std::size_t from = row * band.pitch + b * std::size_t(blockColumns);
            x[row] = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(band.columns + from));
            y[row] = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(band.rows + from));
        }
        Ranges rangeX = OfHalves(x), rangeY = OfHalves(y);
        bandX = Joined(bandX, rangeX);
        bandY = Joined(bandY, rangeY);
        SampleBlock& block = BeginBlock(blocks, b, at);
        if (!FitWindows(rangeX, rangeY)) {
            at += NumberBlock(band, b, plane, block, data + at);
            continue;
        }
        const Ranges wholeX = Joined(rangeX, Swapped(rangeX)), wholeY = Joined(rangeY, Swapped(rangeY));
        block.kind = SampleBlock::Kind::Windows;
        if (FitWindows(wholeX, wholeY)) {
            block.kind = SampleBlock::Kind::Window;
            rangeX = wholeX;
            rangeY = wholeY;
        }
        const __m256i left = _mm256_min_epu32(rangeX.least, lastLeft), top = _mm256_min_epu32(rangeY.least, lastTop);
        const __m256i base = _mm256_add_epi32(_mm256_mullo_epi32(top, pitch), left);
        block.base[0] = std::uint32_t(_mm256_extract_epi32(base, 0));
        block.base[1] = std::uint32_t(_mm256_extract_epi32(base, 4));
        __m256i picks[blockRows];
        for (unsigned row = 0; row < blockRows; ++row)
            picks[row] =
                _mm256_add_epi32(_mm256_slli_epi32(_mm256_sub_epi32(y[row], top), 4), _mm256_sub_epi32(x[row], left));
        // Packing keeps to each half, as the block's data do.
        const __m256i upper = _mm256_packs_epi32(picks[0], picks[1]), lower = _mm256_packs_epi32(picks[2], picks[3]);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(data + at), _mm256_packus_epi16(upper, lower));
        at += blockSamples / sizeof(std::uint32_t);
    }
    *used = at;
    return {Whole(bandX), Whole(bandY)};
}

#endif

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

    auto* plan = variantsOf<PlanNumbers>.For(m_set);
#if defined(__x86_64__)
    if (m_set == InstructionSet::Avx2 && m_width >= windowColumns && m_height >= windowRows) plan = PlanWindows;
#endif
    const Reach reach = plan({m_columns.data(), m_rows.data(), m_padded, m_plan.bandBlocks},
                             {m_width, m_height, std::uint32_t(m_plan.pitch)}, blocks, m_plan.data.get(), &m_used);
    Box& source = m_plan.source;
    source = {std::min(source.xBegin, reach.x.least), std::max(source.xEnd, reach.x.most + 1),
              std::min(source.yBegin, reach.y.least), std::max(source.yEnd, reach.y.most + 1)};

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
