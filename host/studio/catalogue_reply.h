#pragma once

#include <string>

#include "host/catalogue/effect_module.h"

namespace Nifikral {

/// All that forms are made from, as JSON: what `nifikral list --json` prints, and the words that the other commands
/// take.
std::string StudioCatalogue(const EffectModule& module);

}  // namespace Nifikral
