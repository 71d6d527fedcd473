#pragma once

#include <memory>

#include "host/media/ffmpeg_handles.h"

namespace Nifikral {

using SharedFrame = std::shared_ptr<const AVFrame>;

/// Another owner of the same picture.
FramePtr Referenced(const AVFrame& frame);
/// A picture that several may look at.
SharedFrame Shared(FramePtr frame);
/// What a picture takes of the memory.
std::size_t BytesOf(const AVFrame& frame);

}  // namespace Nifikral
