#include "effects/geometry/row_sampler.h"

#include <algorithm>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

#include "effects/base/row_loops.h"

namespace AVBased {

template <class Sample>
RowSampler<Sample>::RowSampler(AxisMap map, unsigned width, InstructionSet set) : m_map(std::move(map)) {
    if (set != InstructionSet::Avx2) return;
    m_blocks.reserve(m_map.size() / blockSamples);
    for (unsigned x = 0; x + blockSamples <= m_map.size(); x += blockSamples) m_blocks.push_back(Describe(x, width));
}

template <class Sample>
void RowSampler<Sample>::operator()(Sample* to, const Sample* from, unsigned begin, unsigned end,
                                    std::ptrdiff_t ahead) const {
    const unsigned first = (begin + blockSamples - 1) / blockSamples,
                   last = std::min(end / blockSamples, unsigned(m_blocks.size()));
    if (first >= last) return Each(to, from, begin, end);
    Each(to, from, begin, first * blockSamples);
    Blocks(to, from, first, last, ahead);
    Each(to, from, last * blockSamples, end);
}

template <class Sample>
void RowSampler<Sample>::Each(Sample* to, const Sample* from, unsigned begin, unsigned end) const {
    for (unsigned x = begin; x < end; ++x) to[x] = from[m_map[x]];
}

// Bytes are picked within halves of a vector, each half from its own base; words across the whole vector.
template <class Sample>
typename RowSampler<Sample>::Block RowSampler<Sample>::Describe(unsigned begin, unsigned width) {
    constexpr unsigned parts = sizeof(Sample) == 1 ? 2 : 1, partSamples = blockSamples / parts;
    Block block{{0, 0}, 1, std::uint32_t(m_lanes.size())};
    for (unsigned part = 0; part < parts; ++part) {
        const auto [least, most] =
            std::minmax_element(&m_map[begin] + part * partSamples, &m_map[begin] + (part + 1) * partSamples);
        block.base[part] = *least;
        block.loads = std::max(block.loads, (*most - *least) / partSamples + 1);
    }
    const unsigned reach = block.loads * partSamples;
    if (block.loads > mostLoads || reach > width) return {{0, 0}, 0, 0};
    for (unsigned part = 0; part < parts; ++part) block.base[part] = std::min(block.base[part], width - reach);
    const auto offset = [&](unsigned i) { return m_map[begin + i] - block.base[i / partSamples]; };
    if constexpr (sizeof(Sample) == 1) {
        for (unsigned load = 0; load < block.loads; ++load)
            for (unsigned i = 0; i < blockSamples; ++i)
                m_lanes.push_back(offset(i) / partSamples == load ? std::uint8_t(offset(i) % partSamples) : 0x80);
    } else {
        for (unsigned i = 0; i < blockSamples; ++i)
            for (unsigned byte = 0; byte < 4; ++byte) m_lanes.push_back(byte ? 0 : std::uint8_t(offset(i)));
    }
    return block;
}

#if defined(__x86_64__)

namespace {

// The bytes that a shuffle takes from two 16-byte neighbourhoods; others become 0.
[[NIFIKRAL_AVX2]] inline __m256i Pick(const std::uint8_t* lower, const std::uint8_t* upper, const std::uint8_t* lanes) {
    const __m256i both =
        _mm256_inserti128_si256(_mm256_castsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(lower))),
                                _mm_loadu_si128(reinterpret_cast<const __m128i*>(upper)), 1);
    return _mm256_shuffle_epi8(both, _mm256_loadu_si256(reinterpret_cast<const __m256i*>(lanes)));
}

[[NIFIKRAL_AVX2]] inline __m256i Words(const Rgba32* from) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
}

}  // namespace

template <>
[[NIFIKRAL_AVX2]] void RowSampler<std::uint8_t>::Blocks(std::uint8_t* to, const std::uint8_t* from, unsigned first,
                                                        unsigned last, std::ptrdiff_t ahead) const {
    // Held here, where the stores below cannot change them.
    const Block* const blocks = m_blocks.data();
    const std::uint8_t* const allLanes = m_lanes.data();
    for (unsigned b = first; b < last; ++b) {
        const Block block = blocks[b];
        if (b % 2 == 0) PrefetchToRead(from + b * blockSamples, ahead);
        if (block.loads == 0) {
            Each(to, from, b * blockSamples, (b + 1) * blockSamples);
            continue;
        }
        const std::uint8_t *lower = from + block.base[0], *upper = from + block.base[1];
        const std::uint8_t* lanes = allLanes + block.lanes;
        __m256i picked = Pick(lower, upper, lanes);
        for (unsigned load = 1; load < block.loads; ++load)
            picked = _mm256_or_si256(picked, Pick(lower + 16 * load, upper + 16 * load, lanes + 32 * load));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(to + b * blockSamples), picked);
    }
}

template <>
[[NIFIKRAL_AVX2]] void RowSampler<Rgba32>::Blocks(Rgba32* to, const Rgba32* from, unsigned first, unsigned last,
                                                  std::ptrdiff_t ahead) const {
    // Held here, where the stores below cannot change them.
    const Block* const blocks = m_blocks.data();
    const std::uint8_t* const allLanes = m_lanes.data();
    for (unsigned b = first; b < last; ++b) {
        const Block block = blocks[b];
        if (b % 2 == 0) PrefetchToRead(from + b * blockSamples, ahead);
        if (block.loads == 0) {
            Each(to, from, b * blockSamples, (b + 1) * blockSamples);
            continue;
        }
        const Rgba32* const base = from + block.base[0];
        const __m256i lanes = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(allLanes + block.lanes));
        __m256i picked = _mm256_permutevar8x32_epi32(Words(base), lanes);
        for (unsigned load = 1; load < block.loads; ++load) {
            const __m256i here = _mm256_cmpgt_epi32(lanes, _mm256_set1_epi32(int(8 * load - 1)));
            picked = _mm256_blendv_epi8(picked, _mm256_permutevar8x32_epi32(Words(base + 8 * load), lanes), here);
        }
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(to + b * blockSamples), picked);
    }
}

#else

template <class Sample>
void RowSampler<Sample>::Blocks(Sample* to, const Sample* from, unsigned first, unsigned last, std::ptrdiff_t) const {
    Each(to, from, first * blockSamples, last * blockSamples);
}

#endif

template class RowSampler<std::uint8_t>;
template class RowSampler<Rgba32>;

}  // namespace AVBased
