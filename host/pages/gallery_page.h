#pragma once

#include <string>
#include <vector>

namespace Nifikral {

struct GalleryParameter {
    std::string name, value, meaning, unit;
};

struct GalleryPicture {
    std::string effect, summary;
    std::string file;        ///< seen from the page
    int times = 1;           ///< how often the effect was applied
    bool overBlack = false;  ///< what the effect makes transparent shows black
    std::vector<GalleryParameter> parameters;
    std::string command;
};

struct GalleryPage {
    std::string photographName;  ///< as the viewer knows it
    std::string photographFile;  ///< seen from the page
    int width = 0, height = 0;   ///< of all pictures
    std::vector<GalleryPicture> pictures;
};

/// The page as HTML that needs no scripts and nothing but its pictures.
std::string RenderGallery(const GalleryPage& page);

}  // namespace Nifikral
