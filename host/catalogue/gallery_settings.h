#pragma once

#include <string>
#include <string_view>

namespace Nifikral {

/// How an effect shows best on a picture: its settings as "name=value:...", "" for its defaults, and how often.
struct GallerySettings {
    std::string text;
    int times = 1;
};

GallerySettings SettingsForGallery(std::string_view effect, int width, int height);

}  // namespace Nifikral
