#pragma once

#include <string>
#include <vector>

#include "host/disc/disc_page.h"
#include "host/disc/disc_project.h"
#include "host/disc/web_film.h"

namespace Nifikral {

/// Makes a folder that any browser opens without a server, from the finished films of the project, one for each, and
/// those of the menu's pages: `index.html`, and beside it `films` and `menus`. It stands under its name only when it is
/// complete. Files are linked where the file system can, else copied. Throws output errors.
void WriteWebDisc(const DiscProject& project, const std::vector<DiscPage>& pages, const std::vector<WebFilm>& films,
                  const std::vector<WebMenu>& menus, const std::string& output, bool overwrite);

/// Throws an output error when such a folder could not be made there.
void CheckWebOutput(const std::string& output, bool overwrite);

}  // namespace Nifikral
