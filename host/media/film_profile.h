#pragma once

#include <string>
#include <vector>

#include "host/media/ffmpeg_handles.h"

namespace Nifikral {

/// What a kind of disc or screen wants of a film.
struct FilmProfile {
    const char* name;
    int width, height;  ///< as stored
    AVRational frameRate;
    AVRational shownAspect;  ///< of the whole picture
    bool dvd = false;        ///< one of the sizes of video DVDs

    AVRational PixelAspect() const;
    /// The width that the stored rows take up in square pixels, even.
    int SquareWidth() const;
};

/// Null for a name that is none.
const FilmProfile* FindProfile(const std::string& name);
std::vector<std::string> ProfileNames();
/// What is wrong with a name that is none, and which there are; to stand behind the name.
std::string NoProfile(const std::string& name);
/// Throws a usage error for a name that is none; null for an empty one.
const FilmProfile* RequireProfile(const std::string& name);

}  // namespace Nifikral
