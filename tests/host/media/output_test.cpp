#include <algorithm>
#include <cstdlib>
#include <map>

#include "tests/host/command.h"

namespace Nifikral {
namespace {

using OutputTest = CommandTest;

struct Alpha {
    const char *output, *options;
    bool translucency, fade;  // whether the alpha of these effects arrives as such
};

class AlphaIn : public CommandTest, public ::testing::WithParamInterface<Alpha> {};

// The mean of a channel (3: alpha) in the last picture.
double Mean(const std::string& pictures, std::size_t channel) {
    constexpr std::size_t size = 32 * 24 * 4;
    double sum = 0;
    for (std::size_t i = pictures.size() - size + channel; i < pictures.size(); i += 4)
        sum += std::uint8_t(pictures[i]);
    return sum / (32 * 24);
}

TEST_P(AlphaIn, StaysWhereTheOutputIsForItAndLiesOverBlackElsewhere) {
    const auto [output, options, translucency, fade] = GetParam();
    Ffmpeg("-f lavfi -i color=white:s=32x24:r=4:d=1,format=yuv420p -c:v ffv1 film.mkv -frames:v 1 photo.png");
    const std::set<std::string> films = {".apng", ".mov", ".webm", ".mp4", ".mkv"};
    const bool film = films.contains(std::filesystem::path(output).extension());
    const std::string decoder = std::string(output).ends_with("webm") ? "-c:v libvpx-vp9 " : "";
    for (const auto& [effect, stays] :
         {std::pair("transparency:opacity=25", translucency), std::pair("fadeout:FadeMin=64", fade)}) {
        // A photograph's fade ends where it begins; in the film a quarter is left in the last picture.
        if (!film && std::string(effect).starts_with("fadeout")) continue;
        const Outcome outcome = Nifikral(std::string("apply ") + (film ? "film.mkv " : "photo.png ") + output + " " +
                                         effect + " " + options + " -y");
        ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
        const std::string pictures = Ffmpeg(decoder + "-i " + output + " -f rawvideo -pix_fmt rgba -");
        EXPECT_NEAR(Mean(pictures, 3), stays ? 64 : 255, 3) << effect;
        EXPECT_NEAR(Mean(pictures, 0), stays ? 255 : 64, 6) << effect;
    }
}

INSTANTIATE_TEST_SUITE_P(, AlphaIn,
                         ::testing::Values(Alpha{"a.png", "", true, true}, Alpha{"a.webp", "", true, true},
                                           Alpha{"a.tiff", "", true, true}, Alpha{"a.jpg", "", false, false},
                                           Alpha{"a.bmp", "", false, false}, Alpha{"a.apng", "", true, true},
                                           Alpha{"qtrle.mov", "--encoder qtrle", true, true},
                                           Alpha{"prores.mov", "--encoder prores_ks", true, true},
                                           Alpha{"a.webm", "", true, false}, Alpha{"a.mp4", "", false, false},
                                           Alpha{"a.mkv", "--encoder ffv1", true, false}),
                         [](const auto& info) {
                             std::string name = info.param.output;
                             std::replace(name.begin(), name.end(), '.', '_');
                             return name;
                         });

TEST_F(OutputTest, OddSidesBecomeEvenWhereTheCodecNeedsThem) {
    Ffmpeg("-f lavfi -i testsrc=s=67x45:r=10:d=0.3,format=yuv420p -c:v ffv1 in.mkv");
    const Outcome cropped = Nifikral("apply in.mkv out.mp4 invert --encoder-option crf=0");
    ASSERT_EQ(cropped.exitCode, 0);
    EXPECT_EQ(Probe("out.mp4", "stream=width,height,pix_fmt"), "66|44|yuv420p\n");
    EXPECT_NE(cropped.errors.find("out.mp4 is 66x44"), std::string::npos) << cropped.errors;
    ASSERT_EQ(Nifikral("apply in.mkv full.mkv invert --encoder ffv1").exitCode, 0);
    EXPECT_EQ(Probe("full.mkv", "stream=width,height"), "67|45\n");
    // Cut off, not scaled.
    EXPECT_EQ(RawPictures("out.mp4", "gray"), Ffmpeg("-i full.mkv -vf crop=66:44:0:0 -f rawvideo -pix_fmt gray -"));
    const Outcome asked = Nifikral("apply in.mkv asked.mp4 invert --format yuva444p");
    EXPECT_EQ(asked.errors, "");
    EXPECT_EQ(Probe("asked.mp4", "stream=width,height,pix_fmt"), "67|45|yuv444p\n");
}

class DvdTest : public CommandTest {
 protected:
    // The limits of a video DVD, whatever the standard.
    void ExpectDvd(const std::string& file, const std::string& size, const std::string& aspect, const std::string& rate,
                   std::size_t frames) const {
        const std::string stream =
            Probe(file, "stream=codec_name,profile,width,height,display_aspect_ratio,pix_fmt,r_frame_rate");
        EXPECT_TRUE(stream.starts_with("mpeg2video|Main|" + size + "|" + aspect + "|yuv420p|" + rate)) << stream;
        EXPECT_EQ(RawPictures(file, "gray").size(), frames * (size == "720|576" ? 720u * 576 : 720u * 480)) << file;
        const std::string sound = Wait(Start(Words("ffprobe -v error -select_streams a -of csv=p=0 -show_entries "
                                                   "stream=codec_name,sample_rate " +
                                                   file)))
                                      .output;
        EXPECT_TRUE(sound.empty() || sound.starts_with("ac3,48000")) << sound;
        // Packs of a sector's size; the rate in their headers, in 50 bytes a second, is that of a player.
        const std::string bytes = ReadFile(folder / file);
        ASSERT_GT(bytes.size(), 4096u);
        EXPECT_EQ(bytes.size() % 2048, 0u);
        for (std::size_t at = 0; at < bytes.size(); at += 2048) {
            ASSERT_EQ(bytes.substr(at, 4), std::string("\0\0\1\xBA", 4)) << at;
            const auto byte = [&](std::size_t i) { return unsigned(std::uint8_t(bytes[at + i])); };
            EXPECT_EQ((byte(10) << 14 | byte(11) << 6 | byte(12) >> 2) * 400, 10'080'000u);
        }
        // No second of coded pictures and sound exceeds what a player reads.
        EXPECT_LT(MostBits(file), 9.8e6) << file;
        // Nothing depends on pictures more than a group apart.
        const std::vector<std::string> keys = Words(Probe(file, "packet=flags"));
        std::size_t since = 0;
        for (const std::string& flags : keys) EXPECT_LE(since = flags[0] == 'K' ? 0 : since + 1, 17u);
    }

