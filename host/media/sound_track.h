#pragma once

#include <limits>
#include <string>
#include <vector>

#include "host/media/ffmpeg_handles.h"

namespace Nifikral {

/// A file's sound, from its beginning, somewhere in a film. In seconds.
struct SoundPiece {
    std::string path;
    double begin = 0;                                         ///< where in the film it begins
    double length = std::numeric_limits<double>::infinity();  ///< what is taken of it at most
    double fadeIn = 0, fadeOut = 0;                           ///< within that length
};

/// The part of a film's sound that is made, in seconds.
struct SoundCut {
    double begin = 0, end = 0;
    double filmEnd = 0;  ///< where the whole film ends, and the fade-out with it
    double fade = 0;     ///< length of the fade-out
};

/// How long the sound of a file is, by reading through it. Throws input errors that name the file and the remedy.
double SoundSeconds(const std::string& path);

/// Throws an input error when nothing of a file's sound can be decoded.
void RequireSound(const std::string& path);

/// The sound of a film: that of files, added where they meet, silent between them and faded out at the end, as samples
/// in stereo and 48 kHz. Throws input errors that name the file and the remedy. Threads: one at a time.
class SoundTrack {
 public:
    SoundTrack(const std::vector<SoundPiece>& pieces, const SoundCut& cut);
    ~SoundTrack();

    /// What Until hands out, as a container describes it.
    const AVStream& Stream() const;
    /// The packets that begin before a time, counted from the cut's begin, and were not handed out yet.
    std::vector<PacketPtr> Until(double seconds);

 private:
    struct Parts;
    std::unique_ptr<Parts> m_parts;
};

}  // namespace Nifikral
