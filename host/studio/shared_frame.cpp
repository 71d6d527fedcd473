#include "host/studio/shared_frame.h"

namespace Nifikral {

FramePtr Referenced(const AVFrame& frame) { return Require<FramePtr>(av_frame_clone(&frame)); }

SharedFrame Shared(FramePtr frame) {
    return {frame.release(), [](AVFrame* owned) { av_frame_free(&owned); }};
}

std::size_t BytesOf(const AVFrame& frame) {
    std::size_t bytes = 0;
    for (const AVBufferRef* const buffer : frame.buf)
        if (buffer) bytes += std::size_t(buffer->size);
    return bytes;
}

}  // namespace Nifikral
