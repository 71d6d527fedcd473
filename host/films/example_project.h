#pragma once

#include <string>
#include <vector>

#include "host/catalogue/effect_module.h"
#include "host/films/menu_project.h"

namespace Nifikral {

class PictureStore;

struct InitOptions {
    std::string templateName, folder;
    bool overwrite = false;
    std::vector<std::string> pictures = {};  ///< of one's own, as a slideshow's inputs; none: drawn ones
    std::string title = {};                  ///< empty: the example's
    std::string mood = {};                   ///< empty: the template's own
    PictureStore* store = nullptr;           ///< where the pictures that were opened are kept
};

struct ExampleProject {
    std::string file;
    bool hasPages = false;  ///< more than one
};

/// Writes an example project for a menu template into a folder, with the pictures that it shows where they are not
/// one's own: those stay where they are, and the project names them there. Throws input, output and usage errors.
ExampleProject WriteExampleProject(const InitOptions& options, const EffectModule& module);

}  // namespace Nifikral
