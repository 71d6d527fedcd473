#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

#include "effects/base/instruction_sets.h"
#include "effects/base/shared_samples.h"

/// Geometric effects whose source column depends on the column alone, and whose source row on the row alone.
namespace AVBased {

/// For each position of an axis the one that it shows.
using AxisMap = std::vector<unsigned>;

/// The map of a plane's axis that follows from luma's: of the luma positions that share a sample the last one decides.
inline AxisMap SharedMap(const AxisMap& luma, const SharedAxis& axis) {
    AxisMap map(axis.size);
    for (unsigned i = 0; i < axis.size; ++i) map[i] = std::min(luma[axis.Last(i)] >> axis.shift, axis.size - 1);
    return map;
}

/// Calls work(y, direction) for every row of a map that never falls, in an order in which no row is written before the
/// last other one that shows it: what moves up from the top down, then what moves down or stays from the bottom up.
template <class Work>
void ForEachRowInPlace(const AxisMap& rows, Work work) {
    for (unsigned y = 0; y < rows.size(); ++y)
        if (rows[y] > y) work(y, 1);
    for (unsigned y = unsigned(rows.size()); y-- > 0;)
        if (rows[y] <= y) work(y, -1);
}

/// The rows of a map that never falls. What moves up may be written in this order, what moves down in that one, and
/// both side by side, in turns of any kind; what stays follows after both.
struct InPlaceOrder {
    std::vector<unsigned> up, down, still;

    explicit InPlaceOrder(const AxisMap& rows) {
        ForEachRowInPlace(rows, [&](unsigned y, int) { (rows[y] > y ? up : rows[y] < y ? down : still).push_back(y); });
    }
};

/// Reads rows through a map of columns: to[x] = from[map[x]]. Rgba32 and bytes.
template <class Sample>
class RowSampler {
 public:
    static constexpr unsigned blockBytes = 32, blockSamples = blockBytes / sizeof(Sample);

    /// Every entry of the map lies below `width`, the samples of each row that will be read.
    RowSampler(AxisMap map, unsigned width, InstructionSet set);
    /// Writes to[begin] to to[end - 1]; the two rows do not overlap. What lies `ahead` bytes from the source is fetched
    /// on the way.
    void operator()(Sample* to, const Sample* from, unsigned begin, unsigned end, std::ptrdiff_t ahead = 0) const;
    void operator()(Sample* to, const Sample* from, std::ptrdiff_t ahead = 0) const {
        (*this)(to, from, 0, size(), ahead);
    }
    unsigned size() const { return unsigned(m_map.size()); }
    /// How many blocks from the first on are reached by one load each. There are none but for AVX2.
    unsigned EasyBlocks() const {
        const auto hard = [](const Block& block) { return block.loads != 1; };
        return unsigned(std::ranges::find_if(m_blocks, hard) - m_blocks.begin());
    }

 private:
    static constexpr unsigned mostLoads = 4;
    // How a vector of neighbours is read: `loads` vectors from each base on, then their lanes. 0: one by one.
    struct Block {
        std::uint32_t base[2], loads, lanes;
    };
    Block Describe(unsigned begin, unsigned width);
    void Each(Sample* to, const Sample* from, unsigned begin, unsigned end) const;
    void Blocks(Sample* to, const Sample* from, unsigned first, unsigned last, std::ptrdiff_t ahead) const;

    AxisMap m_map;
    std::vector<Block> m_blocks;
    std::vector<std::uint8_t> m_lanes;

#if defined(__x86_64__)
 public:
    /// Reads easy blocks as vectors, for work that goes on with them. A value, so that no store can change what it
    /// holds.
    class Vectors {
     public:
        explicit Vectors(const RowSampler& sampler)
            : m_blocks(sampler.m_blocks.data()), m_lanes(sampler.m_lanes.data()) {}
        __m256i operator()(std::size_t block, const Sample* from) const;

     private:
        const Block* m_blocks;
        const std::uint8_t* m_lanes;
    };
#endif
};

#if defined(__x86_64__)

template <class Sample>
[[NIFIKRAL_AVX2]] inline __m256i RowSampler<Sample>::Vectors::operator()(std::size_t block, const Sample* from) const {
    const std::uint32_t* const base = m_blocks[block].base;
    const __m256i lanes = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(m_lanes + block * blockBytes));
    if constexpr (sizeof(Sample) == 1) {
        const __m128i lower = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + base[0])),
                      upper = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + base[1]));
        return _mm256_shuffle_epi8(_mm256_inserti128_si256(_mm256_castsi128_si256(lower), upper, 1), lanes);
    } else {
        const __m256i near = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from + base[0]));
        return _mm256_permutevar8x32_epi32(near, lanes);
    }
}

#endif

}  // namespace AVBased
