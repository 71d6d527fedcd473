#include <algorithm>
#include <cstdlib>

#include "tests/host/command.h"

namespace Nifikral {
namespace {

class SoundTest : public CommandTest {
 protected:
    static constexpr int rate = 48000, streamCount = 7;

    // Two seconds of pictures, and a tone after a second of silence in all codecs that are usual.
    void MakeFilm() const {
        std::string sound;
        const char* const codecs[streamCount] = {"pcm_s16le", "aac",     "libmp3lame", "ac3",
                                                 "flac",      "libopus", "libvorbis"};
        for (int i = 0; i < streamCount; ++i) {
            const std::string n = std::to_string(i);
            sound += " -map 1:a -c:a:" + n + " " + codecs[i] + " -metadata:s:a:" + n + " language=" + Language(i);
        }
        Ffmpeg(
            "-f lavfi -i testsrc2=s=64x48:r=25:d=2 -f lavfi -i "
            "aevalsrc=0.5*sin(2*PI*440*t)*gt(t\\,1):s=48000:d=2 -map 0:v -c:v libx264 -ac 2" +
            sound + " in.mkv");
    }

    static std::string Language(int stream) { return {'x', char('a' + stream), 'y'}; }

    std::vector<std::string> Streams(const std::string& file, const std::string& entries) const {
        return Words(
            Wait(Start(Words("ffprobe -v error -select_streams a -of csv=p=0 -show_entries " + entries + " " + file)))
                .output);
    }

    struct Heard {
        double begin = -1, end = 0;
    };

    // How much later than all else the pictures begin.
    double Delay(const std::string& file) const {
        const auto start = [&](const std::string& entries) {
            return std::strtod(Probe(file, entries).c_str(), nullptr);
        };
        return start("stream=start_time") - start("format=start_time");
    }

    // When the tone begins in each stream, counted from the first picture, and when the stream ends.
    std::vector<Heard> Listen(const std::string& file, int streams) const {
        std::string outputs;
        for (int i = 0; i < streams; ++i)
            outputs += " -map 0:a:" + std::to_string(i) +
                       " -af aresample=async=1:first_pts=0 -ac 1 -ar 48000 -f s16le " + std::to_string(i) + ".raw";
        Ffmpeg("-i " + file + outputs);
        const double delay = Delay(file);
        std::vector<Heard> heard;
        for (int i = 0; i < streams; ++i) {
            const std::string bytes = ReadFile(folder / (std::to_string(i) + ".raw"));
            Heard one;
            one.end = double(bytes.size()) / 2 / rate;
            for (std::size_t at = 0; at + 1 < bytes.size() && one.begin == -1; at += 2)
                if (std::abs(std::int16_t(std::uint8_t(bytes[at]) | bytes[at + 1] << 8)) > 3000)
                    one.begin = double(at) / 2 / rate - delay;
            heard.push_back(one);
        }
        return heard;
    }

