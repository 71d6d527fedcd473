#include "host/media/frame_rate.h"
#include "tests/host/command.h"

namespace Nifikral {
namespace {

class Prepared : public CommandTest {
 protected:
    // Each frame has a luma of its own.
    void MakeSteps(const std::string& name, const std::string& more = "") const {
        Ffmpeg(
            "-f lavfi -i nullsrc=s=64x48:r=25:d=2,format=yuv420p,geq=lum=20+4*N:cb=128:cr=128 -f lavfi -i "
            "sine=d=2 " +
            more + " -c:v ffv1 -c:a pcm_s16le " + name);
    }
    std::vector<int> Lumas(const std::string& name) const {
        std::vector<int> lumas;
        const std::string pictures = RawPictures(name, "yuv420p");
        for (std::size_t at = 0; at < pictures.size(); at += 64 * 48 * 3 / 2)
            lumas.push_back(static_cast<unsigned char>(pictures[at]));
        return lumas;
    }
    double SoundSeconds(const std::string& name) const {
        return double(Ffmpeg("-i " + name + " -map 0:a -f s16le -ac 1 -ar 8000 -").size()) / 16000;
    }
    std::string Size(const std::string& name) const { return Probe(name, "stream=width,height,sample_aspect_ratio"); }
};

TEST_F(Prepared, PicturesAreCroppedThenScaledAsAskedFor) {
    Ffmpeg("-f lavfi -i testsrc=size=101x67:duration=0.2 -pix_fmt yuv420p -c:v ffv1 in.mkv");
    for (const auto& [options, filters] :
         {std::pair("--crop 30x21+8+6", "crop=30:21:8:6:exact=1"),
          std::pair("--crop 31x20+9+7", "crop=31:20:8:6:exact=1"),
          std::pair("--crop 50%x50%", "crop=51:34:24:16:exact=1"),
          std::pair("--scale 40x30", "scale=40:30:flags=bicubic"), std::pair("--scale 50", "scale=50:34:flags=bicubic"),
          std::pair("--scale x134", "scale=202:134:flags=bicubic"),
          std::pair("--scale 200%", "scale=202:134:flags=bicubic"),
          std::pair("--crop 40x40+0+0 --scale 20", "crop=40:40:0:0:exact=1,scale=20:20:flags=bicubic")}) {
        ASSERT_EQ(Nifikral("apply in.mkv out.mkv -y --encoder ffv1 " + std::string(options)).exitCode, 0) << options;
        Ffmpeg("-i in.mkv -vf " + std::string(filters) + " -c:v ffv1 judge.mkv");
        EXPECT_EQ(Probe("out.mkv", "stream=width,height"), Probe("judge.mkv", "stream=width,height")) << options;
        EXPECT_TRUE(RawPictures("out.mkv", "yuv420p") == RawPictures("judge.mkv", "yuv420p")) << options;
    }
    // A side that follows is even for films alone.
    Ffmpeg("-i in.mkv -frames:v 1 photo.png");
    ASSERT_EQ(Nifikral("apply photo.png small.png --scale 50").exitCode, 0);
    EXPECT_EQ(Probe("small.png", "stream=width,height"), "50|33\n");
    // Players show the picture in its own shape.
    ASSERT_EQ(Nifikral("apply in.mkv out.mkv -y --encoder ffv1 --scale 101x134").exitCode, 0);
    EXPECT_EQ(Size("out.mkv"), "101|134|2:1\n");
}

TEST_F(Prepared, EffectsCountInThePicturesTheyGet) {
    Ffmpeg("-f lavfi -i testsrc2=size=128x96:duration=0.4 -pix_fmt yuv420p -c:v ffv1 in.mkv");
    const std::string effect = "rotate:r=15:x=26:y=18:scale=0..4 gray:inside=rectangle,50%,0,50%,100%";
    ASSERT_EQ(Nifikral("apply in.mkv small.mkv --crop 100x96 --scale 50x48 --rate 50 --encoder ffv1").exitCode, 0);
    ASSERT_EQ(Nifikral("apply small.mkv judge.mkv --encoder ffv1 " + effect).exitCode, 0);
    for (const char* const threads : {"1", "3"}) {
        ASSERT_EQ(Nifikral("apply in.mkv out.mkv -y --crop 100x96 --scale 50x48 --rate 50 --encoder ffv1 --threads " +
                           std::string(threads) + " " + effect)
                      .exitCode,
                  0);
        EXPECT_TRUE(RawPictures("out.mkv", "yuv420p") == RawPictures("judge.mkv", "yuv420p"));
    }
    EXPECT_EQ(RawPictures("out.mkv", "yuv420p").size(), 20u * 50 * 48 * 3 / 2);
}

TEST_F(Prepared, ARateRepeatsAndLeavesOutAndKeepsTheSound) {
    MakeSteps("in.mkv");
    const std::string run = "apply in.mkv out.mkv -y --encoder ffv1 ";
    ASSERT_EQ(Nifikral(run + "--rate 50").exitCode, 0);
    const std::vector<int> twice = Lumas("out.mkv");
    ASSERT_EQ(twice.size(), 100u);
    for (std::size_t i = 0; i < twice.size(); ++i) EXPECT_NEAR(twice[i], 20 + 4 * double(i / 2), 2) << i;
    EXPECT_EQ(Probe("out.mkv", "stream=r_frame_rate"), "50/1\n");
    EXPECT_NEAR(SoundSeconds("out.mkv"), 2, 0.05);

    ASSERT_EQ(Nifikral(run + "--rate 10").exitCode, 0);
    const std::vector<int> fewer = Lumas("out.mkv");
    ASSERT_EQ(fewer.size(), 20u);
    for (std::size_t i = 0; i < fewer.size(); ++i) EXPECT_NEAR(fewer[i], 20 + 10 * double(i), 6) << i;
    EXPECT_NEAR(SoundSeconds("out.mkv"), 2, 0.05);

    ASSERT_EQ(Nifikral(run + "--rate 10 --frames 5-9").exitCode, 0);
    EXPECT_EQ(Lumas("out.mkv"), std::vector<int>(fewer.begin() + 5, fewer.begin() + 10));
    EXPECT_NEAR(SoundSeconds("out.mkv"), 0.5, 0.05);
    EXPECT_TRUE(Probe("out.mkv", "frame=best_effort_timestamp_time").starts_with("0.000000\n"));
    EXPECT_EQ(Nifikral(run + "--rate 10 --frames 20-").exitCode, 2);

    // A film whose pictures come at any time comes at one rate, as long as before.
    MakeSteps("uneven.mkv", "-vf select='gt(mod(n\\,5)\\,1)' -fps_mode vfr");
    ASSERT_EQ(Nifikral("apply uneven.mkv even.mkv --encoder ffv1 --rate 25 fadeout").exitCode, 0);
    EXPECT_EQ(Lumas("even.mkv").size(), 48u) << "from the third frame to the last";
    EXPECT_EQ(Lumas("even.mkv").front(), 28);
    EXPECT_LT(Lumas("even.mkv").back(), 30) << "the fade has its end elsewhere";
}

TEST_F(Prepared, StillsHaveNoRateAndTitlesTakeOne) {
    Ffmpeg("-f lavfi -i testsrc2=size=64x48 -frames:v 1 photo.png");
    ASSERT_EQ(Nifikral("apply photo.png out.png gray --rate 50 --scale 32").exitCode, 0);
    EXPECT_EQ(Probe("out.png", "stream=width,height"), "32|24\n");
    ASSERT_EQ(Nifikral("title Hi photo.png out.mkv --rate 50 --seconds 1 --crop 32x32 --encoder ffv1").exitCode, 0);
    EXPECT_EQ(Probe("out.mkv", "stream=width,height,r_frame_rate"), "32|32|50/1\n");
    EXPECT_EQ(RawPictures("out.mkv", "gray").size(), 50u * 32 * 32);
}

TEST_F(Prepared, WhatIsNoSizePartOrRateIsRefused) {
    Ffmpeg("-f lavfi -i testsrc2=size=64x48 -frames:v 1 in.png");
    for (const auto& [option, word] :
         {std::pair("--scale 0", "--scale 0 is no size"), std::pair("--scale 5x", "WIDTHxHEIGHT"),
          std::pair("--scale 99999", "16384"), std::pair("--scale x-3", "is no size"),
          std::pair("--crop 65x10", "is not within the picture, which is 64x48"),
          std::pair("--crop 10x10+60+0", "is not within"), std::pair("--crop 10", "is no part of a picture"),
          std::pair("--crop 10x10+1", "is no part of a picture"), std::pair("--rate 0", "frames a second from 1"),
          std::pair("--rate fast", "frames a second")}) {
        const Outcome outcome = Nifikral("apply in.png out.png gray " + std::string(option));
        EXPECT_EQ(outcome.exitCode, 2) << option;
        EXPECT_NE(outcome.errors.find(word), std::string::npos) << outcome.errors;
    }
    EXPECT_EQ(Files(), std::set<std::string>{"in.png"});
}

TEST(FrameRate, TakesDecimalsOfTelevisionForWhatTheyMean) {
    const auto is = [](const char* text, AVRational wanted) {
        const std::optional<AVRational> rate = ParseFrameRate(text);
        return rate && av_cmp_q(*rate, wanted) == 0;
    };
    EXPECT_TRUE(is("29.97", {30000, 1001}) && is("23.976", {24000, 1001}) && is("59.94", {60000, 1001}));
    EXPECT_TRUE(is("25", {25, 1}) && is("12.5", {25, 2}) && is("1", {1, 1}) && is("4", {4, 1}) &&
                is("30000/1001", {30000, 1001}));
    for (const char* const text : {"", "x", "25x", "0", "0.5", "241", "25/0", "25/", "/1", "1e9"})
        EXPECT_FALSE(ParseFrameRate(text)) << text;
}

}  // namespace
}  // namespace Nifikral
