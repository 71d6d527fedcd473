#pragma once

#include <vector>

#include "host/films/label.h"
#include "host/films/menu_places.h"

namespace Nifikral {

/// What is written over a page's frames and stands still there, all of it within the part that every screen shows.
struct ButtonList {
    std::vector<Label> buttons;   ///< they do not touch
    std::vector<Label> captions;  ///< of each picture that rests, below it if there is room
    bool hides = false;           ///< buttons lie on captions, on pictures that have one, or beside these on a text
};

/// The most that a page may have; players of discs know no more.
inline constexpr std::size_t mostButtons = 36;

/// Lays out the page's captions, and its buttons as large as they fit side by side and below one another where they
/// hide the least, in the colour of its first text. Words too long for their place are broken into two lines, or
/// written smaller, and at last cut, with a warning. Throws a usage error for more buttons than the frame has room for.
ButtonList LayOutButtons(const MenuProject& page, const MenuWatch& watch);

/// The list on a transparent picture of the size of the page's frames (BGRA, colours not multiplied by alpha).
FramePtr DrawButtons(const ButtonList& list, const Film& film);

}  // namespace Nifikral
