#include <cmath>

#include "avbase/IAVManager.h"
#include "host/films/media_manager.h"
#include "tests/host/command.h"

namespace Nifikral {
namespace {

class Inputs : public CommandTest {
 protected:
    // How far two pictures' samples are apart on average.
    static double Difference(const std::string& a, const std::string& b) {
        EXPECT_EQ(a.size(), b.size());
        double sum = 0;
        for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i)
            sum += std::abs(int(static_cast<unsigned char>(a[i])) - int(static_cast<unsigned char>(b[i])));
        return sum / double(a.size());
    }
    void Encode(const std::string& arguments) const {
        const Outcome outcome = Wait(Start(Words("heif-enc " + arguments)));
        ASSERT_EQ(outcome.exitCode, 0) << outcome.output << outcome.errors;
    }
    Outcome FromStdin(const std::string& file, const std::string& arguments) const {
        return Wait(Start({"sh", "-c", NIFIKRAL_PROGRAM " apply - " + arguments + " < " + file}));
    }
};

TEST_F(Inputs, AreHeicAndAvifOfEveryDepthWithTheirAlpha) {
    const std::string source = "-f lavfi -i testsrc2=size=64x48:alpha=128 -frames:v 1 ";
    Ffmpeg(source + "-pix_fmt rgb24 plain.png");
    Ffmpeg(source + "-pix_fmt rgba clear.png");
    Ffmpeg(source + "-pix_fmt rgb48be deep.png");
    Encode("plain.png -q 95 -o plain.heic");
    Encode("-A plain.png -q 95 -o plain.avif");
    Encode("clear.png -q 95 -o clear.heic");
    Encode("deep.png -b 10 -q 95 -o deep.heic");
    Encode("-A deep.png -b 12 -q 95 -o deep.avif");
    for (const std::string name : {"plain.heic", "plain.avif", "clear.heic", "deep.heic", "deep.avif"}) {
        const std::string png = name.substr(0, name.find('.')) + ".png", format = png == "clear.png" ? "rgba" : "rgb24";
        for (const bool piped : {false, true}) {
            const Outcome outcome =
                piped ? FromStdin(name, "out.png invert -y") : Nifikral("apply " + name + " out.png invert -y");
            EXPECT_EQ(outcome.exitCode, 0) << name << outcome.errors;
            EXPECT_EQ(Nifikral("apply out.png again.png invert -y").exitCode, 0);
            EXPECT_LT(Difference(RawPictures("again.png", format), RawPictures(png, format)), 4) << name;
        }
        const std::string whole = ReadFile(folder / name);
        std::ofstream(folder / ("cut_" + name), std::ios::binary) << whole.substr(0, whole.size() * 3 / 4);
        const Outcome cut = Nifikral("apply cut_" + name + " out.png invert -y");
        EXPECT_EQ(cut.exitCode, 3) << name;
        EXPECT_NE(cut.errors.find("cut_" + name + " is damaged"), std::string::npos) << cut.errors;
    }
    std::filesystem::copy_file(folder / "plain.heic", folder / "n1.heic");
    std::filesystem::copy_file(folder / "clear.heic", folder / "n2.heic");
    EXPECT_EQ(Nifikral("apply n%d.heic out.nut gray --encoder rawvideo").exitCode, 0);
    EXPECT_EQ(Probe("out.nut", "frame=pts_time"), "0.000000\n0.040000\n");
    MediaManager manager;
    for (const char* const importer : {AVBased::importerImage, ""}) {
        AVBased::IAVSource* const picture = manager.OpenSource((folder / "plain.heic").c_str(), importer);
        ASSERT_TRUE(picture);
        EXPECT_TRUE(picture->IsStill());
        picture->Free();
    }
}

TEST_F(Inputs, AreJpegOfEverySamplingAndSize) {
    struct Case {
        std::string size, samples, kept;
    };
    for (const auto& [size, samples, kept] :
         {Case{"64x48", "yuvj420p", "yuv420p"}, Case{"61x47", "yuvj420p", "yuv420p"},
          Case{"64x48", "yuvj422p", "yuv422p"}, Case{"61x47", "yuvj444p", "yuv444p"}}) {
        Ffmpeg("-f lavfi -i testsrc2=size=" + size + ",gblur=6 -frames:v 1 -vf setsar=4/3 -q:v 2 -pix_fmt " + samples +
               " in.jpg");
        const std::string pictures = RawPictures("in.jpg", "rgb24");
        ASSERT_EQ(Nifikral("apply in.jpg out.png invert invert -y").exitCode, 0);
        EXPECT_LT(Difference(RawPictures("out.png", "rgb24"), pictures), 4) << size << samples;
        // From pixels, and from planes where the size allows it.
        const Outcome outcome = Nifikral("apply in.jpg out.jpg invert invert -y -v");
        EXPECT_NE(outcome.errors.find("out.jpg: libjpeg-turbo, " + kept), std::string::npos) << outcome.errors;
        EXPECT_EQ(Probe("out.jpg", "stream=pix_fmt,sample_aspect_ratio"), "4:3|" + samples + "\n");
        EXPECT_LT(Difference(RawPictures("out.jpg", "rgb24"), pictures), 4) << size << samples;
        ASSERT_EQ(Nifikral("apply in.jpg film.mkv invert invert --encoder ffv1 -y").exitCode, 0);
        EXPECT_EQ(Probe("film.mkv", "stream=pix_fmt,color_range"), kept + "|pc\n");
        Ffmpeg("-i film.mkv -vf scale=out_range=tv -color_range tv -pix_fmt " + kept + " -c:v ffv1 plain.mkv");
        ASSERT_EQ(Nifikral("apply plain.mkv out.jpg invert invert -y").exitCode, 0);
        EXPECT_LT(Difference(RawPictures("out.jpg", "rgb24"), RawPictures("plain.mkv", "rgb24")), 4) << size << samples;
    }
    ASSERT_EQ(Nifikral("apply in.jpg part.mkv gray --crop 32x32 --encoder ffv1").exitCode, 0);
    EXPECT_EQ(Probe("part.mkv", "stream=width,pix_fmt"), "32|yuv444p\n");
}

TEST_F(Inputs, AreAnimationsWithTheirOwnTimes) {
    // Shown for 100, 300, 100, 500 and at last 100 milliseconds.
    const std::string source =
        "-f lavfi -i testsrc2=size=64x48:rate=10:duration=1.1 -vf select='eq(n,0)+eq(n,1)+eq(n,4)+eq(n,5)+eq(n,10)' "
        "-vsync passthrough ";
    Ffmpeg(source + "-c:v libwebp_anim -lossless 1 -pix_fmt bgra a.webp");
    Ffmpeg(source + "a.gif");
    Ffmpeg(source + "-f apng -pix_fmt rgb24 a.png");
    Ffmpeg(source + "-c:v ffv1 -pix_fmt bgr0 a.mkv");
    const std::string pictures = RawPictures("a.mkv", "rgb24");
    for (const std::string name : {"a.webp", "a.gif", "a.png"}) {
        const Outcome outcome = Nifikral("apply " + name + " out.nut invert invert --encoder rawvideo -y");
        ASSERT_EQ(outcome.exitCode, 0) << name << outcome.errors;
        EXPECT_EQ(Probe("out.nut", "frame=pts_time"), "0.000000\n0.100000\n0.400000\n0.500000\n1.000000\n") << name;
        EXPECT_LT(Difference(RawPictures("out.nut", "rgb24"), pictures), name == "a.gif" ? 20 : 0.01) << name;
        MediaManager manager;
        AVBased::IAVSource* const film = manager.OpenSource((folder / name).c_str(), "");
        ASSERT_TRUE(film) << name;
        EXPECT_FALSE(film->IsStill()) << name;
        film->Free();
    }
    EXPECT_EQ(FromStdin("a.webp", "out.nut gray -y --frames 2-3").exitCode, 0);
    EXPECT_EQ(Probe("out.nut", "frame=pts_time"), "0.000000\n0.100000\n");
    const Outcome seen = Nifikral("apply a.webp no.nut gray --dry-run");
    EXPECT_NE((seen.output + seen.errors).find("frames: 5"), std::string::npos) << seen.errors;
    std::filesystem::resize_file(folder / "a.webp", std::filesystem::file_size(folder / "a.webp") * 3 / 4);
    const Outcome cut = Nifikral("apply a.webp out.nut gray -y");
    EXPECT_EQ(cut.exitCode, 3);
    EXPECT_NE(cut.errors.find("a.webp is damaged"), std::string::npos) << cut.errors;
}

TEST_F(Inputs, ThatCannotBeReadAreCalledWhatTheyAre) {
    Ffmpeg("-f lavfi -i testsrc2=size=64x48:duration=0.4 -c:v mpeg4 late.mp4");
    Ffmpeg("-i late.mp4 -c copy -movflags +faststart early.mp4");
    Ffmpeg("-i late.mp4 -frames:v 1 small.png");
    const Outcome late = FromStdin("late.mp4", "out.nut gray");
    EXPECT_EQ(late.exitCode, 3);
    EXPECT_NE(late.errors.find("index"), std::string::npos) << late.errors;
    EXPECT_NE(late.errors.find("+faststart"), std::string::npos) << late.errors;
    EXPECT_EQ(late.errors.find("damaged"), std::string::npos) << late.errors;
    EXPECT_EQ(FromStdin("early.mp4", "out.nut gray").exitCode, 0);

    std::string large = ReadFile(folder / "small.png");
    large.replace(16, 8, std::string("\0\0\x9c\x40\0\0\x75\x30", 8));
    std::ofstream(folder / "large.png", std::ios::binary) << large;
    for (const Outcome& outcome : {Nifikral("apply large.png out.png gray"), FromStdin("large.png", "out.png gray")}) {
        EXPECT_EQ(outcome.exitCode, 3);
        EXPECT_NE(outcome.errors.find("40000x30000 pixels large"), std::string::npos) << outcome.errors;
        EXPECT_EQ(outcome.errors.find("damaged"), std::string::npos) << outcome.errors;
    }
}

// Looking into a pipe to see what it holds would take that out of it.
TEST_F(Inputs, AreNamedPipesOfWhichNothingIsLost) {
    Ffmpeg("-f lavfi -i testsrc2=size=64x48:rate=25 -frames:v 5 -pix_fmt yuv420p film.y4m");
    for (const std::string input : {"film.y4m", "/dev/fd/3"}) {
        const std::string line =
            std::string(NIFIKRAL_PROGRAM " apply ") + input + " -y out.nut gray --encoder rawvideo";
        const Outcome outcome = Wait(Start({"bash", "-c", line + " 3< <(cat film.y4m)"}));
        EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
        std::filesystem::rename(folder / "out.nut", folder / (input == "film.y4m" ? "file.nut" : "pipe.nut"));
    }
    EXPECT_EQ(RawPictures("file.nut", "gray"), RawPictures("pipe.nut", "gray"));
}

}  // namespace
}  // namespace Nifikral
