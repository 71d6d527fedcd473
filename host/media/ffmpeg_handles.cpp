#include "host/media/ffmpeg_handles.h"

namespace Nifikral {

FramePtr NewPicture(AVPixelFormat format, int width, int height) {
    FramePtr frame = NewFrame();
    frame->format = format;
    frame->width = width;
    frame->height = height;
    if (av_frame_get_buffer(frame.get(), 0) < 0) throw std::bad_alloc();
    return frame;
}

std::string ErrorText(int error) {
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(error, text, sizeof text);
    return text;
}

}  // namespace Nifikral
