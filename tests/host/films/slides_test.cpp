#include <cmath>
#include <exiv2/exiv2.hpp>
#include <numbers>

#include "host/base/errors.h"
#include "host/films/captions.h"
#include "tests/host/command.h"

namespace Nifikral {
namespace {

TEST(Captions, SayWhatThePictureSaysAndLeaveNoGapsForTheRest) {
    Slide slide;
    slide.path = "holiday/the lake.jpg";
    slide.facts.date = "2026-07-14 15:02:11";
    EXPECT_EQ(CaptionOf("{number}: {name}, {date} {time}", slide, 3), "3: the lake, 2026-07-14 15:02");
    EXPECT_EQ(CaptionOf(R"({description}\n{place} {name} {place} here {place}\n\n{place})", slide, 1), "the lake here");
    EXPECT_EQ(CaptionOf("{place}", slide, 1), "");
    slide.facts.date = "2026-07-14";
    slide.facts.description = "caf\xe9 {name}";
    EXPECT_EQ(CaptionOf(R"({date} {time}\n{description} {)", slide, 1), "2026-07-14\ncaf\uFFFD {name} {");
    slide.path = R"(C:\new.jpg)";
    EXPECT_EQ(CaptionOf("{name}", slide, 1), R"(C:\new)") << "a name breaks no lines";
}

class Slides : public CommandTest {
 protected:
    void MakePicture(const std::string& colour, const std::string& date, const std::string& size = "64x36") const {
        const std::string name = colour + ".jpg";
        Ffmpeg("-f lavfi -i color=" + colour + ":size=" + size + " -frames:v 1 " + name);
        if (date.empty()) return;
        const auto image = Exiv2::ImageFactory::open((folder / name).string());
        Exiv2::ExifData exif;
        exif["Exif.Photo.DateTimeOriginal"] = date;
        image->setExifData(exif);
        image->writeMetadata();
    }

    // The first letter of the colour of each slide that stands for a second, without transitions.
    std::string Colours(const std::string& options) const {
        const Outcome outcome = Nifikral("slideshow " + options +
                                         " -q -y -o colours.mkv --size 32x18 --rate 4 --seconds 1 "
                                         "--transition-seconds 0 --motion none --encoder ffv1");
        EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
        const std::string pictures = RawPictures("colours.mkv", "rgb24");
        std::string colours;
        for (std::size_t i = 0; i < pictures.size(); i += 4 * 32 * 18 * 3) {
            const std::uint8_t red = pictures[i + 48], green = pictures[i + 49];
            colours += red > 128 ? 'r' : green > 128 ? 'l' : 'b';
        }
        return colours;
    }

