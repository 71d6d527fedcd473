#pragma once

#include <string>
#include <vector>

#include "host/films/menu_project.h"

namespace Nifikral {

/// Where a button of a disc leads.
struct DiscTarget {
    enum class Kind { Film, Chapter, PlayAll, Page };
    Kind kind = Kind::Film;
    int film = 0;     ///< of the project, from 0
    int chapter = 0;  ///< of the film, from 0
    int page = 0;     ///< of the disc, from 0

    bool operator==(const DiscTarget&) const = default;
};

/// A button of a page. Its place is in stored pixels; the other buttons of the page are named by their numbers.
struct DiscButton {
    std::string caption;
    int x = 0, y = 0, width = 0, height = 0;
    DiscTarget target;
    int up = 0, down = 0, left = 0, right = 0;
};

/// One page of a disc's menus. Pages without a film belong to the disc, the first of them being the main menu; the
/// others show the chapters of their film.
struct DiscPage {
    std::string name;  ///< of its files, and in messages
    std::string templateName;
    MenuProject menu;
    std::vector<DiscButton> buttons;
    int film = -1;
};

/// Sets where each button's arrows lead: to the nearest one in that direction, from the last one round to the first.
void LinkButtons(std::vector<DiscButton>& buttons);

}  // namespace Nifikral
