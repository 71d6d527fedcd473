#pragma once

#include <string>
#include <vector>

namespace Nifikral {

struct GalleryParameter {
    std::string name, value, meaning, unit;
};

struct GalleryPicture {
    std::string effect, summary;
    std::vector<std::string> stills;  ///< seen from the page; several are moments, in order
    std::string film;                 ///< likewise, or empty
    int times = 1;                    ///< how often the effect was applied
    bool translucent = false;         ///< what is behind the stills shows through
    std::vector<GalleryParameter> parameters;
    std::string commands;  ///< a line for each still and the film
};

struct GalleryPage {
    std::string photographName;  ///< as the viewer knows it
    std::string photographFile;  ///< seen from the page
    int width = 0, height = 0;   ///< of all stills
    std::vector<GalleryPicture> pictures;
};

/// The page as HTML that needs no scripts and nothing but its pictures.
std::string RenderGallery(const GalleryPage& page);

}  // namespace Nifikral
