#include "host/studio/film_reader.h"

#include "tests/host/command.h"

namespace Nifikral {
namespace {

struct CodedFilm {
    const char *file, *coding;
};

class FilmReaderTest : public CommandTest, public ::testing::WithParamInterface<CodedFilm> {
 protected:
    static std::string Luma(const AVFrame& frame) {
        std::string bytes;
        for (int y = 0; y < frame.height; ++y)
            bytes.append(reinterpret_cast<const char*>(frame.data[0]) + std::ptrdiff_t(y) * frame.linesize[0],
                         std::size_t(frame.width));
        return bytes;
    }

    std::vector<std::string> ReadThrough(const std::string& file) const {
        std::vector<std::string> pictures;
        MediaSource source(file, {.keepGoing = true});
        for (auto step = source.Next(); step && step->frame; step = source.Next())
            pictures.push_back(Luma(*step->frame));
        return pictures;
    }
};

TEST_P(FilmReaderTest, GivesTheFramesThatReadingThroughGives) {
    const std::string file = folder / GetParam().file;
    Ffmpeg("-f lavfi -i testsrc2=s=64x48:r=25:d=4 -pix_fmt yuv420p " + std::string(GetParam().coding) + " " + file);
    const std::vector<std::string> pictures = ReadThrough(file);
    ASSERT_EQ(pictures.size(), 100u);
    FilmReader reader(file);
    // Into the pictures before a key frame that are decoded behind it, far on and back, a little on, and to both ends.
    for (const long long number : {77, 18, 99, 58, 59, 75, 3, 96, 38, 57, 0, 20}) {
        const std::string& picture = pictures[std::size_t(number)];
        EXPECT_TRUE(Luma(*reader.At(number)) == picture) << "frame " << number;
        EXPECT_TRUE(Luma(*FilmReader(file, reader.Facts()).At(number)) == picture) << "frame " << number << " at once";
    }
}

#define OPEN_GROUPS "keyint=20:min-keyint=20:scenecut=0:open-gop=1:bframes=4:b-adapt=0"
constexpr const char* h264 = "-c:v libx264 -x264-params b-pyramid=normal:" OPEN_GROUPS;
constexpr const char* h265 = "-c:v libx265 -x265-params log-level=none:" OPEN_GROUPS;
constexpr const char* mpeg2 = "-c:v mpeg2video -g 12 -bf 2";

INSTANTIATE_TEST_SUITE_P(
    Films, FilmReaderTest,
    ::testing::Values(CodedFilm{"h264.mp4", h264}, CodedFilm{"h264.mkv", h264}, CodedFilm{"h264.ts", h264},
                      CodedFilm{"h265.mp4", h265}, CodedFilm{"h265.mkv", h265}, CodedFilm{"h265.ts", h265},
                      CodedFilm{"mpeg2.ts", mpeg2}, CodedFilm{"mpeg2.mpg", mpeg2},
                      CodedFilm{"mpeg4.avi", "-c:v mpeg4 -g 20 -bf 2"}, CodedFilm{"plain.avi", "-c:v mpeg4 -g 20"},
                      CodedFilm{"vp9.webm", "-c:v libvpx-vp9 -deadline realtime -cpu-used 8 -g 20"}),
    [](const auto& film) {
        std::string name = film.param.file;
        name[name.find('.')] = '_';
        return name;
    });

}  // namespace
}  // namespace Nifikral
