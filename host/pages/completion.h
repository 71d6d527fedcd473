#pragma once

#include <span>
#include <string>

#include "host/catalogue/effect_details.h"
#include "host/pages/command_description.h"

namespace Nifikral {

/// Scripts by which a shell completes commands, options, their words, effects, parameters and their choices.
std::string BashCompletion(std::span<const CommandDescription> commands, std::span<const EffectDetails> effects);
std::string ZshCompletion(std::span<const CommandDescription> commands, std::span<const EffectDetails> effects);
std::string FishCompletion(std::span<const CommandDescription> commands, std::span<const EffectDetails> effects);

}  // namespace Nifikral
