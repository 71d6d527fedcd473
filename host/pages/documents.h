#pragma once

#include <span>
#include <string>
#include <vector>

#include "host/catalogue/effect_details.h"
#include "host/pages/command_description.h"

namespace Nifikral {

/// What MakeDocument can make: the schema of the listings' JSON, manual pages, completions.
std::vector<std::string> DocumentNames();
/// Throws a usage error for a name that is none. `whole` is the command without a subcommand.
std::string MakeDocument(const std::string& name, const CommandDescription& whole,
                         std::span<const CommandDescription> commands, std::span<const EffectDetails> effects);

}  // namespace Nifikral
