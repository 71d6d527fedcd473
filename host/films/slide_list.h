#pragma once

#include <string>
#include <vector>

#include "host/films/slide_pictures.h"

namespace Nifikral {

/// The slides of a list: on each line "FILE | SECONDS | CAPTION", of which the last two may be left out or empty. Names
/// are relative to the list's folder; a folder stands for what is in it. Empty lines and those that begin with # are
/// passed over. Throws errors that name the list, the line and the remedy.
std::vector<Slide> ReadSlideList(const std::string& path);

}  // namespace Nifikral
