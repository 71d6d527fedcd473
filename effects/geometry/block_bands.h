#pragma once

#include <algorithm>
#include <cstdint>

#include "effects/geometry/block_plan.h"

/// How the blocks of one band are planned.
namespace AVBased {

/// Where the sources of a band lie, in rows of whole blocks.
struct BlockBand {
    const std::uint32_t *columns, *rows;
    std::size_t pitch;  ///< of these rows, in entries
    unsigned blocks;
};

/// The size of a plane, and the pitch of the copy that is read.
struct CopiedPlane {
    std::uint32_t width, height, pitch;
};

/// Begins the next block, whose data will stand at index `at`.
inline SampleBlock& BeginBlock(SampleBlock* blocks, unsigned index, std::size_t at) {
    blocks[index].white = 0;
    blocks[index].data = std::uint32_t(at) & 0x3FFFFFFF;
    return blocks[index];
}

/// Plans a block by positions, which serve however far apart they lie, and returns the number of words of data written.
inline unsigned PlanByPositions(const BlockBand& band, unsigned index, const CopiedPlane& plane, SampleBlock& block,
                                std::uint32_t* data) {
    std::uint32_t positions[blockSamples];
    for (unsigned row = 0; row < blockRows; ++row)
        for (unsigned column = 0; column < blockColumns; ++column) {
            const std::size_t at = row * band.pitch + index * std::size_t(blockColumns) + column;
            positions[row * blockColumns + column] = band.rows[at] * plane.pitch + band.columns[at];
        }
    std::uint32_t least = UINT32_MAX, most = 0;
    for (const std::uint32_t position : positions) {
        least = std::min(least, position);
        most = std::max(most, position);
    }
    block.base[0] = block.base[1] = least;
    if (most - least > UINT16_MAX) {
        block.kind = SampleBlock::Kind::Far;
        std::copy_n(positions, blockSamples, data);
        return blockSamples;
    }
    block.kind = SampleBlock::Kind::Near;
    auto* const near = reinterpret_cast<std::uint16_t*>(data);
    for (unsigned i = 0; i < blockSamples; ++i) near[i] = std::uint16_t(positions[i] - least);
    return blockSamples / 2;
}

}  // namespace AVBased
