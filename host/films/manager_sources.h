#pragma once

#include <string>

#include "avbase/IAVManager.h"
#include "host/media/ffmpeg_handles.h"

/// The sources that the manager hands out; each ends with its own Free(). Making one throws errors that name the file.
namespace Nifikral {

/// The first frame of a file.
AVBased::IAVSource* OpenPictureSource(const std::string& path);
/// A picture where the file holds a single frame, a video where it holds more.
AVBased::IAVSource* OpenFileSource(const std::string& path);
/// Frames a second of a video.
AVRational VideoFrameRate(const std::string& path);
/// A text that is still to be told, through the interface "ISimpleHTMLRender".
AVBased::IAVSource* NewTextSource();

}  // namespace Nifikral