    double MostBits(const std::string& file) const {
        std::istringstream lines(
            Wait(Start(Words("ffprobe -v error -of csv=p=0 -show_entries packet=dts_time,size " + file))).output);
        std::map<int, double> seconds;
        double time = 0;
        for (std::string line; std::getline(lines, line);) {
            const std::size_t comma = line.find(',');
            if (line[0] != 'N') time = std::strtod(line.c_str(), nullptr);
            seconds[int(time)] += 8 * std::strtod(line.c_str() + comma + 1, nullptr);
        }
        double most = 0;
        for (const auto& [second, bits] : seconds) most = std::max(most, bits);
        return most;
    }
};

TEST_F(DvdTest, AProfileFitsAnyFilm) {
    // Noise needs all the bits there are; 30 pictures a second become 25, and 44.1 kHz 48.
    Ffmpeg(
        "-f lavfi -i nullsrc=s=320x180:r=30:d=2,geq=random(1)*255:128:128 -f lavfi -i sine=d=2:r=44100 -c:v libx264 "
        "-qp 10 -c:a aac wide.mp4");
    for (const std::string words : {"pal.mpg --threads 1", "pal.vob --threads 3"}) {
        const Outcome outcome = Nifikral("apply wide.mp4 " + words + " addnoise --profile pal-16:9");
        const std::string file = words.substr(0, words.find(' '));
        ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
        EXPECT_NE(outcome.errors.find("ac3"), std::string::npos) << outcome.errors;
        ExpectDvd(file, "720|576", "16:9", "25/1", 50);
    }
    EXPECT_TRUE(ReadFile(folder / "pal.mpg") == ReadFile(folder / "pal.vob"));
    ASSERT_EQ(Nifikral("title Hi wide.mp4 ntsc.mpg --profile ntsc-4:3").exitCode, 0);
    ExpectDvd("ntsc.mpg", "720|480", "4:3", "30000/1001", 60);
    // A wide film in a narrow picture lies between black bars.
    const std::string gray = RawPictures("ntsc.mpg", "gray");
    const auto row = [&](std::size_t y) { return gray.substr(y * 720, 720); };
    const auto brightest = [&](std::size_t y) {
        int most = 0;
        for (const char value : row(y)) most = std::max(most, int(std::uint8_t(value)));
        return most;
    };
    EXPECT_LE(brightest(30), 8);
    EXPECT_LE(brightest(449), 8);
    EXPECT_GT(brightest(80), 100);
    EXPECT_GT(brightest(400), 100);
    Ffmpeg("-i wide.mp4 -frames:v 1 photo.png");
    ASSERT_EQ(Nifikral("title Hi photo.png still.mpg --profile pal --seconds 1").exitCode, 0);
    ExpectDvd("still.mpg", "720|576", "4:3", "25/1", 25);
    EXPECT_EQ(Nifikral("apply photo.png out.png gray --profile pal").exitCode, 2);
    const Outcome chunks = Nifikral("plan apply wide.mp4 out.mpg gray --profile pal");
    EXPECT_EQ(chunks.exitCode, 2);
    EXPECT_NE(chunks.errors.find("frame rate"), std::string::npos) << chunks.errors;
}

TEST_F(DvdTest, AFilmOfFullRangeIsFittedInOneStepToLimitedRange) {
    Ffmpeg("-f lavfi -i color=white:s=192x108:r=25:d=0.2 -pix_fmt yuvj420p -color_range pc -c:v mjpeg -q:v 2 full.mkv");
    ASSERT_EQ(Nifikral("apply full.mkv out.mpg --rate 25 --profile pal-16:9").exitCode, 0);
    EXPECT_TRUE(Probe("out.mpg", "stream=width,height,color_range").starts_with("720|576|tv"));
    const std::string white = RawPictures("out.mpg", "yuv420p");
    EXPECT_NEAR(static_cast<unsigned char>(white[std::size_t(720) * 288 + 360]), 235, 1);
}

TEST_F(DvdTest, InterlacedPicturesStaySoOrAreMadeWhole) {
    Ffmpeg(
        "-f lavfi -i testsrc2=s=720x576:r=50:d=1,tinterlace=4,setsar=64/45 -f lavfi -i sine=d=1:r=48000 -c:v "
        "mpeg2video -flags +ildct+ilme -top 1 -b:v 6M -c:a ac3 in.mkv");
    const Outcome same = Nifikral("apply in.mkv same.mpg gray");
    ASSERT_EQ(same.exitCode, 0) << same.errors;
    EXPECT_EQ(same.errors, "");
    ExpectDvd("same.mpg", "720|576", "16:9", "25/1", 25);
    EXPECT_EQ(Probe("same.mpg", "frame=interlaced_frame").find('0'), std::string::npos);
    ASSERT_EQ(Nifikral("apply in.mkv ntsc.mpg gray --profile ntsc-16:9").exitCode, 0);
    ExpectDvd("ntsc.mpg", "720|480", "16:9", "30000/1001", 30);
    EXPECT_EQ(Probe("ntsc.mpg", "frame=interlaced_frame").find('1'), std::string::npos);
}

TEST_F(DvdTest, WithoutAProfileItIsMpeg2AndTheProfileIsNamed) {
    Ffmpeg("-f lavfi -i testsrc2=s=64x48:r=15:d=1 -c:v ffv1 in.mkv");
    for (const std::string file : {"out.mpg", "out.vob"}) {
        const Outcome outcome = Nifikral("apply in.mkv " + file + " gray");
        ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
        EXPECT_NE(outcome.errors.find("--profile"), std::string::npos) << outcome.errors;
        EXPECT_EQ(Probe(file, "stream=codec_name,width,height").substr(0, 16), "mpeg2video|64|48");
        // Twice the rate: MPEG-2 has no 15.
        EXPECT_EQ(RawPictures(file, "gray").size(), 30u * 64 * 48);
    }
}

}  // namespace
}  // namespace Nifikral
