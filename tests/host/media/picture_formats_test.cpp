#include "host/media/picture_formats.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace Nifikral {
namespace {

constexpr int width = 256, height = 16;

// Every component of `share` of the way from black to white, rising by `rise` over the width; chroma in the middle.
FramePtr Ramp(AVPixelFormat format, double share, double rise) {
    const AVPixFmtDescriptor& description = *av_pix_fmt_desc_get(format);
    FramePtr frame = NewPicture(format, width, height);
    for (const AVBufferRef* const buffer : frame->buf)
        if (buffer) std::fill_n(buffer->data, buffer->size, std::uint8_t(0));
    const bool yuv = !IsRgb(format);
    frame->color_range = AVCOL_RANGE_JPEG;
    frame->colorspace = yuv ? AVCOL_SPC_SMPTE170M : AVCOL_SPC_RGB;
    for (int c = 0; c < description.nb_components; ++c) {
        const bool chroma = yuv && (c == 1 || c == 2);
        const int columns = chroma ? width >> description.log2_chroma_w : width;
        const int rows = chroma ? height >> description.log2_chroma_h : height,
                  white = (1 << description.comp[c].depth) - 1;
        std::vector<std::uint16_t> row(width);
        for (int x = 0; x < columns; ++x)
            row[std::size_t(x)] =
                std::uint16_t(chroma ? (white + 1) / 2 : std::lround(white * (share + rise * x / width)));
        for (int y = 0; y < rows; ++y)
            av_write_image_line(row.data(), frame->data, frame->linesize, &description, 0, y, c, columns);
    }
    return frame;
}

TEST(PictureConverter, DithersWhatIsDeeperThanEightBits) {
    struct Case {
        AVPixelFormat from, to;
        double tolerance;  // of a step of 8 bits; ten bits know quarters
    };
    // Three steps of 8 bits: cutting is off by half of one and more.
    constexpr double black = 100.0 / 255, rise = 3.0 / 255;
    for (const auto& [from, to, tolerance] :
         {Case{AV_PIX_FMT_RGB48BE, AV_PIX_FMT_BGRA, 0.05}, Case{AV_PIX_FMT_RGBA64LE, AV_PIX_FMT_BGRA, 0.05},
          Case{AV_PIX_FMT_GRAY16BE, AV_PIX_FMT_BGRA, 0.05}, Case{AV_PIX_FMT_GRAY10LE, AV_PIX_FMT_BGRA, 0.2},
          Case{AV_PIX_FMT_GBRP12LE, AV_PIX_FMT_BGRA, 0.1}, Case{AV_PIX_FMT_YUV444P16LE, AV_PIX_FMT_BGRA, 0.1},
          Case{AV_PIX_FMT_YUV420P10LE, AV_PIX_FMT_YUV420P, 0.35},
          Case{AV_PIX_FMT_YUVA444P12LE, AV_PIX_FMT_YUVA444P, 0.2}}) {
        FramePtr frame = Ramp(from, black, rise);
        PictureShape shape = ShapeOf(*frame);
        shape.format = to;
        PictureConverter(shape).Convert(frame);
        ASSERT_EQ(frame->format, to);
        const int step = to == AV_PIX_FMT_BGRA ? 4 : 1;
        for (int block = 0; block < width; block += 8) {
            double sum = 0;
            for (int y = 0; y < height; ++y)
                for (int x = block; x < block + 8; ++x) sum += frame->data[0][y * frame->linesize[0] + x * step];
            EXPECT_NEAR(sum / (8 * height), 255 * (black + rise * (block + 3.5) / width), tolerance)
                << av_get_pix_fmt_name(from) << " at " << block;
        }
    }
}

TEST(PictureConverter, KeepsDeepSamplesThatEightBitsHave) {
    for (const AVPixelFormat from : {AV_PIX_FMT_RGB48LE, AV_PIX_FMT_RGBA64BE, AV_PIX_FMT_GRAY16LE}) {
        FramePtr frame = Ramp(from, 0, 256.0 / 255);
        PictureShape shape = ShapeOf(*frame);
        shape.format = AV_PIX_FMT_BGRA;
        PictureConverter(shape).Convert(frame);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                for (int c = 0; c < 3; ++c)
                    ASSERT_EQ(frame->data[0][y * frame->linesize[0] + 4 * x + c], x) << av_get_pix_fmt_name(from);
    }
}

// Luma and chroma of a colour whose parts are from 0 to 1.
std::array<double, 3> Coded(const double (&colour)[3], AVColorSpace matrix, bool fullRange) {
    const double red = matrix == AVCOL_SPC_BT709 ? 0.2126 : 0.299, blue = matrix == AVCOL_SPC_BT709 ? 0.0722 : 0.114;
    const double luma = red * colour[0] + (1 - red - blue) * colour[1] + blue * colour[2];
    const double chroma = fullRange ? 255 : 224;
    return {fullRange ? 255 * luma : 16 + 219 * luma, 128 + chroma * (colour[2] - luma) / (2 * (1 - blue)),
            128 + chroma * (colour[0] - luma) / (2 * (1 - red))};
}

TEST(PictureConverter, KeepsColoursWhereAnotherMatrixCodesThem) {
    constexpr double colours[][3] = {
        {0.9, 0.2, 0.1}, {0.1, 0.8, 0.3}, {0.2, 0.1, 0.9}, {0.5, 0.5, 0.5}, {0.9, 0.7, 0.6}};
    for (const AVPixelFormat format : {AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUV444P})
        for (const bool large : {true, false})  // to small, or back
            for (const bool fullFrom : {false, true})
                for (const bool fullTo : {false, true})
                    for (const auto& colour : colours) {
                        const AVColorSpace from = large ? AVCOL_SPC_BT709 : AVCOL_SPC_SMPTE170M;
                        const AVColorSpace to = large ? AVCOL_SPC_SMPTE170M : AVCOL_SPC_BT709;
                        FramePtr frame = NewPicture(format, 33, 15);
                        const std::array<double, 3> coded = Coded(colour, from, fullFrom);
                        const AVPixFmtDescriptor& layout = *av_pix_fmt_desc_get(format);
                        for (int p = 0; p < 3; ++p)
                            for (int y = 0; y < AV_CEIL_RSHIFT(15, p ? layout.log2_chroma_h : 0); ++y)
                                std::fill_n(frame->data[p] + std::ptrdiff_t(y) * frame->linesize[p],
                                            AV_CEIL_RSHIFT(33, p ? layout.log2_chroma_w : 0),
                                            std::uint8_t(std::lround(coded[std::size_t(p)])));
                        frame->colorspace = from;
                        frame->color_range = fullFrom ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG;
                        PictureConverter({format, 25, 11, to, fullTo}).Convert(frame);
                        const std::array<double, 3> expected = Coded(colour, to, fullTo);
                        for (int p = 0; p < 3; ++p)
                            for (const int place : {0, 1}) {
                                const int x = place * ((25 >> (p ? layout.log2_chroma_w : 0)) - 1);
                                const int y = place * ((11 >> (p ? layout.log2_chroma_h : 0)) - 1);
                                EXPECT_NEAR(frame->data[p][y * frame->linesize[p] + x], expected[std::size_t(p)], 1.5)
                                    << av_get_pix_fmt_name(format) << ", plane " << p << ", " << fullFrom << fullTo;
                            }
                    }
}

}  // namespace
}  // namespace Nifikral