    // The columns and rows of what is brighter than the picture, which is dark.
    struct Extent {
        int left = 10000, top = 10000, right = -1, bottom = -1;
    };
    Extent Bright(const std::string& pixels, int width) const {
        Extent extent;
        for (std::size_t i = 0; i < pixels.size(); ++i)
            if (const int x = int(i) % width, y = int(i) / width; std::uint8_t(pixels[i]) > 150)
                extent = {std::min(extent.left, x), std::min(extent.top, y), std::max(extent.right, x),
                          std::max(extent.bottom, y)};
        return extent;
    }
};

TEST_F(Slides, ComeInTheOrderThatIsAskedFor) {
    MakePicture("red", "2026:07:14 09:00:00");
    MakePicture("lime", "2026:07:13 23:59:59");
    MakePicture("blue", "");
    EXPECT_EQ(Colours("red.jpg lime.jpg blue.jpg"), "rlb");
    EXPECT_EQ(Colours("red.jpg lime.jpg blue.jpg --order name"), "blr");
    EXPECT_EQ(Colours("blue.jpg red.jpg lime.jpg --order date"), "lrb");
    EXPECT_NE(Nifikral("slideshow blue.jpg red.jpg --order date -y -o colours.mkv --size 32x18 --rate 4")
                  .errors.find("1 of 2 pictures hold no date; they come last"),
              std::string::npos);
    std::set<std::string> orders;
    for (const std::string seed : {"1", "2", "3", "4", "5", "6"})
        orders.insert(Colours("red.jpg lime.jpg blue.jpg --order random --seed " + seed));
    EXPECT_GT(orders.size(), 2u);
    EXPECT_EQ(Colours("red.jpg lime.jpg blue.jpg --order random --seed 5"),
              Colours("red.jpg lime.jpg blue.jpg --order random --seed 5"));

    std::filesystem::create_directory(folder / "lists");
    std::ofstream(folder / "lists/show.txt") << "\xEF\xBB\xBF# the way there\r\n../blue.jpg\r\n\r\n"
                                                "../red.jpg | 2 | \r\n../lime.jpg||a | b\r\n../red.jpg";
    EXPECT_EQ(Colours("@lists/show.txt"), "brrlr");
    EXPECT_EQ(Colours("@lists/show.txt --order date"), "lrrrb");
}

TEST_F(Slides, HaveCaptionsInsideWhatEveryScreenShows) {
    MakePicture("black", "2026:07:14 09:00:00", "320x180");
    std::ofstream(folder / "show.txt")
        << "black.jpg\nblack.jpg | | W\nblack.jpg | | {name} with a very long caption that has to be broken into "
           "lines, which stay away from the edges of the screen, however many of them there are in the end\n";
    for (const auto& [size, width, height] : {std::tuple("320x180", 320, 180), std::tuple("180x320", 180, 320)}) {
        const Outcome outcome = Nifikral(std::string("slideshow @show.txt -o film.mkv -y --encoder ffv1 --rate 5 "
                                                     "--seconds 1 --transition-seconds 1 --captions MMM --size ") +
                                         size);
        ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
        const std::string pictures = RawPictures("film.mkv", "gray");
        const auto frame = std::size_t(width) * std::size_t(height);
        ASSERT_EQ(pictures.size(), 25 * frame);
        const auto bright = [&, w = width](std::size_t n) { return Bright(pictures.substr(n * frame, frame), w); };
        const Extent first = bright(2), own = bright(12), broken = bright(22);
        EXPECT_GT(first.right - first.left, 2 * (own.right - own.left)) << "its own caption is not shown";
        EXPECT_NEAR(first.left + first.right, width, 4) << "not in the middle";
        EXPECT_GT(first.bottom - first.top, std::min(height / 20, width / 16) / 2) << "not legible";
        EXPECT_LT(first.bottom - first.top, height / 15);
        EXPECT_GT(broken.bottom - broken.top, 3 * (own.bottom - own.top)) << "not broken into lines";
        for (const Extent& extent : {first, own, broken}) {
            EXPECT_GE(extent.left, width / 10);
            EXPECT_GE(extent.top, height / 2);
            EXPECT_LT(extent.right, width - width / 10);
            EXPECT_LT(extent.bottom, height - height / 10);
            EXPECT_GT(extent.bottom, height - height / 5);
        }
    }
}

TEST_F(Slides, FollowEachOtherToSeveralSongs) {
    MakePicture("red", "");
    Ffmpeg("-f lavfi -i sine=frequency=440:duration=2:sample_rate=44100 -af volume=4 low.wav");
    Ffmpeg("-f lavfi -i sine=frequency=1760:duration=2:sample_rate=48000 -af volume=4 high.mp3");
    const auto soundOf = [&](const std::string& options) {
        const Outcome outcome = Nifikral(
            "slideshow red.jpg -y -o film.mkv --size 32x18 --audio low.wav --audio "
            "high.mp3 --audio-fade 0.5 " +
            options);
        EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
        return Ffmpeg("-i film.mkv -f s16le -ac 1 -ar 48000 -");
    };
    // How much of a tone there is in a tenth of a second.
    const auto strength = [](const std::string& sound, double seconds, double tone) {
        double sine = 0, cosine = 0;
        const auto begin = std::size_t(seconds * 48000);
        for (std::size_t i = begin; i < begin + 4800; ++i) {
            const double value = std::int16_t(std::uint8_t(sound[2 * i]) | sound[2 * i + 1] << 8) / 32768.0;
            sine += value * std::sin(2 * std::numbers::pi * tone * double(i) / 48000);
            cosine += value * std::cos(2 * std::numbers::pi * tone * double(i) / 48000);
        }
        return std::hypot(sine, cosine) / 2400;
    };
    const std::string whole = soundOf("--length audio");
    EXPECT_NEAR(double(whole.size()) / 2 / 48000, 3.5, 0.1);
    const double full = strength(whole, 0.5, 440);
    EXPECT_GT(full, 0.1);
    EXPECT_NEAR(strength(whole, 2.2, 1760), full, full / 10);
    EXPECT_LT(strength(whole, 0.5, 1760) + strength(whole, 2.2, 440), full / 50) << "both at once";
    EXPECT_NEAR(strength(whole, 1.7, 440), full / 2, full / 6) << "one does not fade into the other";
    EXPECT_NEAR(strength(whole, 1.7, 1760), full / 2, full / 6);
    EXPECT_LT(strength(whole, 3.35, 1760), full / 2) << "it does not fade out";
    const std::string cut = soundOf("--length 2.5");
    EXPECT_NEAR(double(cut.size()) / 2 / 48000, 2.5, 0.1);
    EXPECT_NEAR(strength(cut, 2.2, 1760), full / 2, full / 6) << "it does not fade out with the film";
}

TEST_F(Slides, PlayFilmsForTheirLengthWithTheirSound) {
    MakePicture("red", "");
    Ffmpeg("-f lavfi -i color=lime:size=64x36:rate=10:duration=2 -f lavfi -i sine=duration=2 -c:a flac film.mkv");
    EXPECT_EQ(Colours("red.jpg film.mkv red.jpg"), "rllr");
    const std::string sound = Ffmpeg("-i colours.mkv -f s16le -ac 1 -ar 48000 -");
    const auto isSilent = [&](double from, double to) {
        return sound.find_first_not_of('\0', std::size_t(from * 48000) * 2) >= std::size_t(to * 48000) * 2;
    };
    EXPECT_TRUE(isSilent(0, 0.99) && !isSilent(1.1, 1.2) && !isSilent(2.8, 2.9) && isSilent(3.1, 3.9));

    std::string spoilt = ReadFile(folder / "film.mkv");
    for (std::size_t i = spoilt.find("\xFF\xF8"); i != std::string::npos; i = spoilt.find("\xFF\xF8", i)) spoilt[i] = 0;
    std::ofstream(folder / "film.mkv", std::ios::binary) << spoilt;
    const Outcome outcome = Nifikral("slideshow red.jpg film.mkv -o out.mkv --size 32x18 --rate 4");
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_EQ(outcome.errors, "nifikral: warning: film.mkv plays without its sound, which cannot be decoded\n");
}

TEST_F(Slides, RefuseWhatTheyCannotDoBeforeAnythingIsMade) {
    MakePicture("red", "");
    Ffmpeg("-f lavfi -i sine=duration=1 good.wav");
    // Sound in every packet, and in none of them what a decoder takes.
    Ffmpeg("-f lavfi -i sine=duration=1 -c:a flac spoilt.mka");
    std::string spoilt = ReadFile(folder / "spoilt.mka");
    for (std::size_t i = spoilt.find("\xFF\xF8"); i != std::string::npos; i = spoilt.find("\xFF\xF8", i)) spoilt[i] = 0;
    std::ofstream(folder / "spoilt.mka", std::ios::binary) << spoilt;
    std::ofstream(folder / "notes.txt") << "none";
    std::ofstream(folder / "list.txt") << "red.jpg\nred.jpg | 2 | {dat}\n";
    std::ofstream(folder / "times.txt") << "red.jpg | soon | Here\n";
    std::ofstream(folder / "gone.txt") << "\nlost.jpg\n";
    std::ofstream(folder / "empty.txt") << "# nothing\n";
    std::ofstream(folder / "latin.txt") << "red.jpg||Caf\xe9\n";
    const std::string words = "{name}, {number}, {date}, {time}, {description}, {place}";
    const std::set<std::string> before = Files();
    for (const auto& [options, exitCode, line] : {
             std::tuple("red.jpg --order day", 2, std::string("is not one of given, name, date, random")),
             std::tuple("red.jpg --captions {dat}", 2,
                        "captions know no {dat}; did you mean date?; there are " + words),
             std::tuple("@list.txt", 2, "list.txt:2: captions know no {dat}; did you mean date?; there are " + words),
             std::tuple("@times.txt", 2,
                        std::string("times.txt:1: \"soon\" is no time; give seconds from 0 to 86400, or nothing")),
             std::tuple("@gone.txt", 3, std::string("gone.txt:2: lost.jpg: no such file or folder; check the name")),
             std::tuple("@empty.txt", 3, std::string("empty.txt names no pictures; write one on each line")),
             std::tuple("@latin.txt", 2, std::string("latin.txt:1: the caption is no UTF-8; save the list as UTF-8")),
             std::tuple("@none.txt", 3, std::string("none.txt: No such file or directory; name a list")),
             std::tuple("@red.jpg", 2, std::string("red.jpg is no list of pictures")),
             std::tuple("red.jpg --audio good.wav --audio notes.txt", 3,
                        std::string("notes.txt is no sound that can be read")),
             std::tuple("red.jpg --audio good.wav --audio spoilt.mka --length 0.4", 3,
                        std::string("spoilt.mka holds no sound that can be decoded")),
         }) {
        const Outcome outcome = Nifikral(std::string("slideshow -o out.mkv --size 32x18 --rate 2 ") + options);
        EXPECT_EQ(outcome.exitCode, exitCode) << options;
        EXPECT_NE(outcome.errors.find(line), std::string::npos) << options << "\n" << outcome.errors;
        EXPECT_EQ(std::ranges::count(outcome.errors, '\n'), 1) << outcome.errors;
        EXPECT_EQ(Files(), before) << options;
    }
}

}  // namespace
}  // namespace Nifikral
