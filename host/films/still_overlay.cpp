#include "host/films/still_overlay.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <cstring>

#include "host/media/frame_adapter.h"
#include "host/media/picture_formats.h"

namespace Nifikral {
namespace {

// The mean alpha of the pixels of a block, whose sides are powers of two.
std::uint8_t MeanAlpha(const AVFrame& picture, std::size_t x, std::size_t y, int columnShift, int rowShift) {
    unsigned sum = 0, count = 0;
    const std::size_t width = std::size_t(picture.width), height = std::size_t(picture.height);
    for (std::size_t row = y << rowShift; row < std::min((y + 1) << rowShift, height); ++row)
        for (std::size_t column = x << columnShift; column < std::min((x + 1) << columnShift, width); ++column, ++count)
            sum += picture.data[0][row * std::size_t(picture.linesize[0]) + column * 4 + 3];
    return std::uint8_t(count ? (sum + count / 2) / count : 0);
}

// Transparent pixels keep their colours, which neighbours are mixed with.
FramePtr Opaque(const AVFrame& picture) {
    FramePtr opaque = NewPicture(AV_PIX_FMT_BGRA, picture.width, picture.height);
    for (int y = 0; y < picture.height; ++y) {
        std::uint8_t* const to = opaque->data[0] + std::ptrdiff_t(y) * opaque->linesize[0];
        std::memcpy(to, picture.data[0] + std::ptrdiff_t(y) * picture.linesize[0], std::size_t(picture.width) * 4);
        for (int x = 0; x < picture.width; ++x) to[x * 4 + 3] = 255;
    }
    return opaque;
}

}  // namespace

StillOverlay::StillOverlay(const AVFrame& picture, unsigned formatCode)
    : m_formatCode(formatCode), m_colours(Opaque(picture)) {
    PictureShape shape;
    shape.format = FfmpegFormat(formatCode);
    shape.width = picture.width;
    shape.height = picture.height;
    PictureConverter(shape).Convert(m_colours);
    const AVPixFmtDescriptor& description = *av_pix_fmt_desc_get(shape.format);
    FrameAdapter adapter(*m_colours, formatCode, 0);
    const bool isPacked = adapter.GetBufferCount() == 1;
    for (unsigned p = 0; p < adapter.GetBufferCount(); ++p) {
        unsigned rowBytes = 0, rows = 0;
        adapter.GetBuffer(p, &rowBytes, nullptr, &rows);
        const bool isChroma = p == 1 || p == 2;
        const int columnShift = isChroma ? description.log2_chroma_w : 0;
        const int rowShift = isChroma ? description.log2_chroma_h : 0;
        Plane& plane = m_planes.emplace_back();
        plane.rowBytes = rowBytes;
        plane.begin = rows;
        for (std::size_t y = 0; y < rows; ++y)
            for (std::size_t x = 0; x < rowBytes; ++x) {
                const std::uint8_t cover = MeanAlpha(picture, isPacked ? x / 4 : x, y, columnShift, rowShift);
                plane.cover.push_back(cover);
                if (!cover) continue;
                plane.begin = std::min(plane.begin, y);
                plane.end = y + 1;
            }
    }
}

void StillOverlay::Lay(AVFrame& frame) const {
    FrameAdapter to(frame, m_formatCode, 0), from(*m_colours, m_formatCode, 0);
    for (unsigned p = 0; p < m_planes.size(); ++p) {
        const Plane& plane = m_planes[p];
        unsigned pitch = 0, ownPitch = 0;
        std::uint8_t* const target = to.GetBuffer(p, nullptr, &pitch, nullptr);
        const std::uint8_t* const own = from.GetBuffer(p, nullptr, &ownPitch, nullptr);
        for (std::size_t y = plane.begin; y < plane.end; ++y)
            for (std::size_t x = 0; x < plane.rowBytes; ++x) {
                std::uint8_t& value = target[y * pitch + x];
                const unsigned cover = plane.cover[y * plane.rowBytes + x];
                value = std::uint8_t((value * (255 - cover) + own[y * ownPitch + x] * cover + 127) / 255);
            }
    }
}

}  // namespace Nifikral
