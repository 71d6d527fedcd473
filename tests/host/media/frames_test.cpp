#include <gtest/gtest.h>

#include <cstring>

#include "TarvoBased/ITarvoException.h"
#include "TarvoBased/error_codes.h"
#include "avbase/IImageConverter.h"
#include "avbase/avbase_srcutils/avbase_crawvideoframe.h"
#include "avbase/avbase_srcutils/pixel_formats.h"
#include "host/media/frame_adapter.h"
#include "host/standins/ffmpeg_formats.h"

extern "C" {
#include <libavutil/imgutils.h>
}

namespace Nifikral {
namespace {

using AVBased::CRawVideoFrame;

struct Release {
    template <class Object>
    void operator()(Object* object) const {
        object->Free();
    }
};
using ConverterPtr = std::unique_ptr<AVBased::IImageConverter, Release>;

void FillPixels(CRawVideoFrame& frame, unsigned blue, unsigned green, unsigned red) {
    unsigned pitch = 0, rows = 0;
    unsigned char* const data = frame.GetBuffer(0, nullptr, &pitch, &rows);
    for (unsigned i = 0; i + 4 <= pitch * rows; i += 4) {
        const unsigned char pixel[4] = {(unsigned char)blue, (unsigned char)green, (unsigned char)red, 255};
        std::memcpy(data + i, pixel, 4);
    }
}

TEST(ImageConverter, ChoosesMatrixAndRangeAsAsked) {
    struct Case {
        unsigned height;
        AVBased::ColourMatrix matrix;
        bool fullRange;
        int luma, u, v;  // of pure green
    };
    using enum AVBased::ColourMatrix;
    // Green's weight is 0.587 in BT.601 and 0.7152 in BT.709, on 219 steps from 16 or on 255 from 0.
    const Case cases[] = {{576, Automatic, false, 145, 54, 34},
                          {578, Automatic, false, 173, 42, 26},
                          {576, Bt709, false, 173, 42, 26},
                          {578, Bt601, true, 150, 44, 21}};
    for (const Case& c : cases) {
        AVBased::ImageConversion conversion;
        conversion.source = {30, 64, c.height};
        conversion.destination = {0, 64, c.height, c.matrix, c.fullRange};
        const ConverterPtr converter(AVBased::CreateImageConverterEx(&conversion));
        ASSERT_TRUE(converter);
        CRawVideoFrame from(false, 30, 64, c.height, true), to(false, 0, 64, c.height, true);
        FillPixels(from, 0, 255, 0);
        ASSERT_TRUE(converter->Convert(&from, &to));
        const int expected[3] = {c.luma, c.u, c.v};
        for (unsigned p = 0; p < 3; ++p) EXPECT_NEAR(to.GetBuffer(p)[0], expected[p], 1) << c.height << " plane " << p;
    }
}

TEST(ImageConverter, FindsTheColoursOfPlanesAgain) {
    using enum AVBased::ColourMatrix;
    for (const AVBased::ColourMatrix matrix : {Automatic, Bt601, Bt709})
        for (const bool fullRange : {false, true})
            for (const unsigned height : {90u, 578u}) {
                AVBased::ImageConversion there, back;
                there.source = {30, 160, height};
                there.destination = back.source = {0, 160, height, matrix, fullRange};
                // Of another size, for which another matrix would be usual.
                back.destination = {30, 80, 668 - height};
                const ConverterPtr toPlanes(AVBased::CreateImageConverterEx(&there));
                const ConverterPtr toPixels(AVBased::CreateImageConverterEx(&back));
                ASSERT_TRUE(toPlanes && toPixels);
                CRawVideoFrame from(false, 30, 160, height, true), planes(false, 0, 160, height, true),
                    to(false, 30, 80, 668 - height, true);
                FillPixels(from, 30, 180, 90);
                ASSERT_TRUE(toPlanes->Convert(&from, &planes) && toPixels->Convert(&planes, &to));
                const unsigned char* const pixel = to.GetBuffer(0);
                for (unsigned byte = 0; byte < 4; ++byte)
                    EXPECT_NEAR(pixel[byte], from.GetBuffer(0)[byte], 2) << "byte " << byte << " height " << height;
            }
}

TEST(ImageConverter, TakesEveryFormatAndOddSizes) {
    av_log_set_level(AV_LOG_QUIET);  // odd sizes make libswscale talk
    for (const AVBased::FormatInfo& info : AVBased::formats) {
        const ConverterPtr to(AVBased::CreateImageConverter(30, 33, 17, info.code, 33, 17));
        const ConverterPtr back(AVBased::CreateImageConverter(info.code, 33, 17, 30, 33, 17));
        ASSERT_TRUE(to && back) << info.code;
        CRawVideoFrame picture(false, 30, 33, 17, true), other(false, info.code, 33, 17, true),
            result(false, 30, 33, 17, true);
        FillPixels(picture, 255, 255, 255);
        FillPixels(result, 0, 0, 0);
        ASSERT_TRUE(to->Convert(&picture, &other)) << info.code;
        ASSERT_TRUE(back->Convert(&other, &result)) << info.code;
        unsigned pitch = 0;
        const unsigned char* const data = result.GetBuffer(0, nullptr, &pitch, nullptr);
        for (const unsigned x : {0u, 16u})
            for (unsigned c = 0; c < 3; ++c) EXPECT_GE(data[8 * pitch + 4 * x + c], 247) << info.code << " at " << x;
    }
}

TEST(ImageConverter, LetsNoColourOfTransparentPixelsIntoAScaledPicture) {
    // Green where it is opaque; where it is transparent, red that must not come in.
    CRawVideoFrame from(false, 30, 64, 64, true);
    FillPixels(from, 0, 200, 0);
    unsigned pitch = 0;
    unsigned char* const data = from.GetBuffer(0, nullptr, &pitch, nullptr);
    const unsigned char clearRed[4] = {0, 0, 255, 0};
    for (unsigned y = 0; y < 64; ++y)
        for (unsigned x = 0; x < 31; ++x) std::memcpy(data + y * pitch + 4 * x, clearRed, 4);
    for (const unsigned side : {23u, 150u})
        for (const unsigned format : {30u, 60u}) {
            CRawVideoFrame middle(false, format, side, side, true), to(false, 30, side, side, true);
            const ConverterPtr scale(AVBased::CreateImageConverter(30, 64, 64, format, side, side));
            const ConverterPtr back(AVBased::CreateImageConverter(format, side, side, 30, side, side));
            ASSERT_TRUE(scale->Convert(&from, &middle));
            ASSERT_TRUE(back->Convert(&middle, &to));
            const unsigned char* const row = to.GetBuffer(0, nullptr, &pitch, nullptr) + side / 2 * pitch;
            unsigned halfSeen = 0;
            for (unsigned x = 0; x < side; ++x) {
                const unsigned char* const pixel = row + 4 * x;
                halfSeen += pixel[3] > 10 && pixel[3] < 245;
                if (pixel[3] <= 30) continue;
                EXPECT_LT(pixel[2], 12) << format << " at " << x << " of " << side;
                EXPECT_NEAR(pixel[1], 200, 24) << format << " at " << x << " of " << side;
            }
            EXPECT_GE(halfSeen, 1u);
            EXPECT_EQ(row[3], 0);
            EXPECT_EQ(row[4 * (side - 1) + 3], 255);
        }
}

TEST(ImageConverter, TurnsBottomUpFramesOver) {
    CRawVideoFrame from(false, 30, 16, 2, false), to(false, 30, 16, 2, true);
    unsigned pitch = 0;
    unsigned char* const data = from.GetBuffer(0, nullptr, &pitch, nullptr);
    std::memset(data, 10, pitch);
    std::memset(data + pitch, 200, pitch);
    const ConverterPtr converter(AVBased::CreateImageConverter(30, 16, 2, 30, 16, 2));
    ASSERT_TRUE(converter->Convert(&from, &to));
    EXPECT_EQ(to.GetBuffer(0)[0], 200);
}

TEST(ImageConverter, FilesWhatItRefuses) {
    TarvoBased::ITarvoException& error = *TarvoBased::GetTarvoException();
    EXPECT_EQ(AVBased::CreateImageConverter(99, 16, 16, 30, 16, 16), nullptr);
    EXPECT_EQ(error.GetExceptionCode(), TarvoBased::errorBadFormat);
    EXPECT_EQ(AVBased::CreateImageConverter(30, 0, 16, 30, 16, 16), nullptr);
    EXPECT_EQ(AVBased::CreateImageConverterEx(nullptr), nullptr);
    EXPECT_EQ(error.GetExceptionCode(), TarvoBased::errorBadPointer);
    const ConverterPtr converter(AVBased::CreateImageConverter(30, 16, 16, 0, 16, 16));
    CRawVideoFrame right(false, 30, 16, 16, true), wrong(false, 0, 16, 18, true);
    EXPECT_FALSE(converter->Convert(&right, &wrong));
    EXPECT_EQ(error.GetExceptionCode(), TarvoBased::errorBadFormat);
    EXPECT_FALSE(converter->Convert(nullptr, &wrong));
    error.Clear();
}

// Rows of 64 samples are passed on as they are, others through a copy.
TEST(ImageConverter, RefusesFramesThatLackAPlane) {
    struct LacksItsLastPlane final : CRawVideoFrame {
        using CRawVideoFrame::CRawVideoFrame;
        unsigned GetBufferCount() override { return CRawVideoFrame::GetBufferCount() - 1; }
    };
    TarvoBased::ITarvoException& error = *TarvoBased::GetTarvoException();
    for (const AVBased::FormatInfo& info : AVBased::formats)
        for (const unsigned width : {64U, 66U}) {
            SCOPED_TRACE(std::to_string(info.code) + " " + std::to_string(width));
            const ConverterPtr from(AVBased::CreateImageConverter(info.code, width, 16, 30, 32, 32));
            const ConverterPtr to(AVBased::CreateImageConverter(30, 32, 32, info.code, width, 16));
            LacksItsLastPlane lacking(false, info.code, width, 16, true);
            CRawVideoFrame whole(false, 30, 32, 32, true);
            for (const bool converted : {from->Convert(&lacking, &whole), to->Convert(&whole, &lacking)}) {
                EXPECT_FALSE(converted);
                EXPECT_EQ(error.GetExceptionCode(), TarvoBased::errorBadFormat);
            }
            error.Clear();
        }
}

FramePtr Counted(AVPixelFormat format, int width, int height) {
    FramePtr frame = NewPicture(format, width, height);
    for (int p = 0; p < 4 && frame->data[p]; ++p)
        for (int i = 0; i < frame->linesize[p] * height / 2; ++i) frame->data[p][i] = std::uint8_t(i * 7 + p);
    return frame;
}

TEST(FrameAdapter, ShowsThePlanesThemselvesWithChromaRoundedUp) {
    const FramePtr frame = Counted(AV_PIX_FMT_YUV420P, 5, 3);
    FrameAdapter adapter(*frame, 0, 7);
    unsigned rowBytes = 0, pitch = 0, rows = 0;
    EXPECT_EQ(adapter.GetBuffer(1, &rowBytes, &pitch, &rows), frame->data[1]);
    EXPECT_EQ(rowBytes, 3u);
    EXPECT_EQ(rows, 2u);
    EXPECT_EQ(pitch, unsigned(frame->linesize[1]));
    EXPECT_EQ(adapter.GetBuffer(3, &rowBytes, &pitch, &rows), nullptr);
    TarvoBased::GetTarvoException()->Clear();

    const std::unique_ptr<AVBased::IRawVideoFrame, Release> clone(adapter.Clone());
    unsigned char* const copy = clone->GetBuffer(2, nullptr, nullptr, nullptr);
    ASSERT_NE(copy, frame->data[2]);
    EXPECT_EQ(copy[0], frame->data[2][0]);
    copy[0] ^= 255;
    EXPECT_NE(copy[0], frame->data[2][0]);
    EXPECT_EQ(clone->GetTimeStamp(), 7);
}

TEST(FrameAdapter, LeavesNothingAfterARowToChance) {
    for (const auto& [format, sample] : {std::pair(AV_PIX_FMT_GRAY8, 1), std::pair(AV_PIX_FMT_BGRA, 4)}) {
        FramePtr frame = Counted(format, 5, 3);
        const std::ptrdiff_t pitch = frame->linesize[0], rowBytes = 5 * sample;
        ASSERT_GE(pitch, rowBytes + sample);
        PrepareForEffects(frame);
        const std::uint8_t* const plane = frame->data[0];
        for (int y = 0; y < 2; ++y)
            EXPECT_EQ(std::memcmp(plane + y * pitch + rowBytes, plane + (y + 1) * pitch, std::size_t(sample)), 0) << y;
        const std::uint8_t* const end = plane + 2 * pitch + rowBytes;
        EXPECT_EQ(std::memcmp(end, end - sample, std::size_t(sample)), 0);
    }
}

TEST(FrameAdapter, CopiesOnlyWhatMustNotBeChangedInPlace) {
    FramePtr own = Counted(AV_PIX_FMT_YUV420P, 64, 48);
    const std::uint8_t* const memory = own->data[0];
    PrepareForEffects(own);
    EXPECT_EQ(own->data[0], memory) << "copied without need";

    const FramePtr reference = Require<FramePtr>(av_frame_clone(own.get()));
    PrepareForEffects(own);
    EXPECT_NE(own->data[0], reference->data[0]) << "the decoder's reference would be changed";

    FrameAdapter shared(Require<FramePtr>(av_frame_clone(reference.get())), 0, 0);
    EXPECT_EQ(shared.GetBuffer(0, nullptr, nullptr, nullptr), reference->data[0]) << "copied to be read";
    EXPECT_FALSE(shared.CanBeModified());
    const std::unique_ptr<AVBased::IRawVideoFrame, Release> clone(shared.Clone());
    EXPECT_TRUE(clone->CanBeModified());

    FramePtr upward = Counted(AV_PIX_FMT_BGRA, 8, 4);
    const std::uint8_t last = upward->data[0][3 * upward->linesize[0]];
    upward->data[0] += 3 * upward->linesize[0];
    upward->linesize[0] = -upward->linesize[0];
    PrepareForEffects(upward);
    EXPECT_GT(upward->linesize[0], 0);
    EXPECT_EQ(upward->data[0][0], last);

    // Cropped at the left: the padding of the last row would lie outside the memory.
    FramePtr cropped = Counted(AV_PIX_FMT_GRAY8, 64, 4);
    cropped->buf[0]->size = std::size_t(4 * cropped->linesize[0]);
    cropped->data[0] += 32;
    cropped->width = 32;
    const std::uint8_t* const inside = cropped->data[0];
    PrepareForEffects(cropped);
    EXPECT_NE(cropped->data[0], inside);
}

}  // namespace
}  // namespace Nifikral
