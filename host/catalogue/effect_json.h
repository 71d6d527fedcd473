#pragma once

#include <span>
#include <string>

#include "host/catalogue/effect_details.h"
#include "host/catalogue/presets.h"

namespace Nifikral {

/// The effects, and presets if they are to be in it, as docs/effects.schema.json describes.
std::string EffectsAsJson(std::span<const EffectDetails> effects);
std::string EffectsAsJson(std::span<const EffectDetails> effects, std::span<const Preset> presets);

/// That schema.
extern const char effectsSchema[];

}  // namespace Nifikral
