#pragma once

#include <array>
#include <string>
#include <vector>

#include "host/disc/disc_page.h"
#include "host/disc/disc_project.h"
#include "host/films/project_reader.h"
#include "host/media/disc_subtitles.h"

namespace Nifikral {

/// A film as it goes onto the disc: a program stream of MPEG-2, AC-3 and the subtitles of DVDs.
struct MadeTitle {
    std::string path;
    double seconds = 0;
    std::vector<std::string> audioLanguages;     ///< ISO 639, of two or three letters, of each track; "": unknown
    std::vector<std::string> subtitleLanguages;  ///< the same
    std::vector<double> chapters;                ///< where they begin, the first at 0; each on a key frame
    std::array<std::uint32_t, 16> palette = discPalette;  ///< the colours that its subtitles count on, as 0xRRGGBB
};

/// The film of a page of the menu.
struct MadePage {
    std::string path;
    double loopStart = 0;  ///< seconds, on a key frame; from there it repeats, and buttons can be chosen
};

/// Where the files lie that the script names: of pages with their buttons, and of the palettes of titles.
struct DvdFiles {
    std::vector<std::string> pages, palettes;
};

/// A language as DVDs store it: two letters, which for some are older ones than those of today; empty: unknown.
std::string DvdLanguage(const std::string& language);

/// The page, and the button on it, that plays a film; the first ones that do.
struct ButtonPlace {
    int page = 0, button = 0;
};
ButtonPlace PlaceOfFilm(const std::vector<DiscPage>& pages, int film);

/// The numbers of the pages of the disc itself (`film` -1), or of a film, in their order.
std::vector<std::size_t> PagesOfFilm(const std::vector<DiscPage>& pages, int film);

/// Files faults for more menus than a DVD holds.
void CheckMenuCounts(const DiscProject& project, const std::vector<DiscPage>& pages, Faults& faults);

/// dvdauthor's description of the disc.
std::string DvdScript(const DiscProject& project, const std::vector<DiscPage>& pages,
                      const std::vector<MadeTitle>& titles, const std::vector<MadePage>& films, const DvdFiles& files);

}  // namespace Nifikral
