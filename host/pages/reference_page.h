#pragma once

#include <string>
#include <vector>

#include "host/catalogue/effect_details.h"

namespace Nifikral {

struct ReferenceEntry {
    EffectDetails effect;
    std::vector<std::string> pictures;  ///< the bytes of JPEG or WebP files; several are moments, in order
    std::string command;                ///< that makes it, for each picture a line
    int times = 1;                      ///< how often the effect was applied
};

struct ReferencePage {
    std::string photograph;  ///< a JPEG file's bytes
    int width = 0, height = 0;
    std::vector<ReferenceEntry> entries;
};

/// The page as HTML that needs no scripts and no other file.
std::string RenderReference(const ReferencePage& page);

}  // namespace Nifikral
