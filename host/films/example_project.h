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
    std::vector<std::string> pictures;  ///< of one's own, as a slideshow's inputs; none: drawn ones
    std::string title;                  ///< empty: the example's
    PictureStore* store = nullptr;      ///< where the pictures that were opened are kept
};

struct ExampleProject {
    std::string file;
    bool hasPages = false;  ///< more than one
};

/// The texts of a template's example, where the template leaves room for them on a menu of 1280 x 720: a title that is
/// made to fit its place, and what else there is.
std::vector<MenuText> ExampleTextsOf(const std::string& templateName, const std::string& title);

/// Writes an example project for a menu template into a folder, with the pictures that it shows where they are not
/// one's own: those stay where they are, and the project names them there. Throws input, output and usage errors.
ExampleProject WriteExampleProject(const InitOptions& options, const EffectModule& module);

}  // namespace Nifikral
