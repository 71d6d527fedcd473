#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "effects/base/box.h"
#include "effects/base/instruction_sets.h"

/// A plane of bytes rewritten from itself, each sample from one that a plan names. Samples move in blocks: where the
/// sources of a block lie close together, a few loads and byte shuffles bring all of them at once.
namespace AVBased {

/// Blocks lie side by side in bands.
inline constexpr unsigned blockColumns = 8, blockRows = 4, blockSamples = blockColumns * blockRows;
/// What shuffles reach.
inline constexpr unsigned windowColumns = 16, windowRows = 8;

/// Where the samples of a block come from. Positions count samples of the copy that is read.
struct SampleBlock {
    enum class Kind : std::uint8_t {
        Window,   ///< bytes of row x 16 + column in the window at base[0]: the block's left half, then the right one
        Windows,  ///< the same with a window for each half
        Near,     ///< 16-bit positions from base[0] on, row by row
        Far       ///< 32-bit positions
    };

    std::uint32_t base[2];
    std::uint32_t white;  ///< one bit a sample, row by row: it turns white
    std::uint32_t data : 30;
    Kind kind : 2;
};

/// For one part of planes of one size.
struct BlockPlan {
    Box target;
    Box source = nothing;   ///< what the samples come from lies in here
    std::size_t pitch = 0;  ///< of the copy
    unsigned bandBlocks = 0;
    std::unique_ptr<SampleBlock[]> blocks;  ///< band by band
    std::unique_ptr<std::uint32_t[]> data;  ///< of the blocks, which know their index
    std::vector<Span> spans;                ///< the blocks of each band that change
};

/// Makes a plan from the top downwards.
class BlockPlanner {
 public:
    /// Where the sources of one row of the target go, all of them inside the plane, and a 1 in `white` for each sample
    /// that turns white, a 0 for the others.
    struct Row {
        std::uint32_t *columns, *rows;
        std::uint8_t* white;
    };

    BlockPlanner(const Box& target, unsigned width, unsigned height, InstructionSet set);

    /// Whether the positions in a plane can be counted.
    static bool CanPlan(unsigned width, unsigned height);

    /// For each row of the target in turn.
    Row Next();
    /// After all of them.
    BlockPlan Finish();

 private:
    void AddBand();

    BlockPlan m_plan;
    unsigned m_width, m_height;
    InstructionSet m_set;
    unsigned m_bandRows = 0;
    std::size_t m_padded, m_used = 0;
    std::vector<std::uint32_t> m_columns, m_rows;  // the sources of a band, in rows of whole blocks
    std::vector<std::uint8_t> m_white;
};

}  // namespace AVBased
