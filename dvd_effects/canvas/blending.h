#pragma once

#include <span>

#include "dvd_effects/canvas/placement.h"
#include "dvd_effects/canvas/tile_row.h"

/// The arithmetic of the canvas, for every frame layout.
namespace AVBased::Blending {

/// A rectangle of a frame, within it.
struct Box {
    unsigned left = 0, top = 0, right = 0, bottom = 0;

    /// The part of a rectangle that lies on a frame.
    static Box Clip(std::int64_t x, std::int64_t y, std::int64_t width, std::int64_t height, unsigned frameWidth,
                    unsigned frameHeight) {
        const auto within = [](std::int64_t value, unsigned end) {
            return unsigned(std::clamp<std::int64_t>(value, 0, end));
        };
        return {within(x, frameWidth), within(y, frameHeight), within(x + width, frameWidth),
                within(y + height, frameHeight)};
    }
};

/// Blends what a sampler shows in a box of a frame over it. What lies under covers may be left out.
using Covers = std::span<const Cover>;
void Blend(const PackedView& frame, const Box& box, const SamplerRef& sampler, Covers covers, InstructionSet set);
void Blend(const PlanarView& frame, const Box& box, const SamplerRef& sampler, Covers covers, InstructionSet set);

}  // namespace AVBased::Blending
