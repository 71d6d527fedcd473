#pragma once

#include <string>
#include <vector>

#include "host/disc/dvd_script.h"

namespace Nifikral {

/// Reads a finished disc, a folder with VIDEO_TS or an image, as players do. Throws an error that names the first thing
/// that is otherwise than meant: titles, their lengths, chapters and languages, and the buttons of each menu.
void CheckDvd(const std::string& disc, const std::vector<DiscPage>& pages, const std::vector<MadeTitle>& titles);

}  // namespace Nifikral
