#include "effects/geometry/row_sampler.h"

#include <algorithm>

#include "effects/geometry/row_sampler_avx2.h"

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
    if constexpr (hasAvx2Variants) SampleBlocksAvx2(*this, to, from, first, last, ahead);
    Each(to, from, last * blockSamples, end);
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

template class RowSampler<std::uint8_t>;
template class RowSampler<Rgba32>;

}  // namespace AVBased
