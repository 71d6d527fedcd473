#include "host/media/ffmpeg_handles.h"

#include <sys/mman.h>

#include <cstdint>

namespace Nifikral {
namespace {

// To be given memory in pages of the smallest size takes longer than to fill a large photograph with an effect.
void UseLargePages(const AVFrame& frame) {
    constexpr std::size_t page = 4096, worthwhile = 8 << 20;
    for (const AVBufferRef* const buffer : frame.buf) {
        if (!buffer || buffer->size < worthwhile) continue;
        const std::size_t before = (page - reinterpret_cast<std::uintptr_t>(buffer->data) % page) % page;
        madvise(buffer->data + before, (buffer->size - before) / page * page, MADV_HUGEPAGE);
    }
}

}  // namespace

FramePtr NewPicture(AVPixelFormat format, int width, int height) {
    FramePtr frame = NewFrame();
    frame->format = format;
    frame->width = width;
    frame->height = height;
    if (av_frame_get_buffer(frame.get(), 0) < 0) throw std::bad_alloc();
    UseLargePages(*frame);
    return frame;
}

std::string ErrorText(int error) {
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(error, text, sizeof text);
    return text;
}

}  // namespace Nifikral
