#include "effects/geometry/row_sampler_avx2.h"

#include "effects/base/vector_rows_avx2.h"

NIFIKRAL_BEGIN_AVX2

namespace AVBased {
namespace {

// The bytes that a shuffle takes from two 16-byte neighbourhoods; others become 0.
__m256i Pick(const std::uint8_t* lower, const std::uint8_t* upper, const std::uint8_t* lanes) {
    return _mm256_shuffle_epi8(LoadHalves(lower, upper), LoadVector(lanes));
}

// `lanes` of what the loads from a block's bases on bring, in turn.
__m256i PickBlock(const RowSampler<std::uint8_t>::Block& block, const std::uint8_t* from, const std::uint8_t* lanes) {
    const std::uint8_t *lower = from + block.base[0], *upper = from + block.base[1];
    __m256i picked = Pick(lower, upper, lanes);
    for (unsigned load = 1; load < block.loads; ++load)
        picked = _mm256_or_si256(picked, Pick(lower + 16 * load, upper + 16 * load, lanes + 32 * load));
    return picked;
}

__m256i PickBlock(const RowSampler<Rgba32>::Block& block, const Rgba32* from, const std::uint8_t* lanesAt) {
    const Rgba32* const base = from + block.base[0];
    const __m256i lanes = LoadVector(lanesAt);
    __m256i picked = _mm256_permutevar8x32_epi32(LoadVector(base), lanes);
    for (unsigned load = 1; load < block.loads; ++load) {
        const __m256i here = _mm256_cmpgt_epi32(lanes, _mm256_set1_epi32(int(8 * load - 1)));
        picked = _mm256_blendv_epi8(picked, _mm256_permutevar8x32_epi32(LoadVector(base + 8 * load), lanes), here);
    }
    return picked;
}

}  // namespace

template <class Sample>
void SampleBlocksAvx2(const RowSampler<Sample>& sampler, Sample* to, const Sample* from, unsigned first, unsigned last,
                      std::ptrdiff_t ahead) {
    constexpr unsigned blockSamples = RowSampler<Sample>::blockSamples;
    // Held here, where the stores below cannot change them.
    const auto* const blocks = sampler.Blocks();
    const std::uint8_t* const lanes = sampler.Lanes();
    for (unsigned b = first; b < last; ++b) {
        const typename RowSampler<Sample>::Block block = blocks[b];
        if (b % 2 == 0) PrefetchToRead(from + b * blockSamples, ahead);
        if (block.loads == 0)
            sampler.Each(to, from, b * blockSamples, (b + 1) * blockSamples);
        else
            StoreVector(to + b * blockSamples, PickBlock(block, from, lanes + block.lanes));
    }
}
template void SampleBlocksAvx2(const RowSampler<std::uint8_t>&, std::uint8_t*, const std::uint8_t*, unsigned, unsigned,
                               std::ptrdiff_t);
template void SampleBlocksAvx2(const RowSampler<Rgba32>&, Rgba32*, const Rgba32*, unsigned, unsigned, std::ptrdiff_t);

}  // namespace AVBased

NIFIKRAL_END_AVX2
