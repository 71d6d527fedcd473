#pragma once

#include <string>

#include "host/catalogue/effect_module.h"

namespace Nifikral {

/// All effects that the module knows, one a line or as JSON.
std::string ListEffects(const EffectModule& module, bool json);
/// One effect's parameters, as JSON in the same form. Throws a usage error for a name that the module does not know.
std::string DescribeEffect(const EffectModule& module, const std::string& name, bool json);

}  // namespace Nifikral
