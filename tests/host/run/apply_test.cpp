#include <map>

#include "avbase/IVideoProc.h"
#include "host/catalogue/effect_module.h"
#include "host/media/frame_adapter.h"
#include "host/standins/ffmpeg_formats.h"
#include "tests/host/command.h"

extern "C" {
#include <libavutil/imgutils.h>
}

namespace Nifikral {
namespace {

// Pictures without padding through one object of an effect, one after the other, as the simplest host would do it.
std::string ThroughModule(std::string pictures, unsigned code, int width, int height, const std::string& effect,
                          const std::map<std::string, std::string>& properties) {
    const EffectModule module(NIFIKRAL_MODULE_FILE);
    const EffectPtr object = module.Create(effect);
    for (const auto& [name, value] : properties) EXPECT_TRUE(object->SetProperty(name.c_str(), value.c_str()));
    const AVPixelFormat format = FfmpegFormat(code);
    const int size = av_image_get_buffer_size(format, width, height, 1);
    AVBased::ImagePostion record;
    for (int position = 0; std::size_t(position + 1) * std::size_t(size) <= pictures.size(); ++position) {
        auto* const bytes = reinterpret_cast<std::uint8_t*>(pictures.data()) + std::ptrdiff_t(position) * size;
        const FramePtr frame = NewFrame();
        frame->format = format;
        frame->width = width;
        frame->height = height;
        av_image_fill_arrays(frame->data, frame->linesize, bytes, format, width, height, 1);
        FrameAdapter adapter(*frame, code, position);
        object->ProcFrameInPlace(&record, position, &adapter);
    }
    return pictures;
}

struct FormatCase {
    const char* name;
    unsigned code;
};

class NativeFormat : public CommandTest, public ::testing::WithParamInterface<FormatCase> {};

TEST_P(NativeFormat, GivesTheModulesBytesWhateverTheThreads) {
    const auto [name, code] = GetParam();
    const std::string format = name;
    constexpr int width = 53, height = 37;
    Ffmpeg("-f lavfi -i testsrc=size=53x37:rate=25:duration=0.4,format=" + format + " -c:v ffv1 in.mkv");
    const std::string before = RawPictures("in.mkv", format);
    ASSERT_EQ(before.size(), 10u * unsigned(av_image_get_buffer_size(FfmpegFormat(code), width, height, 1)));
    const std::map<std::string, std::string> swirl = {
        {"rotate_r", "15"}, {"rotate_x", "26"}, {"rotate_y", "18"}, {"rotate_scale", "4"}};
    const std::string expected =
        ThroughModule(ThroughModule(before, code, width, height, "invert", {}), code, width, height, "rotate", swirl);
    EXPECT_NE(expected, before);
    for (const char* threads : {"1", "4"}) {
        const Outcome outcome = Nifikral(
            "apply in.mkv out.mkv invert rotate:r=15:x=26:y=18:rotate_scale=4 -y "
            "--encoder ffv1 --threads " +
            std::string(threads));
        ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
        EXPECT_EQ(outcome.errors, "");
        EXPECT_EQ(Probe("out.mkv", "stream=pix_fmt"), format + "\n");
        EXPECT_EQ(RawPictures("out.mkv", format), expected) << threads << " threads";
    }
}

INSTANTIATE_TEST_SUITE_P(, NativeFormat,
                         ::testing::Values(FormatCase{"yuv420p", 0}, FormatCase{"yuv422p", 4}, FormatCase{"yuv410p", 6},
                                           FormatCase{"yuv411p", 7}, FormatCase{"yuva420p", 35},
                                           FormatCase{"yuva444p", 60}, FormatCase{"bgra", 30}),
                         [](const auto& parameter) { return std::string(parameter.param.name); });

std::string Inverted(std::string bytes) {
    for (char& byte : bytes) byte = char(~byte);
    return bytes;
}

using Apply = CommandTest;

TEST_F(Apply, ConvertsFormatsThatEffectsDoNotKnowThereAndBack) {
    for (const std::string format : {"yuv444p", "rgb24", "yuv440p"}) {
        Ffmpeg("-f lavfi -i testsrc2=size=32x24:duration=0.2,format=" + format + " -c:v rawvideo in.nut");
        const Outcome outcome = Nifikral("apply in.nut out.nut invert -y");
        ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
        EXPECT_EQ(Probe("out.nut", "stream=pix_fmt"), format + "\n");
        if (format == "yuv440p") continue;  // its chroma is scaled there and back
        EXPECT_EQ(RawPictures("out.nut", format), Inverted(RawPictures("in.nut", format))) << format;
    }
}

TEST_F(Apply, WarnsThatTenBitsBecomeEight) {
    Ffmpeg("-f lavfi -i testsrc2=size=32x24:duration=0.2,format=yuv422p10le -c:v ffv1 in.mkv");
    const Outcome outcome = Nifikral("apply in.mkv out.mkv gray --encoder ffv1");
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_NE(outcome.errors.find("10-bit"), std::string::npos) << outcome.errors;
    EXPECT_NE(outcome.errors.find("dithered"), std::string::npos) << outcome.errors;
    EXPECT_EQ(Probe("out.mkv", "stream=pix_fmt"), "yuv422p\n");
}

TEST_F(Apply, ShowsAFadeInAFormatWithoutAlpha) {
    Ffmpeg("-f lavfi -i color=white:size=32x24:rate=10:duration=0.4,format=yuv420p -c:v ffv1 in.mkv");
    ASSERT_EQ(Nifikral("apply in.mkv out.mkv fadeout --encoder ffv1").exitCode, 0);
    const std::string pictures = RawPictures("out.mkv", "yuv420p");
    // White is 235, black 16; levels of 256, 170, 85 and 0 of 256 on an alpha of 255, the first held at 255.
    const int expected[] = {234, 161, 88, 16};
    for (int i = 0; i < 4; ++i) {
        const int luma = static_cast<unsigned char>(pictures.at(std::size_t(i) * 32 * 24 * 3 / 2));
        EXPECT_NEAR(luma, expected[i], 1) << "frame " << i;
    }
}

TEST_F(Apply, KeepsSoundTimesAndTagsAsTheyWere) {
    // Every third frame is missing, so that the times are uneven.
    Ffmpeg(
        "-f lavfi -i testsrc2=size=64x48:rate=25:duration=2 -f lavfi -i sine=duration=2 -vf "
        "select='mod(n\\,3)',setsar=4/3,setfield=tff -vsync passthrough -pix_fmt yuv420p -color_range pc -colorspace "
        "bt709 -color_primaries bt709 -color_trc bt709 -c:v libx264 -flags +ildct -c:a aac in.mkv");
    const Outcome outcome = Nifikral("apply in.mkv out.mkv gray");
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
    const std::string entries =
        "stream=width,height,sample_aspect_ratio,pix_fmt,color_range,color_space,"
        "color_transfer,color_primaries,field_order,time_base,avg_frame_rate";
    EXPECT_EQ(Probe("out.mkv", entries), Probe("in.mkv", entries));
    EXPECT_NE(Probe("in.mkv", entries).find("bt709"), std::string::npos);
    const std::string perFrame = "frame=best_effort_timestamp,interlaced_frame,top_field_first";
    EXPECT_EQ(Probe("out.mkv", perFrame), Probe("in.mkv", perFrame));
    EXPECT_NE(Probe("in.mkv", perFrame).find("|1|1"), std::string::npos);
    const std::string sound = Ffmpeg("-i in.mkv -map 0:a -c copy -f framemd5 -");
    EXPECT_GT(sound.size(), 1000u);
    EXPECT_EQ(Ffmpeg("-i out.mkv -map 0:a -c copy -f framemd5 -"), sound);
}

TEST_F(Apply, TurnsPicturesUpright) {
    Ffmpeg("-f lavfi -i testsrc2=size=64x48:rate=25:duration=0.2 -c:v libx264 -qp 0 flat.mp4");
    for (const std::string angle : {"90", "180", "270"}) {
        Ffmpeg("-i flat.mp4 -c copy -metadata:s:v rotate=" + angle + " turned.mp4");
        ASSERT_EQ(Nifikral("apply turned.mp4 out.mkv invert -y --encoder ffv1").exitCode, 0);
        EXPECT_EQ(Probe("out.mkv", "stream=width,height"), angle == "180" ? "64|48\n" : "48|64\n");
        EXPECT_EQ(RawPictures("out.mkv", "yuv420p"), Inverted(RawPictures("turned.mp4", "yuv420p"))) << angle;
    }
}

TEST_F(Apply, TakesARangeWithItsSoundAndCountsFilesAbsolutely) {
    Ffmpeg(
        "-f lavfi -i testsrc2=size=32x24:rate=25:duration=2 -f lavfi -i sine=duration=2 -c:v ffv1 -c:a pcm_s16le "
        "in.mkv");
    const std::string all = RawPictures("in.mkv", "yuv420p");
    constexpr std::size_t size = 32 * 24 * 3 / 2;
    ASSERT_EQ(Nifikral("apply in.mkv out.mkv invert --frames 10-14 --encoder ffv1").exitCode, 0);
    EXPECT_EQ(RawPictures("out.mkv", "yuv420p"), Inverted(all.substr(10 * size, 5 * size)));
    const std::string times = Probe("out.mkv", "frame=best_effort_timestamp_time");
    EXPECT_EQ(times.substr(0, 9), "0.000000\n");
    const std::size_t samples = Ffmpeg("-i out.mkv -map 0:a -f s16le -").size() / 2;
    EXPECT_NEAR(double(samples), 0.2 * 44100, 2 * 1024);

    const Outcome pictures = Nifikral("apply in.mkv out_%03d.png invert --frames 48-99");
    EXPECT_EQ(pictures.exitCode, 0);
    EXPECT_NE(pictures.errors.find("0 to 49"), std::string::npos) << pictures.errors;
    EXPECT_EQ(Files(), (std::set<std::string>{"in.mkv", "out.mkv", "out_048.png", "out_049.png"}));
}

TEST_F(Apply, ChangesValuesOverTheRun) {
    Ffmpeg("-f lavfi -i testsrc2=size=64x48:rate=10:duration=0.5,format=yuv420p -c:v ffv1 in.mkv");
    const std::string before = RawPictures("in.mkv", "yuv420p");
    constexpr std::size_t size = 64 * 48 * 3 / 2;
    std::string expected;
    for (std::size_t i = 0; i < 5; ++i)
        expected += ThroughModule(
            before.substr(i * size, size), 0, 64, 48, "rotate",
            {{"rotate_r", "20"}, {"rotate_x", std::to_string(20 + 5 * i)}, {"rotate_y", "24"}, {"rotate_scale", "3"}});
    for (const std::string x : {"20..40 --threads 1", "20..40 --threads 4", "@0:20,2:30,4:40 --threads 4"}) {
        ASSERT_EQ(Nifikral("apply in.mkv out.mkv -y --encoder ffv1 rotate:r=20:y=24:scale=3:x=" + x).exitCode, 0);
        EXPECT_EQ(RawPictures("out.mkv", "yuv420p"), expected) << x;
    }
}

// What an encoder reads without having written it would show.
TEST_F(Apply, GivesTheSameBytesWhateverMemoryHolds) {
    Ffmpeg("-f lavfi -i testsrc2=size=192x144:duration=1 in.mkv");
    std::set<std::string> made;
    for (const char* const filling : {"85", "170"}) {
        ASSERT_EQ(Nifikral("apply in.mkv out.mp4 fadein -y", [=] { setenv("MALLOC_PERTURB_", filling, 1); }).exitCode,
                  0);
        made.insert(ReadFile(folder / "out.mp4"));
    }
    EXPECT_EQ(made.size(), 1u);
}

TEST_F(Apply, WorksInPipesAndOnPhotographs) {
    Ffmpeg("-f lavfi -i testsrc2=size=32x24:duration=0.2,format=yuv420p -c:v rawvideo in.nut");
    const std::string pictures = RawPictures("in.nut", "yuv420p");
    const Outcome outcome = Wait(Start({"sh", "-c", NIFIKRAL_PROGRAM " apply - - invert < in.nut > out.nut"}));
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_EQ(RawPictures("out.nut", "yuv420p"), Inverted(pictures));
    EXPECT_EQ(Nifikral("apply in.nut - gray -f y4m").output.substr(0, 16), "YUV4MPEG2 W32 H2");

    Ffmpeg("-i in.nut -frames:v 1 photo.png");
    for (const std::string name : {"photo.jpg", "photo.webp", "copy.png", "photo.tiff"})
        EXPECT_EQ(Nifikral("apply photo.png " + name + " invert").exitCode, 0) << name;
    EXPECT_EQ(RawPictures("copy.png", "rgb24"), Inverted(RawPictures("photo.png", "rgb24")));
    EXPECT_EQ(Probe("photo.jpg", "stream=color_range"), "pc\n");
    EXPECT_EQ(Nifikral("apply photo.jpg black.png directfadein:FadeMax=0").exitCode, 0);
    EXPECT_EQ(RawPictures("black.png", "rgb24"), std::string(32 * 24 * 3, '\0'));
}

}  // namespace
}  // namespace Nifikral
