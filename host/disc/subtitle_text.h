#pragma once

#include <string>

#include "host/media/ffmpeg_handles.h"

namespace Nifikral {

/// Draws a subtitle, white with a black rim, its lines one below the other in the middle: BGRA, colours not multiplied
/// by alpha. `width` and `height` are the film's, in square pixels; lines that would be too wide for it are broken.
/// Throws std::runtime_error for a text that cannot be drawn. Threads: any.
FramePtr PaintSubtitle(const std::string& text, bool italic, int width, int height);

}  // namespace Nifikral
