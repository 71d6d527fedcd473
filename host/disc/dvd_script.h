#pragma once

#include <array>
#include <string>
#include <vector>

#include "host/disc/disc_page.h"
#include "host/disc/disc_project.h"

namespace Nifikral {

/// A film as it goes onto the disc: a program stream of MPEG-2, AC-3 and the subtitles of DVDs.
struct MadeTitle {
    std::string path;
    double seconds = 0;
    std::vector<std::string> audioLanguages;     ///< ISO 639, of two or three letters, of each track; "": unknown
    std::vector<std::string> subtitleLanguages;  ///< the same
    std::vector<double> chapters;                ///< where they begin, the first at 0; each on a key frame
    /// The colours that its subtitles count on, as 0xRRGGBB; those of FFmpeg's encoder.
    std::array<unsigned, 16> palette = {0x000000, 0x0000FF, 0x00FF00, 0xFF0000, 0xFFFF00, 0xFF00FF, 0x00FFFF, 0xFFFFFF,
                                        0x808000, 0x8080FF, 0x800080, 0x80FF80, 0x008080, 0xFF8080, 0x555555, 0xAAAAAA};
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

/// A language as DVDs store it, two letters; empty: unknown.
std::string DvdLanguage(const std::string& language);

/// The page, and the button on it, that plays a film; the first ones that do.
struct ButtonPlace {
    int page = 0, button = 0;
};
ButtonPlace PlaceOfFilm(const std::vector<DiscPage>& pages, int film);

/// The numbers of the pages of the disc itself (`film` -1), or of a film, in their order.
std::vector<std::size_t> PagesOfFilm(const std::vector<DiscPage>& pages, int film);

/// dvdauthor's description of the disc. Throws a usage error for more menus than a DVD holds.
std::string DvdScript(const DiscProject& project, const std::vector<DiscPage>& pages,
                      const std::vector<MadeTitle>& titles, const std::vector<MadePage>& films, const DvdFiles& files);

}  // namespace Nifikral
