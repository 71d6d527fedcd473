#include "effects/geometry/mirage_rows_avx2.h"

#include "effects/base/vector_rows_avx2.h"

NIFIKRAL_BEGIN_AVX2

namespace AVBased {
namespace {

// A block of the enlarged row that one load brings.
__m256i LoadBlock(const RowSampler<std::uint8_t>::Block& block, const std::uint8_t* lanes, const std::uint8_t* from) {
    return _mm256_shuffle_epi8(LoadHalves(from + block.base[0], from + block.base[1]), LoadVector(lanes));
}
__m256i LoadBlock(const RowSampler<Rgba32>::Block& block, const std::uint8_t* lanes, const Rgba32* from) {
    return _mm256_permutevar8x32_epi32(LoadVector(from + block.base[0]), LoadVector(lanes));
}

// Mixes bytes with enlarged ones, in bytes less 128; the weights, 51 to 205, fit the unsigned side of the products.
class VectorMix {
 public:
    explicit VectorMix(std::uint16_t weight) : m_weights(_mm256_set1_epi16(short(256 - weight + (weight << 8)))) {}

    template <unsigned times>
    __m256i Mixed(__m256i own, __m256i enlarged) const {
        own = Less128(own);
        enlarged = Less128(enlarged);
        const __m256i low = MixedPairs<times>(_mm256_unpacklo_epi8(own, enlarged)),
                      high = MixedPairs<times>(_mm256_unpackhi_epi8(own, enlarged));
        return Less128(_mm256_packs_epi16(low, high));
    }

 private:
    // The upper byte of a sum is the enlarged half of the next pair.
    template <unsigned times>
    __m256i MixedPairs(__m256i pairs) const {
        __m256i sums = _mm256_maddubs_epi16(m_weights, pairs);
#pragma GCC unroll 16
        for (unsigned n = 1; n < times; ++n)
            sums = _mm256_maddubs_epi16(m_weights, _mm256_blendv_epi8(pairs, sums, _mm256_set1_epi16(short(0xFF00))));
        return _mm256_srai_epi16(sums, 8);
    }

    __m256i m_weights;
};

// Holds copies of what it reads, which no store can change.
template <unsigned times, class Sample>
struct BlockBlend {
    using Sampler = RowSampler<Sample>;
    const typename Sampler::Block* blocks;
    const std::uint8_t* lanes;
    VectorMix mix;

    void operator()(const RowInWork<Sample>& work, std::size_t block) const {
        const std::size_t x = block * Sampler::blockSamples;
        PrefetchToRead(work.from + x, work.ahead);
        const __m256i copy = LoadBlock(blocks[block], lanes + block * Sampler::blockBytes, work.from);
        const __m256i mixed = mix.Mixed<times>(LoadVector(work.row + x), copy);
        StoreVector(work.row + x, sizeof(Sample) == 4 ? OnColours(copy, mixed) : mixed);
    }
};

template <unsigned times, class Sample>
void BlendBlocks(const Overlay<Sample>& overlay, RowsInWork<Sample> rows) {
    const BlockBlend<times, Sample> blend{overlay.sampler.Blocks(), overlay.sampler.Lanes(), VectorMix(overlay.weight)};
    const RowInWork<Sample> first = rows.front(), second = rows.back();
    const std::size_t blocks = overlay.blocks;
    if (rows.size() == rowsTogether) {
        for (std::size_t b = 0; b < blocks; ++b) {
            blend(first, b);
            blend(second, b);
        }
    } else {
        for (std::size_t b = 0; b < blocks; ++b) blend(first, b);
    }
}

}  // namespace

template <class Sample>
void BlendRowsAvx2(const Overlay<Sample>& overlay, RowsInWork<Sample> rows) {
    const unsigned times = overlay.across.Count(0) * rows.front().lumaRows;
    unsigned done = overlay.blocks * RowSampler<Sample>::blockSamples;
    if (times == 1)
        BlendBlocks<1>(overlay, rows);
    else if (times == 2)
        BlendBlocks<2>(overlay, rows);
    else if (times == 4)
        BlendBlocks<4>(overlay, rows);
    else if (times == 16)
        BlendBlocks<16>(overlay, rows);
    else
        done = 0;
    for (const RowInWork<Sample>& work : rows) BlendRest(overlay, work, done);
}
template void BlendRowsAvx2(const Overlay<std::uint8_t>& overlay, RowsInWork<std::uint8_t> rows);
template void BlendRowsAvx2(const Overlay<Rgba32>& overlay, RowsInWork<Rgba32> rows);

}  // namespace AVBased

NIFIKRAL_END_AVX2
