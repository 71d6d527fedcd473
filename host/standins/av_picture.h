#pragma once

extern "C" {
#include <libavutil/frame.h>
}

#include <memory>

#include "TarvoBased/res_keeper.h"
#include "host/standins/ffmpeg_formats.h"

namespace Nifikral {

struct FreeAvPicture {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
using AvPicturePtr = std::unique_ptr<AVFrame, FreeAvPicture>;

/// Memory for a picture as libswscale likes it. Raises 10021007 with `line` when there is none.
inline AvPicturePtr NewAvPicture(const PictureShape& shape, int line) {
    AvPicturePtr picture(av_frame_alloc());
    if (!picture) TarvoBased::RaiseNoMemory(line);
    picture->format = shape.format;
    picture->width = shape.width;
    picture->height = shape.height;
    if (av_frame_get_buffer(picture.get(), 0) < 0) TarvoBased::RaiseNoMemory(line);
    return picture;
}

}  // namespace Nifikral
