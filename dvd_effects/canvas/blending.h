#pragma once

#include <span>

#include "dvd_effects/canvas/placement.h"
#include "dvd_effects/canvas/tile_row.h"

/// The arithmetic of the canvas, for every frame layout.
namespace AVBased::Blending {

/// Blends what a sampler shows in a box of a frame over it. What lies under covers may be left out.
using Covers = std::span<const Cover>;
void Blend(const PackedView& frame, const Box& box, const SamplerRef& sampler, Covers covers, InstructionSet set);
void Blend(const PlanarView& frame, const Box& box, const SamplerRef& sampler, Covers covers, InstructionSet set);

}  // namespace AVBased::Blending
