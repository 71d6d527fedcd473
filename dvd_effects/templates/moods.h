#pragma once

#include <cstdint>
#include <string_view>

#include "dvd_effects/canvas/compositor.h"
#include "dvd_effects/canvas/painting.h"

/// The colours that templates have instead of their own.
namespace AVBased {

/// What the darkest and the brightest parts of a background become; what lies between, mixes them. Both are so bright,
/// or so dark, that dark texts, or bright ones, can be read on them.
struct MoodColours {
    Colour dark, bright;

    /// What one colour becomes, by its brightness.
    Colour Of(Colour own) const;
};

/// The property's values.
enum Mood : std::int32_t { moodOwn = 0, moodLight = 1, moodDark = 2 };

/// The colours of a template in a mood; null for its own.
const MoodColours* MoodOf(std::string_view templateName, std::int32_t mood);

/// Turns all of a canvas into such colours: its own darkest and brightest parts become the ends.
void Recolour(const Canvas& canvas, LayerKind kind, const MoodColours& colours);

}  // namespace AVBased
