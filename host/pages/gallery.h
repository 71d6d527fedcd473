#pragma once

#include <string>

#include "host/catalogue/effect_module.h"

namespace Nifikral {

struct GalleryOptions {
    std::string photograph, page;
    bool overwrite = false;
};

/// Writes a page that shows the photograph under every frame effect of the module, and beside it the folder of the
/// page's pictures (gallery.html and gallery_files). What an interrupted or failed run has begun goes away.
void MakeGallery(const GalleryOptions& options, const EffectModule& module);

}  // namespace Nifikral
