#pragma once

#include <string>

#include "host/catalogue/effect_module.h"

namespace Nifikral {

struct InitOptions {
    std::string templateName, folder;
    bool overwrite = false;
};

/// Writes an example project for a menu template, and the pictures that it shows, into a folder. Returns the project's
/// file.
std::string WriteExampleProject(const InitOptions& options, const EffectModule& module);

}  // namespace Nifikral
