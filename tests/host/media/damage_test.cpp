#include <cstring>

#include "host/base/log.h"
#include "host/films/slide_pictures.h"
#include "host/media/ffmpeg_log.h"
#include "host/media/whole_jpeg.h"
#include "tests/host/command.h"

namespace Nifikral {
namespace {

class Damage : public CommandTest {
 protected:
    // Overwrites some bytes of a file, at a share of its length.
    void Spoil(const std::string& name, double where) const {
        std::string bytes = ReadFile(folder / name);
        std::memcpy(bytes.data() + std::size_t(double(bytes.size()) * where), "nothing of a picture at all", 27);
        std::ofstream(folder / name, std::ios::binary) << bytes;
    }
};

TEST_F(Damage, OfOnePictureIsNotItsNeighboursWhenManyAreReadAtOnce) {
    CaptureFfmpegMessages();
    Ffmpeg("-f lavfi -i testsrc2=size=160x120 -q:v 2 -frames:v 1 photo.jpg");
    const std::string photo = ReadFile(folder / "photo.jpg");
    std::vector<Slide> all;
    std::vector<std::string> good;
    for (int i = 0; i < 80; ++i) {
        const std::string path = (folder / (std::to_string(i) + ".jpg")).string();
        // Of those cut, each lacks another part of its end, the last one only the mark itself.
        std::ofstream(path, std::ios::binary)
            << photo.substr(0, i % 2 ? photo.size() * std::size_t(i) / 80 : std::string::npos);
        all.emplace_back().path = path;
        if (i % 2 == 0) good.push_back(path);
    }
    std::ofstream(all[79].path, std::ios::binary) << photo.substr(0, photo.size() - 2);
    SetVerbosity(Verbosity::Quiet);
    for (int run = 0; run < 25; ++run) {
        std::vector<std::string> readable;
        for (const Slide& slide : ReadableSlides(all, {})) readable.push_back(slide.path);
        ASSERT_EQ(readable, good) << "run " << run;
    }
    SetVerbosity(Verbosity::Normal);
}

TEST_F(Damage, IsFoundAtTheSameFrameWhateverTheThreads) {
    const std::string source = "-f lavfi -i testsrc2=size=320x240:rate=25:duration=2 ";
    Ffmpeg(source + "-c:v libx264 long.mp4");
    Ffmpeg(source + "-c:v libx264 -x264-params slices=4 slices.mp4");
    Ffmpeg(source + "-c:v mpeg4 old.avi");
    Ffmpeg(source + "-c:v ffv1 -slices 4 -slicecrc 1 exact.mkv");
    Ffmpeg(source + "-c:v libx264 cut.ts");
    Ffmpeg(source + "-c:v mpeg2video cut.mpg");
    Ffmpeg(source + "-c:v ffv1 cut.mkv");
    Ffmpeg(source + "animated.gif");
    for (const std::string name : {"long.mp4", "slices.mp4", "old.avi", "exact.mkv", "animated.gif"}) Spoil(name, 0.55);
    for (const std::string name : {"cut.mpg", "cut.mkv"})
        std::filesystem::resize_file(folder / name, std::filesystem::file_size(folder / name) * 7 / 10);
    for (const std::string name :
         {"long.mp4", "slices.mp4", "old.avi", "exact.mkv", "animated.gif", "cut.mpg", "cut.mkv"}) {
        std::set<std::string> lines;
        for (int run = 0; run < 4; ++run) {
            const Outcome outcome =
                Nifikral("apply " + name + " out.nut gray -y --threads " + (run % 3 == 0 ? "1" : "4"));
            EXPECT_EQ(outcome.exitCode, 3) << name;
            lines.insert(outcome.errors);
        }
        EXPECT_EQ(lines.size(), 1u) << name << "\n" << *lines.begin() << *lines.rbegin();
        EXPECT_NE(lines.begin()->find("frame"), std::string::npos);
        const Outcome outcome = Nifikral("apply " + name + " out.nut gray -y --keep-going");
        EXPECT_EQ(outcome.exitCode, 0) << name << outcome.errors;
        EXPECT_NE(outcome.errors.find("damaged"), std::string::npos) << name;
        // What lies after the frames asked for does not matter.

        EXPECT_EQ(Nifikral("apply " + name + " out.nut gray -y --threads 4 --frames 0-5").errors, "") << name;
    }
}

TEST(WholeJpeg, EndsAtTheMarkAndNotAtThatOfAPreview) {
    const auto isWhole = [](const std::string& bytes) {
        return IsWholeJpeg({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
    };
    const std::string start = "\xff\xd8", preview("\xff\xe1\x00\x08\xff\xd8p\xff\xd9q", 10),
                      scan("\xff\xda\x00\x03s,\xff\x00,\xff\xd0,", 12), end = "\xff\xd9";
    EXPECT_TRUE(isWhole(start + preview + scan + end));
    EXPECT_TRUE(isWhole(start + preview + scan + "\xff" + end + "and a film behind it"));
    EXPECT_FALSE(isWhole(start + preview + scan));
    EXPECT_FALSE(isWhole(start + preview + scan + "\xff"));
    EXPECT_FALSE(isWhole(start + preview.substr(0, 9)));
    EXPECT_FALSE(isWhole(start + preview.substr(0, 3)));
    EXPECT_FALSE(isWhole(""));
}

}  // namespace
}  // namespace Nifikral
