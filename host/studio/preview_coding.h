#pragma once

#include <string>

#include "host/media/ffmpeg_handles.h"
#include "host/studio/web_message.h"

namespace Nifikral {

/// A part of a picture, in pixels.
struct PicturePart {
    int left = 0, top = 0, width = 0, height = 0;
};

/// A picture as a JPEG file, of any layout that effects see; what is transparent is laid over black where
/// that is shown. Threads: any.
std::string JpegOf(const AVFrame& frame, bool showsAlpha = true);
/// The same as a PNG file, with its transparency.
std::string PngOf(const AVFrame& frame);
/// A part of a picture, converted to BGRA.
FramePtr PartOf(const AVFrame& frame, const PicturePart& part);

/// A picture behind its length in four bytes, as streams send it.
std::string Framed(const std::string& picture);

}  // namespace Nifikral
