#pragma once

#include <string>

#include "host/catalogue/effect_module.h"

namespace Nifikral {

struct ReferenceOptions {
    std::string photograph, page;
    bool overwrite = false;
};

/// Writes one page of all effects and generators: the photograph before and after each effect, a frame of each
/// generator's example, and all parameters. The pictures stand in the page itself.
void MakeReference(const ReferenceOptions& options, const EffectModule& module);

}  // namespace Nifikral
