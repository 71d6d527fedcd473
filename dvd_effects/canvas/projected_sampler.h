#pragma once

#include "dvd_effects/canvas/placement.h"
#include "dvd_effects/canvas/tile_row.h"

namespace AVBased::Blending {

/// Where pixels of a stretch are on a layer, in parts of its pixels from the middle of its first one.
struct Positions {
    std::int32_t column[tileColumns + tileSlack], line[tileColumns + tileSlack];
};

/// A layer through a projection: four neighbours weighed by their distance and coverage, edges smooth over a pixel.
/// Places are projected first; from there on all is in whole numbers.
class ProjectedSampler {
 public:
    /// `projection` is borrowed, `opacity` out of 255.
    ProjectedSampler(PackedView layer, const Projection& projection, std::uint32_t opacity, InstructionSet set);

    /// Made where all that it calls can be compiled for the instruction set.
    operator SamplerRef() const;

    Span Reach(unsigned y, Span within) const;
    void Fill(unsigned x, unsigned y, unsigned count, TileRow& row, unsigned at) const;

 private:
    // Interpolates `count` entries, and up to tileSlack after them.
    using Resample = void (*)(const PackedView& layer, Positions& positions, unsigned count, TileRow& row, unsigned at);

    void Locate(unsigned x, unsigned y, unsigned count, Positions& to) const;
    // Lets entries near the edges, and beyond, show as far as these allow.
    void SmoothEdges(unsigned x, unsigned y, unsigned count, TileRow& row, unsigned at) const;

    PackedView m_layer;
    const Projection& m_projection;
    std::uint32_t m_opacity;  // out of 256
    InstructionSet m_set;
    Resample m_resample;
};

}  // namespace AVBased::Blending
