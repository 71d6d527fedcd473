#pragma once

#include <span>
#include <string>

#include "host/catalogue/effect_details.h"
#include "host/pages/command_description.h"

namespace Nifikral {

/// nifikral(1): all commands with their options. `whole` is the command without a subcommand.
std::string CommandManPage(const CommandDescription& whole, std::span<const CommandDescription> commands);
/// nifikral-effects(7): all effects with their parameters, by category.
std::string EffectsManPage(std::span<const EffectDetails> effects);

}  // namespace Nifikral
