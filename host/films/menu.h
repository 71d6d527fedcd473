#pragma once

#include <string>

#include "host/catalogue/effect_module.h"
#include "host/films/film.h"
#include "host/films/menu_project.h"

namespace Nifikral {

struct MenuOptions {
    std::string templateName, project;
    FilmOptions film;
    int page = 0;           ///< the one to make; 0: all
    bool loopOnly = false;  ///< only the part that repeats
};

/// Makes a menu of a project file, after a check of all that the project says and names; where it has several pages, a
/// film of each, under the output's name with the page's number.
void RenderMenu(const MenuOptions& options, const EffectModule& module);

/// Readies the film of one page. Throws usage errors, which begin with `name`.
PreparedFilm PrepareMenuPage(const MenuProject& page, const std::string& templateName, const EffectModule& module,
                             const std::string& name);
/// Makes the film of one page. `name` stands in what is printed of it.
void RenderMenuPage(const MenuProject& page, const std::string& templateName, const FilmOptions& options,
                    const EffectModule& module, const std::string& name);

/// The template that a project names; empty where it names none. Throws input and usage errors.
std::string TemplateOf(const std::string& project);

/// Throws a usage error for a name that is no menu template of the module.
void RequireMenuTemplate(const std::string& name, const EffectModule& module);

}  // namespace Nifikral