    void ExpectTone(const std::string& file, int streams, double begin, double end) const {
        // Where time is counted in pictures, it is off by half of one; what has no place for a delay adds the
        // encoder's.
        for (const Heard& heard : Listen(file, streams)) {
            EXPECT_NEAR(heard.begin, begin, 0.05) << file;
            EXPECT_NEAR(heard.end, end, 0.12) << file;
        }
    }
};

struct Container {
    const char *extension, *codecs;
};
void PrintTo(const Container& value, std::ostream* out) { *out << value.extension; }

class SoundIn : public SoundTest, public ::testing::WithParamInterface<Container> {};

TEST_P(SoundIn, ArrivesInEveryStreamAndWhatIsEncodedIsSaid) {
    MakeFilm();
    const auto [extension, codecs] = GetParam();
    const std::string file = std::string("out.") + extension;
    const Outcome outcome = Nifikral("apply in.mkv " + file + " gray");
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
    std::vector<std::string> names;
    for (std::string name : Streams(file, "stream=codec_name")) {
        name.erase(std::remove(name.begin(), name.end(), ','), name.end());
        names.push_back(name);
    }
    // Transport streams are listed once for each programme too.
    if (names.size() == 2 * streamCount) names.resize(streamCount);
    std::string found;
    for (const std::string& name : names) found += (found.empty() ? "" : " ") + name;
    EXPECT_EQ(found, codecs);
    ExpectTone(file, int(names.size()), 1, 2);
    const bool changed = found != "pcm_s16le aac mp3 ac3 flac opus vorbis";
    std::istringstream lines(outcome.errors);
    int ofSound = 0;
    for (std::string line; std::getline(lines, line);) ofSound += line.find("sound") != std::string::npos;
    EXPECT_EQ(ofSound, int(changed) + int(names.size() == 1)) << outcome.errors;
    EXPECT_EQ(outcome.errors.find("encoded with") != std::string::npos, changed) << outcome.errors;
}

INSTANTIATE_TEST_SUITE_P(, SoundIn,
                         ::testing::Values(Container{"mp4", "aac aac mp3 ac3 aac opus vorbis"},
                                           Container{"mov", "pcm_s16le aac mp3 ac3 aac aac aac"},
                                           Container{"mkv", "pcm_s16le aac mp3 ac3 flac opus vorbis"},
                                           Container{"webm", "opus opus opus opus opus opus vorbis"},
                                           Container{"avi", "pcm_s16le aac mp3 ac3 mp3 mp3 mp3"},
                                           Container{"mpg", "mp2 mp2 mp3 ac3 mp2 mp2 mp2"},
                                           Container{"ts", "mp2 aac mp3 ac3 mp2 opus mp2"},
                                           Container{"ogv", "vorbis vorbis vorbis vorbis flac opus vorbis"},
                                           Container{"flv", "aac"}, Container{"3gp", "aac aac aac aac aac aac aac"},
                                           Container{"wmv", "pcm_s16le aac mp3 wmav2 wmav2 wmav2 wmav2"},
                                           Container{"mxf",
                                                     "pcm_s16le pcm_s16le pcm_s16le pcm_s16le pcm_s16le "
                                                     "pcm_s16le pcm_s16le"},
                                           Container{"nut", "pcm_s16le aac mp3 ac3 flac opus vorbis"}),
                         [](const auto& info) { return std::string(info.param.extension); });

TEST_F(SoundTest, EncodedSoundStaysInStepInRangesAndJoinedChunks) {
    MakeFilm();
    ASSERT_EQ(Nifikral("apply in.mkv part.webm gray --frames 15-39").exitCode, 0);
    ExpectTone("part.webm", streamCount, 0.4, 1);
    const Outcome plan = Nifikral("plan --chunks 2 apply in.mkv joined.webm gray --frames 15-39");
    const Outcome made = Wait(Start({"sh", "-ec", plan.output}));
    ASSERT_EQ(made.exitCode, 0) << made.errors;
    const auto sound = [&](const std::string& file) { return Ffmpeg("-i " + file + " -map 0:a -f framemd5 -"); };
    EXPECT_EQ(sound("joined.webm"), sound("part.webm"));
    EXPECT_EQ(Streams("part.webm", "stream_tags=language"),
              (std::vector<std::string>{"xay", "xby", "xcy", "xdy", "xey", "xfy", "xgy"}));
}

TEST_F(SoundTest, IsAsAskedFor) {
    MakeFilm();
    const std::string apply = "apply in.mkv out.mkv gray -y ";
    const Outcome flac = Nifikral(apply + "--audio-encoder flac");
    EXPECT_EQ(flac.errors, "");
    EXPECT_EQ(Streams("out.mkv", "stream=codec_name"), std::vector<std::string>(streamCount, "flac"));
    // What is not lossy stays as it is to the bit.
    const auto samples = [&](const std::string& file) { return Ffmpeg("-i " + file + " -map 0:a:0 -f s16le -"); };
    EXPECT_TRUE(samples("out.mkv").ends_with(samples("in.mkv")));
    for (const std::string kilobits : {"64", "256"}) {
        ASSERT_EQ(Nifikral(apply + "--audio-encoder ac3 --audio-bitrate " + kilobits + "k").exitCode, 0);
        EXPECT_EQ(Streams("out.mkv", "stream=bit_rate").front(), kilobits + "000");
    }
    ASSERT_EQ(Nifikral(apply + "--no-sound").exitCode, 0);
    EXPECT_TRUE(Streams("out.mkv", "stream=codec_name").empty());
    Ffmpeg("-i in.mkv -map 0:a:0 -c copy tone.wav -map 0:v -frames:v 1 one.png");
    ASSERT_EQ(Nifikral("slideshow one.png -o show.mov --size 64x48 --audio tone.wav --length audio --audio-fade 0 "
                       "--audio-encoder pcm_s24le")
                  .errors,
              "");
    EXPECT_EQ(Streams("show.mov", "stream=codec_name"), std::vector<std::string>{"pcm_s24le"});
    ExpectTone("show.mov", 1, 1, 2);

    const auto refusal = [&](const std::string& words, int exitCode, const std::string& named) {
        const Outcome outcome = Nifikral(words);
        EXPECT_EQ(outcome.exitCode, exitCode);
        EXPECT_NE(outcome.errors.find(named), std::string::npos) << outcome.errors;
    };
    refusal(apply + "--encoder aac", 2, "--audio-encoder");
    refusal(apply + "--audio-encoder libx264", 2, "--audio-encoder libx264");
    refusal("apply in.mkv out.webm gray --audio-encoder aac", 4, "--audio-encoder");
    refusal("apply in.mkv out.mpg gray --audio-bitrate 100k", 4, "bitrate 100 ");
    EXPECT_EQ(Files().count("out.webm") + Files().count("out.mpg"), 0u);
}

TEST_F(SoundTest, FollowsAChangeOfItsChannelsAndFillsGaps) {
    // A broadcast: mono, then a piece that is missing, then stereo.
    Ffmpeg(
        "-f lavfi -i testsrc2=s=64x48:r=25:d=3 -f lavfi -i sine=d=1:r=48000 -f lavfi -i sine=d=1:r=44100 "
        "-map 0:v -c:v mpeg2video -f mpegts v.ts -map 1:a -c:a ac3 -ac 1 -f ac3 a -map 2:a -c:a ac3 -ac 2 -ar 48000 -f "
        "ac3 b");
    std::ofstream(folder / "ab", std::ios::binary) << ReadFile(folder / "a") << ReadFile(folder / "b");
    Ffmpeg(
        "-i v.ts -f ac3 -i ab -map 0:v -map 1:a -c copy -bsf:a "
        "setts=pts=PTS+gt(N\\,31)/TB:dts=PTS+gt(N\\,31)/TB in.ts");
    ASSERT_EQ(Nifikral("apply in.ts out.webm gray").exitCode, 0);
    const std::string bytes = Ffmpeg("-i out.webm -map 0:a -ac 1 -ar 48000 -f s16le -");
    const auto loudest = [&](double begin, double end) {
        int most = 0;
        for (auto i = std::size_t(begin * rate); i < std::size_t(end * rate); ++i)
            most = std::max(most, std::abs(std::int16_t(std::uint8_t(bytes.at(2 * i)) | bytes.at(2 * i + 1) << 8)));
        return most;
    };
    EXPECT_NEAR(double(bytes.size()) / 2 / rate, 3, 0.1);
    EXPECT_GT(loudest(0.2, 0.9), 1000);
    EXPECT_LT(loudest(1.2, 1.8), 100);
    EXPECT_GT(loudest(2.2, 2.8), 1000);
}

}  // namespace
}  // namespace Nifikral
