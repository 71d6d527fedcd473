#include "effects/geometry/block_gather.h"

#include <bit>
#include <cstring>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace AVBased {
namespace {

struct BlockPlace {
    std::uint8_t* data;
    std::size_t pitch;
    std::uint8_t* Row(unsigned y) const { return data + y * pitch; }
};

template <class Position>
void MoveEach(const Position* from, const std::uint8_t* source, const BlockPlace& to) {
    for (unsigned row = 0; row < blockRows; ++row) {
        std::uint8_t* const out = to.Row(row);
#pragma GCC unroll 8
        for (unsigned column = 0; column < blockColumns; ++column) out[column] = source[*from++];
    }
}

#if defined(__x86_64__)

// A window's row for each half of a block. Where both read one window, one load serves both.
template <bool shared>
[[NIFIKRAL_AVX2]] inline __m256i PickFromRow(__m256i picks, const std::uint8_t* left, const std::uint8_t* right) {
    const __m128i l = _mm_loadu_si128(reinterpret_cast<const __m128i*>(left));
    if constexpr (shared) return _mm256_shuffle_epi8(_mm256_broadcastsi128_si256(l), picks);
    const __m128i r = _mm_loadu_si128(reinterpret_cast<const __m128i*>(right));
    return _mm256_shuffle_epi8(_mm256_inserti128_si256(_mm256_castsi128_si256(l), r, 1), picks);
}

template <bool shared>
[[NIFIKRAL_AVX2]] inline void MoveWindows(const std::uint32_t* data, const std::uint8_t* left,
                                          const std::uint8_t* right, std::size_t pitch, const BlockPlace& to) {
    const __m256i picks = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(data));
    __m256i rows[windowRows];
    for (unsigned y = 0; y < windowRows; ++y) rows[y] = PickFromRow<shared>(picks, left + y * pitch, right + y * pitch);
    // The row's three bits stand above the column's four; each in turn is brought to the top, where a blend looks.
    const __m256i bits[] = {_mm256_slli_epi16(picks, 3), _mm256_slli_epi16(picks, 2), _mm256_slli_epi16(picks, 1)};
    unsigned count = windowRows;
    for (const __m256i bit : bits) {
        count /= 2;
        for (unsigned i = 0; i < count; ++i) rows[i] = _mm256_blendv_epi8(rows[2 * i], rows[2 * i + 1], bit);
    }
    const __m128i l = _mm256_castsi256_si128(rows[0]), r = _mm256_extracti128_si256(rows[0], 1);
    const __m128i upper = _mm_unpacklo_epi32(l, r), lower = _mm_unpackhi_epi32(l, r);
    const __m128i samples[blockRows] = {upper, _mm_unpackhi_epi64(upper, upper), lower,
                                        _mm_unpackhi_epi64(lower, lower)};
    for (unsigned row = 0; row < blockRows; ++row)
        _mm_storel_epi64(reinterpret_cast<__m128i*>(to.Row(row)), samples[row]);
}

#endif

void MoveBlock(const BlockPlan& plan, const SampleBlock& block, const std::uint8_t* source, std::uint8_t white,
               const BlockPlace& to) {
    const std::uint32_t* const data = &plan.data[block.data];
    const std::uint8_t *const first = source + block.base[0], *const second = source + block.base[1];
    switch (block.kind) {
#if defined(__x86_64__)
        case SampleBlock::Kind::Window:
            MoveWindows<true>(data, first, first, plan.pitch, to);
            break;
        case SampleBlock::Kind::Windows:
            MoveWindows<false>(data, first, second, plan.pitch, to);
            break;
#endif
        case SampleBlock::Kind::Near:
            MoveEach(reinterpret_cast<const std::uint16_t*>(data), first, to);
            break;
        default:
            MoveEach(data, source, to);
    }
    for (std::uint32_t bits = block.white; bits; bits &= bits - 1) {
        const unsigned bit = unsigned(std::countr_zero(bits));
        to.Row(bit / blockColumns)[bit % blockColumns] = white;
    }
}

// Rewrites the samples from `to` on, `rows` of them under each other.
void MoveBand(const BlockPlan& plan, std::size_t band, const std::uint8_t* source, std::uint8_t white,
              const BlockPlace& to, unsigned rows) {
    const SampleBlock* const blocks = &plan.blocks[band * plan.bandBlocks];
    const BlockPlan::Span span = plan.spans[band];
    const unsigned width = unsigned(plan.target.Width()), whole = rows == blockRows ? width / blockColumns : 0;
    unsigned b = span.begin;
    for (; b < std::min(span.end, whole); ++b)
        MoveBlock(plan, blocks[b], source, white, {to.data + std::size_t(b) * blockColumns, to.pitch});
    for (; b < span.end; ++b) {
        std::uint8_t samples[blockSamples];
        MoveBlock(plan, blocks[b], source, white, {samples, blockColumns});
        const unsigned x = b * blockColumns;
        for (unsigned row = 0; row < rows; ++row)
            std::memcpy(to.Row(row) + x, samples + row * blockColumns, std::min(blockColumns, width - x));
    }
}

}  // namespace

void GatherBlocks(const BlockPlan& plan, const ComponentView& plane, std::uint8_t white, InstructionSet set) {
    const auto copy = std::make_unique_for_overwrite<std::uint8_t[]>(plan.pitch * plane.height);
    if (plan.source.xBegin < plan.source.xEnd)
        for (std::size_t y = plan.source.yBegin; y < plan.source.yEnd; ++y)
            std::memcpy(&copy[y * plan.pitch + plan.source.xBegin], plane.Row(y) + plan.source.xBegin,
                        plan.source.Width());
    const auto moveBand = variantsOf<MoveBand>.For(set);
    for (std::size_t band = 0; band < plan.spans.size(); ++band) {
        const std::size_t y = plan.target.yBegin + band * blockRows;
        moveBand(plan, band, copy.get(), white, {plane.Row(y) + plan.target.xBegin, plane.pitch},
                 std::min(blockRows, unsigned(plan.target.yEnd - y)));
    }
}

}  // namespace AVBased
