#include <cstring>

#include "TarvoBased/ITarvoException.h"
#include "TarvoBased/error_codes.h"
#include "avbase/IRawVideoFrame.h"
#include "host/base/log.h"
#include "host/films/media_manager.h"
#include "host/films/text_renderer.h"
#include "host/media/ffmpeg_log.h"
#include "tests/host/command.h"

namespace Nifikral {
namespace {

using AVBased::IAVSource;
using AVBased::IRawVideoFrame;

struct Release {
    template <class Object>
    void operator()(Object* object) const {
        object->Free();
    }
};
using SourcePtr = std::unique_ptr<IAVSource, Release>;
using RawFramePtr = std::unique_ptr<IRawVideoFrame, Release>;

class Manager : public CommandTest {
 protected:
    Manager() { CaptureFfmpegMessages(); }

    SourcePtr Open(const std::string& name, const char* importer, const Playback& playback = {}) {
        TarvoBased::GetTarvoException()->Clear();
        return SourcePtr(manager.OpenSource(PathInList(folder / name, playback).c_str(), importer));
    }
    static std::string Filed() { return TarvoBased::GetTarvoException()->GetExceptionMsg(); }

    // All planes without padding.
    static std::string Bytes(IRawVideoFrame& frame) {
        std::string bytes;
        for (unsigned p = 0; p < frame.GetBufferCount(); ++p) {
            unsigned rowBytes = 0, pitch = 0, rows = 0;
            const unsigned char* const data = frame.GetBuffer(p, &rowBytes, &pitch, &rows);
            for (unsigned y = 0; y < rows; ++y)
                bytes.append(reinterpret_cast<const char*>(data + std::size_t(y) * pitch), rowBytes);
        }
        return bytes;
    }

