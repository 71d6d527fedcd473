#pragma once

#include <vector>

#include "host/films/menu_places.h"
#include "host/media/ffmpeg_handles.h"

namespace Nifikral {

/// A page's buttons that are texts: as large as they fit side by side and below one another a tenth of the frame away
/// from its edges, where they hide the least.
struct ButtonList {
    std::vector<FilmBox> boxes;  ///< of each, its shade included; they do not touch
    std::vector<StyledText> texts;
    unsigned shade = 0;  ///< behind each of them, as 0xAARRGGBB
};

/// The most that a page may have; players of discs know no more.
inline constexpr std::size_t mostButtons = 36;

/// Lays out the page's buttons, none for a page that has none, in the style of its first text. A text too long for its
/// place is cut, with a warning. Throws a usage error for more buttons than the frame has room for.
ButtonList LayOutButtons(const MenuProject& page, const MenuWatch& watch);

/// The buttons on a transparent picture of the size of the page's frames (BGRA, colours not multiplied by alpha).
FramePtr DrawButtons(const ButtonList& list, const Film& film);

}  // namespace Nifikral
