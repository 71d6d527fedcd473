#pragma once

#include <string>
#include <vector>

#include "host/catalogue/effect_module.h"

namespace Nifikral {

struct ListOptions {
    std::vector<std::string> words;  ///< what is looked for; "@" for presets alone; none: everything
    std::string presets;             ///< a file of presets; empty: the user's own
    bool json = false, names = false;
};

/// The effects that the module knows and the presets, by category, or one name a line, or the effects as JSON. Throws
/// a usage error when the words find nothing.
std::string ListEffects(const EffectModule& module, const ListOptions& options);
/// One effect's parameters, as JSON in the same form, or the chain of "@PRESET". Throws a usage error for a name that
/// is not known.
std::string DescribeEffect(const EffectModule& module, const std::string& name, const ListOptions& options);

}  // namespace Nifikral
