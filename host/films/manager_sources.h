#pragma once

#include <functional>
#include <string>

#include "avbase/IAVManager.h"
#include "host/media/ffmpeg_handles.h"

/// The sources that the manager hands out; each ends with its own Free(). Making one throws errors that name the file.
namespace Nifikral {

/// How a video is played to a reader of frames.
struct Playback {
    /// The reader's frames a second: each shows the moment that is its own. 0: one of the video's frames for each.
    AVRational rate = {0, 1};
    bool loops = true;  ///< starts over behind its end; else its last frame stays
    int begin = 0;      ///< the millisecond of the video at which it starts; only for one with a rate

    bool operator==(const Playback& other) const {
        return rate.num == other.rate.num && rate.den == other.rate.den && loops == other.loops && begin == other.begin;
    }
};

/// The first frame of a file.
AVBased::IAVSource* OpenPictureSource(const std::string& path);
/// A picture where the file holds a single frame, a video where it holds more. `keep` gets such a picture.
AVBased::IAVSource* OpenFileSource(const std::string& path, const Playback& playback,
                                   const std::function<void(const AVFrame&)>& keep);
/// A picture that was opened before.
AVBased::IAVSource* NewPictureSource(FramePtr picture);
/// A text that is still to be set, through the interface "ISimpleHTMLRender".
AVBased::IAVSource* NewTextSource();

}  // namespace Nifikral
