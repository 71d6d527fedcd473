#pragma once

#include <vector>

#include "host/disc/disc_page.h"
#include "host/disc/disc_project.h"
#include "host/media/ffmpeg_handles.h"

namespace Nifikral {

/// How a picture for wide screens is shown: as it is, or smaller on a screen that is not wide, above and below which
/// players leave black.
enum class DiscView { Whole, Letterboxed };

/// A part of the stored picture, `right` and `bottom` being outside. Rows are even: a field has each second one.
struct HighlightBox {
    int left = 0, top = 0, right = 0, bottom = 0;
};

/// What players mark of each button of a page: a little more than the button, as long as they do not touch;
/// those of buttons that share a place are parted in its middle.
std::vector<HighlightBox> HighlightBoxes(const DiscPage& page, const DiscMenus& menus, const FilmProfile& profile,
                                         DiscView view);

/// The marks of all buttons in one state on a transparent picture of the stored size (BGRA): two colours without
/// mixtures, the lighter one within a dark edge.
FramePtr DrawHighlights(const std::vector<HighlightBox>& boxes, ButtonMark mark, unsigned colour,
                        const FilmProfile& profile);

/// The captions of buttons whose marks reach out of the area that every screen shows.
std::vector<std::string> OutsideTitleSafe(const DiscPage& page, const DiscMenus& menus, const FilmProfile& profile);

}  // namespace Nifikral
