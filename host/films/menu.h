#pragma once

#include <string>

#include "host/catalogue/effect_module.h"
#include "host/films/film.h"

namespace Nifikral {

struct MenuOptions {
    std::string templateName, project;
    FilmOptions film;
};

/// Makes a menu of a project file, after a check of all that the project says and names.
void RenderMenu(const MenuOptions& options, const EffectModule& module);

/// Throws a usage error for a name that is no menu template of the module.
void RequireMenuTemplate(const std::string& name, const EffectModule& module);

}  // namespace Nifikral
