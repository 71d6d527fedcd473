#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "effects/base/box.h"
#include "effects/base/frame_views.h"
#include "effects/base/instruction_sets.h"

/// A packed picture rewritten from itself, each pixel from one that a plan names.
namespace AVBased {

/// Rows are cut into runs, whose sources mostly lie within 16 bits of one another.
inline constexpr unsigned runPixels = 16;

/// Where the pixels of a part of a picture are taken from, ready for one size of picture. A position is y x width + x;
/// width x height means white.
struct PixelPlan {
    /// A run's base where its sources lie further apart.
    static constexpr std::uint32_t farApart = UINT32_MAX;

    Box target;
    Box source = nothing;  ///< what the copied pixels lie in
    unsigned width = 0, height = 0, rowRuns = 0;
    std::size_t runs = 0;                      ///< for which there is memory
    std::unique_ptr<std::uint32_t[]> bases;    ///< of the runs, row by row
    std::unique_ptr<std::uint16_t[]> offsets;  ///< each pixel's from its run's base
    std::vector<std::uint32_t> positions;      ///< of the pixels that lie far apart
    std::vector<Span> spans;                   ///< the runs of each row of the target that change

    const std::uint16_t* OffsetsOf(std::size_t run) const { return &offsets[run * runPixels]; }
    /// The positions of a run that is far apart, whose offsets hold the index.
    const std::uint32_t* PositionsOf(std::size_t run) const;
};

/// Makes a plan from the top downwards.
class PixelPlanner {
 public:
    /// Takes over the memory of a plan that is not needed any more: what has been touched before costs less.
    PixelPlanner(const Box& target, unsigned width, unsigned height, InstructionSet set, PixelPlan spent = {});

    /// For the positions of the next row of the target.
    std::uint32_t* Row() { return m_row.data(); }
    void AddRow();
    /// After all rows; `source` holds all that the plan reads.
    PixelPlan Finish(const Box& source);

 private:
    PixelPlan m_plan;
    InstructionSet m_set;
    std::vector<std::uint32_t> m_row;  // whole runs
};

/// Rewrites a picture of the planned size.
void GatherPixels(const PixelPlan& plan, const PackedView& picture, Rgba32 white, InstructionSet set);

}  // namespace AVBased
