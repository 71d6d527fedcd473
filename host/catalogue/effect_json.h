#pragma once

#include <span>
#include <string>

#include "host/catalogue/effect_details.h"

namespace Nifikral {

/// The effects as docs/effects.schema.json tells.
std::string EffectsAsJson(std::span<const EffectDetails> effects);

/// That schema.
extern const char effectsSchema[];

}  // namespace Nifikral