    MediaManager manager;
};

TEST_F(Manager, OpensPicturesOfEveryKindUprightWithTheirAlpha) {
    Ffmpeg("-f lavfi -i color=red@0.5:size=6x4,format=rgba -frames:v 1 half.png");
    Ffmpeg("-f lavfi -i color=red@0.5:size=6x4,format=rgba,format=rgba64be -frames:v 1 deep.png");
    Ffmpeg("-f lavfi -i color=red:size=6x4,format=rgb24 -frames:v 1 plain.bmp");
    Ffmpeg("-f lavfi -i color=gray:size=6x4,format=gray -frames:v 1 grey.png");
    struct Case {
        const char* file;
        unsigned char blue, green, red, alpha;
    };
    for (const Case& c : {Case{"half.png", 0, 0, 254, 128}, Case{"deep.png", 0, 0, 254, 128},
                          Case{"plain.bmp", 0, 0, 254, 255}, Case{"grey.png", 128, 128, 128, 255}})
        for (const char* const importer : {"ImageImporter", ""}) {
            const SourcePtr source = Open(c.file, importer);
            ASSERT_TRUE(source) << c.file << Filed();
            EXPECT_TRUE(source->IsStill());
            const RawFramePtr frame(source->ReadFrame());
            ASSERT_EQ(frame->GetPixelFormat(), 30u);
            const std::string pixel = Bytes(*frame).substr(0, 4);
            const unsigned char expected[4] = {c.blue, c.green, c.red, c.alpha};
            for (std::size_t i = 0; i < 4; ++i)
                EXPECT_NEAR(static_cast<unsigned char>(pixel[i]), expected[i], 2) << c.file << " byte " << i;
        }

    // A photograph that says of itself that it lies on its side (orientation 6: turned a quarter clockwise).
    Ffmpeg("-f lavfi -i testsrc=size=48x32 -frames:v 1 flat.jpg");
    const std::string jpeg = ReadFile(folder / "flat.jpg");
    const std::string exif(
        "\xff\xe1\x00\x22"
        "Exif\0\0MM\0*\0\0\0\x08\0\x01\x01\x12\0\x03\0\0\0\x01\0\x06\0\0\0\0\0\0",
        36);
    std::ofstream(folder / "turned.jpg") << jpeg.substr(0, 2) << exif << jpeg.substr(2);
    const SourcePtr turned = Open("turned.jpg", "ImageImporter");
    ASSERT_TRUE(turned) << Filed();
    const RawFramePtr frame(turned->ReadFrame());
    unsigned width = 0, height = 0;
    frame->GetDimension(&width, &height);
    EXPECT_EQ(width, 32u);
    EXPECT_EQ(height, 48u);
}

TEST_F(Manager, ReadsAVideoFrameByFrameOverAndOver) {
    Ffmpeg("-f lavfi -i testsrc2=size=32x24:rate=10:duration=0.5,format=yuv420p -c:v libx264 -qp 0 in.mp4");
    const std::string frames = RawPictures("in.mp4", "yuv420p");
    constexpr std::size_t size = 32 * 24 * 3 / 2;
    ASSERT_EQ(frames.size(), 5 * size);
    SourcePtr source = Open("in.mp4", "");
    ASSERT_TRUE(source) << Filed();
    EXPECT_FALSE(source->IsStill());
    RawFramePtr kept;
    for (std::size_t n = 0; n < 12; ++n) {
        RawFramePtr frame(source->ReadFrame());
        ASSERT_TRUE(frame) << n << Filed();
        ASSERT_EQ(frame->GetPixelFormat(), 0u);
        EXPECT_EQ(Bytes(*frame), frames.substr(n % 5 * size, size)) << "frame " << n;
        // The caller may do as it likes with its frame: the decoder's references are not the caller's.
        unsigned pitch = 0, rows = 0;
        std::memset(frame->GetBuffer(0, nullptr, &pitch, &rows), 77, 32);
        if (n == 3) kept = std::move(frame);
    }
    source.reset();
    EXPECT_EQ(Bytes(*kept).substr(32), frames.substr(3 * size + 32, size - 32));
}

TEST_F(Manager, PlaysAVideoAtTheRateOfItsReader) {
    // Frame n has the brightness 16 + 8n. The last one holds times that are rounded to milliseconds.
    const std::string picture = "-f lavfi -i color=black:size=16x16:duration=1:rate=";
    const std::string brightness = ",format=gray,geq=lum=16+8*N -c:v ffv1 ";
    Ffmpeg(picture + "10 -frames:v 5 -vf null" + brightness + "ten.mkv");
    Ffmpeg(picture + "30000/1001 -vf null" + brightness + "ntsc.mkv");
    Ffmpeg(picture + "10 -frames:v 10 -vf null" + brightness + "whole_ticks.avi");
    // Frames of 0.1, 0.3, 0.1 and 0.1 seconds.
    Ffmpeg(picture + "10 -frames:v 4 -vf select='not(between(n,2,3))'" + brightness + "-vsync vfr varying.mkv");

    const auto shown = [&](const char* file, AVRational rate, int count, bool loops = true) {
        const SourcePtr source = Open(file, "", {rate, loops});
        std::string numbers;
        for (int n = 0; n < count; ++n) {
            const RawFramePtr frame(source->ReadFrame());
            numbers += std::to_string((std::uint8_t(Bytes(*frame)[0]) - 12) / 8) + (n + 1 < count ? " " : "");
        }
        return numbers;
    };
    EXPECT_EQ(shown("ten.mkv", {25, 1}, 14), "0 0 0 1 1 2 2 2 3 3 4 4 4 0");
    EXPECT_EQ(shown("ten.mkv", {5, 1}, 6), "0 2 4 1 3 0");
    EXPECT_EQ(shown("ten.mkv", {1, 1}, 3), "0 0 0");
    EXPECT_EQ(shown("ten.mkv", {10, 1}, 7, false), "0 1 2 3 4 4 4");
    EXPECT_EQ(shown("varying.mkv", {10, 1}, 8), "0 1 1 1 2 3 0 1");
    EXPECT_EQ(shown("whole_ticks.avi", {20, 1}, 6), "0 0 1 1 2 2");
    EXPECT_EQ(shown("ntsc.mkv", {30000, 1001}, 20), "0 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19");
    EXPECT_EQ(shown("ntsc.mkv", {15000, 1001}, 10), "0 2 4 6 8 10 12 14 16 18");
    std::filesystem::rename(folder / "ten.mkv", folder / "a;b%25.mkv");
    EXPECT_EQ(shown("a;b%25.mkv", {5, 1}, 3), "0 2 4");
}

TEST_F(Manager, FilesWhatItCannotOpenWithTheFilesName) {
    Ffmpeg("-f lavfi -i testsrc2=size=64x48 -frames:v 1 photo.jpg");
    const std::string photo = ReadFile(folder / "photo.jpg");
    std::ofstream(folder / "cut.jpg") << photo.substr(0, photo.size() / 2);
    std::ofstream(folder / "text.jpg") << "no picture\n";
    std::ofstream(folder / "empty.png");
    // A head that promises a picture of 20000 x 20000.
    Ffmpeg("-f lavfi -i color=red:size=20000x2 -frames:v 1 huge.png");
    const std::pair<const char*, const char*> cases[] = {{"nosuch.png", "no such file"},
                                                         {"empty.png", "is empty"},
                                                         {"text.jpg", "damaged"},
                                                         {"cut.jpg", "cut short"},
                                                         {"huge.png", "16384x16384"}};
    for (const auto& [file, word] : cases)
        for (const char* const importer : {"ImageImporter", ""}) {
            EXPECT_FALSE(Open(file, importer)) << file;
            EXPECT_NE(Filed().find(file), std::string::npos) << Filed();
            EXPECT_NE(Filed().find(word), std::string::npos) << Filed();
            EXPECT_EQ(Filed().find("--keep-going"), std::string::npos) << Filed();
        }
    EXPECT_TRUE(Open("photo.jpg", "")) << "another file's fault is not this one's: " << Filed();
    EXPECT_FALSE(Open("photo.jpg", "NoSuchImporter"));
    EXPECT_EQ(manager.OpenSource(nullptr, ""), nullptr);
    EXPECT_EQ(manager.GetImporter("NoSuchImporter"), nullptr);
    TarvoBased::GetTarvoException()->Clear();
}

class Text : public ::testing::Test {
 protected:
    RawFramePtr Render(const std::string& html) {
        source.reset(manager.GetImporter("SimpleHTMLTextImporter")->CreateSource());
        auto* const render = static_cast<AVBased::ISimpleHTMLRender*>(source->GetInterface("ISimpleHTMLRender"));
        if (!render->SetHTML(html.c_str())) return nullptr;
        return RawFramePtr(source->ReadFrame());
    }
    RawFramePtr Styled(const std::string& style, const std::string& text) {
        return Render("<font color='#20c040' size='40' face='DejaVu Sans' fontstyle='" + style + "'>" + text +
                      "</font>");
    }
    static unsigned Width(IRawVideoFrame& frame) {
        unsigned width = 0;
        frame.GetDimension(&width, nullptr);
        return width;
    }
    // How many pixels are at least half opaque and of this colour.
    static unsigned Count(IRawVideoFrame& frame, unsigned char blue, unsigned char green, unsigned char red) {
        unsigned rowBytes = 0, pitch = 0, rows = 0, count = 0;
        const unsigned char* const data = frame.GetBuffer(0, &rowBytes, &pitch, &rows);
        for (unsigned y = 0; y < rows; ++y)
            for (unsigned x = 0; x < rowBytes; x += 4) {
                const unsigned char* const p = data + y * pitch + x;
                count += p[3] >= 128 && p[0] == blue && p[1] == green && p[2] == red;
            }
        return count;
    }

