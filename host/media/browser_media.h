#pragma once

#include <string>
#include <vector>

/// Films as every browser plays them: H.264 and AAC in MP4, with subtitles as WebVTT beside them. Everything throws
/// input errors that name the file and the remedy, and output errors.
namespace Nifikral {

struct BrowserTrack {
    int stream = 0;               ///< of the file
    std::string language, title;  ///< as the file has them; may be empty
};

/// What there is of a film for browsers.
struct BrowserTracks {
    bool pictures = false;  ///< they can be taken over as they are coded
    std::vector<BrowserTrack> sounds;
    std::vector<BrowserTrack> subtitles;  ///< those of text
    int paintedSubtitles = 0;             ///< tracks of pictures, which browsers do not show
};

/// `width` and `height`: the most that pictures may have, upright or lying.
BrowserTracks BrowserTracksOf(const std::string& path, int width, int height);

/// Takes pictures over as they are coded, with the sound of one stream (-1: none), which becomes AAC if need be, into
/// an MP4 that plays while it is loaded. Replaces an older one.
void WriteBrowserFilm(const std::string& from, int sound, const std::string& to);

/// Writes the subtitles of one stream. Replaces an older file.
void WriteBrowserSubtitles(const std::string& from, int stream, const std::string& to);

}  // namespace Nifikral
