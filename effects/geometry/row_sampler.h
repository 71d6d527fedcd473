#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

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
    /// How a vector of neighbours is read: `loads` vectors from each base on, picked from by lanes that begin at an
    /// index. 0 loads: one by one.
    struct Block {
        std::uint32_t base[2], loads, lanes;
    };

    /// Every entry of the map lies below `width`, the samples of each row that will be read.
    RowSampler(AxisMap map, unsigned width, InstructionSet set);
    /// Writes to[begin] to to[end - 1]; the two rows do not overlap. What lies `ahead` bytes from the source is fetched
    /// on the way.
    void operator()(Sample* to, const Sample* from, unsigned begin, unsigned end, std::ptrdiff_t ahead = 0) const;
    void operator()(Sample* to, const Sample* from, std::ptrdiff_t ahead = 0) const {
        (*this)(to, from, 0, size(), ahead);
    }
    /// The same, sample by sample.
    void Each(Sample* to, const Sample* from, unsigned begin, unsigned end) const {
        for (unsigned x = begin; x < end; ++x) to[x] = from[m_map[x]];
    }
    unsigned size() const { return unsigned(m_map.size()); }
    /// Those that lie whole in the map. Only AVX2 has any.
    const Block* Blocks() const { return m_blocks.data(); }
    const std::uint8_t* Lanes() const { return m_lanes.data(); }
    /// How many blocks from the first on are reached by one load each.
    unsigned SingleLoadBlocks() const {
        const auto hard = [](const Block& block) { return block.loads != 1; };
        return unsigned(std::ranges::find_if(m_blocks, hard) - m_blocks.begin());
    }

 private:
    static constexpr unsigned mostLoads = 4;
    Block Describe(unsigned begin, unsigned width);

    AxisMap m_map;
    std::vector<Block> m_blocks;
    std::vector<std::uint8_t> m_lanes;
};

}  // namespace AVBased