    MediaManager manager;
    SourcePtr source;
};

TEST_F(Text, IsShownAsWrittenWhateverItHolds) {
    for (const char* const text : {"a &amp; b", "<b>c</b>", "x</font>y", "it's 'q' > \"r\"", "\xc3\xa9 \\ %"}) {
        const RawFramePtr frame = Styled("", text);
        ASSERT_TRUE(frame) << text;
        StyledText plain{text, "DejaVu Sans", {}, 40, 0x20, 0xc0, 0x40};
        const FramePtr expected = RenderText(plain);
        EXPECT_EQ(Width(*frame), unsigned(expected->width)) << text;
        plain.text.pop_back();
        EXPECT_LT(RenderText(plain)->width, expected->width) << text;
    }
    for (const char* const other : {"", "text", "<font color='#20c040' size='40' face='A'>t</font>",
                                    "<font color='red' size='40' face='A' fontstyle=''>t</font>",
                                    "<font color='#20c040' size='0' face='A' fontstyle=''>t</font>",
                                    "<font color='#20c040' size='99999' face='A' fontstyle=''>t</font>",
                                    "<font color='#20c040' size='4' face='A' fontstyle=''>\xff</font>"}) {
        EXPECT_FALSE(Render(other)) << other;
        EXPECT_EQ(TarvoBased::GetTarvoException()->GetExceptionCode(), TarvoBased::errorBadFormat) << other;
    }
    TarvoBased::GetTarvoException()->Clear();
}

TEST_F(Text, BreaksIntoLinesOfOneLengthWhereItsScriptBreaks) {
    StyledText text{"the whole family and both of the dogs", "DejaVu Sans", {}, 40};
    const int own = RenderText(text)->width;
    EXPECT_EQ(BreakLines(text, own, false), text.text);
    EXPECT_EQ(BreakLines(text, own - 1, false), "the whole family\nand both of the dogs");
    EXPECT_EQ(BreakLines(text, 10, false), "the\nwhole\nfamily\nand\nboth\nof\nthe\ndogs");
    for (const bool decorated : {false, true}) {
        text.style.outline = text.style.shadow = decorated;
        for (int width = 60; width < own; width += 37) {
            StyledText broken = text;
            broken.text = BreakLines(text, width, true);
            EXPECT_LE(RenderText(broken)->width, width) << broken.text;
        }
    }
    text = {"\xd8\xa8\xd8\xaa \xd8\xa8\xd8\xaa\n\nab  cd ", "DejaVu Sans", {}, 40};
    EXPECT_EQ(BreakLines(text, 9999, true), text.text) << "its own line feeds and blanks stay";
    EXPECT_EQ(BreakLines(text, 60, false), "\xd8\xa8\xd8\xaa\n\xd8\xa8\xd8\xaa\n\nab\ncd ");
    // No blanks between Chinese characters, and breaks between any of them.
    text.text = "\xe6\xb9\x96\xe8\xbe\xb9\xe5\xb1\xb1\xe9\x87\x8c";
    EXPECT_EQ(BreakLines(text, RenderText(text)->width * 2 / 3, false),
              "\xe6\xb9\x96\xe8\xbe\xb9\n\xe5\xb1\xb1\xe9\x87\x8c");
}

TEST_F(Text, HasEveryStyleThatIsAskedFor) {
    const RawFramePtr plain = Styled("", "Hg"), bold = Styled("bold", "Hg"), underline = Styled("underline", "Hg"),
                      outline = Styled("outline", "Hg"), shadow = Styled("shadow", "Hg"),
                      both = Styled("bold shadow", "Hg"), lines = Styled("", "Hg\nHg");
    const auto ink = [](const RawFramePtr& frame) { return Count(*frame, 0x40, 0xc0, 0x20); };
    const auto dark = [](const RawFramePtr& frame) { return Count(*frame, 0, 0, 0); };
    EXPECT_GT(ink(plain), 200u);
    EXPECT_GT(ink(bold), ink(plain) * 5 / 4);
    EXPECT_GT(ink(underline), ink(plain) + Width(*plain) / 2);
    EXPECT_EQ(dark(plain), 0u);
    EXPECT_GT(dark(outline), 200u);
    EXPECT_GT(dark(shadow), 100u);
    EXPECT_GT(dark(both), 100u);
    EXPECT_GT(ink(both), ink(shadow) * 5 / 4);
    EXPECT_NEAR(ink(lines), 2 * ink(plain), ink(plain) / 10);
}

}  // namespace
}  // namespace Nifikral
