#pragma once

#include <string>
#include <vector>

#include "host/run/effect_request.h"

namespace Nifikral {

/// Reads a chain. "@NAME" stands for the chain of a preset; a window and a region behind it go to all of its effects.
/// `file` is as Presets takes it, and not looked at without need. Throws usage errors.
std::vector<EffectRequest> ParseEffectRequests(const std::vector<std::string>& texts, const EffectModule& module,
                                               const std::string& file);

}  // namespace Nifikral
