#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "effects/instruction_sets.h"
#include "effects/shared_samples.h"

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

/// Reads rows through a map of columns: to[x] = from[map[x]]. Rgba32 and bytes.
template <class Sample>
class RowSampler {
 public:
    /// Every entry of the map lies below `width`, the samples of each row that will be read.
    RowSampler(AxisMap map, unsigned width, InstructionSet set);
    /// Writes to[begin] to to[end - 1]; the two rows do not overlap. What lies `ahead` bytes from the source is fetched
    /// on the way.
    void operator()(Sample* to, const Sample* from, unsigned begin, unsigned end, std::ptrdiff_t ahead = 0) const;
    void operator()(Sample* to, const Sample* from, std::ptrdiff_t ahead = 0) const {
        (*this)(to, from, 0, size(), ahead);
    }
    unsigned size() const { return unsigned(m_map.size()); }

 private:
    static constexpr unsigned blockBytes = 32, blockSamples = blockBytes / sizeof(Sample), mostLoads = 4;
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
};

}  // namespace AVBased
