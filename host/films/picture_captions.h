#pragma once

#include <vector>

#include "host/films/label.h"
#include "host/films/menu_places.h"

namespace Nifikral {

/// A page's captions, one for each of its pictures that rest: below it, else above it, else on its lower end; all of
/// one size, in two lines where one is too long. `places` are those of the pictures and texts.
std::vector<Label> LayOutCaptions(const MenuProject& page, const std::vector<RestingPlace>& places);

}  // namespace Nifikral
