#pragma once

#include <vector>

#include "host/media/ffmpeg_handles.h"

namespace Nifikral {

/// A picture with transparent parts that is laid over every frame of a film. Threads: any, once made.
class StillOverlay {
 public:
    /// `picture` is BGRA, colours not multiplied by alpha, as large as the frames; `formatCode` is theirs, one that
    /// effects know.
    StillOverlay(const AVFrame& picture, unsigned formatCode);

    void Lay(AVFrame& frame) const;

 private:
    // What covers a plane's bytes, from 0 to 255, row by row, and the rows that have any.
    struct Plane {
        std::vector<std::uint8_t> cover;
        std::size_t rowBytes = 0, begin = 0, end = 0;
    };
    unsigned m_formatCode;
    FramePtr m_colours;
    std::vector<Plane> m_planes;
};

}  // namespace Nifikral
