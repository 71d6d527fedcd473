#pragma once

#include <string>
#include <vector>

#include "host/films/menu_project.h"

namespace Nifikral {

/// How many pictures and videos a template that arranges them by itself shows well at once; 0: any number.
int UsualPerPage(const std::string& templateName);

/// The project cut into pages, at least one, with the numbers for "{page}" and "{pages}" in the texts.
std::vector<MenuProject> PagesOf(const MenuProject& project);

}  // namespace Nifikral
