#pragma once

#include <optional>

#include "dvd_effects/canvas/placement.h"
#include "dvd_effects/canvas/tile_row.h"

namespace AVBased::Blending {

/// A layer on an upright rectangle, neither turned nor mirrored nor much smaller than it is: the common case of
/// ProjectedSampler, several times as fast. Two rows of the layer are mixed for each one of the frame, in whole
/// stretches, then neighbours along the row.
class StretchedSampler {
 public:
    /// Nothing for any other placement.
    static std::optional<StretchedSampler> Make(PackedView layer, const Placement& at, std::uint32_t opacity,
                                                InstructionSet set);

    /// Made where all that it calls can be compiled for the instruction set.
    operator SamplerRef() const;

    // Whole columns of the frame that the rectangle reaches.
    Span Reach(unsigned y, Span within) const;
    void Fill(unsigned x, unsigned y, unsigned count, TileRow& row, unsigned at) const;

    /// Four sums of a pixel, each of 255 * 128 at most: the colours times the coverage, and the coverage.
    struct Sums {
        std::uint16_t part[4];
    };

 private:
    static constexpr unsigned mostColumns = 2, mostWidth = 16384;

    // Mixes neighbours at so many places of a row of sums, which have 15 bits after the point, into entries that are
    // sums too. It may take up to tileSlack places more.
    using MixNeighbours = void (*)(const Sums* mixed, const std::int32_t* places, unsigned count, TileRow& row,
                                   unsigned at);

    void Mix(unsigned x, unsigned y, unsigned count, TileRow& row, unsigned at) const;
    void MixRows(unsigned y, std::int32_t first, unsigned count, Sums* to) const;
    void SmoothEnd(unsigned x, unsigned i, TileRow& row, unsigned at) const;

    PackedView m_layer;
    Spot m_least, m_most;
    double m_columnStep = 0, m_lineStep = 0;
    std::uint32_t m_opacity = 0;  // out of 256
    InstructionSet m_set = InstructionSet::Baseline;
    MixNeighbours m_mixNeighbours = nullptr;
};

}  // namespace AVBased::Blending
