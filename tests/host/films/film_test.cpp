#include <algorithm>

#include "host/base/errors.h"
#include "host/base/natural_order.h"
#include "host/films/slideshow.h"
#include "tests/host/command.h"

namespace Nifikral {
namespace {

class FilmTest : public CommandTest {
 protected:
    FilmTest() {
        std::filesystem::create_directory(folder / "pics");
        for (const char* const picture :
             {"red:size=64x36 pics/img10", "lime:size=64x36 pics/img2", "blue:size=36x64 pics/a;b"}) {
            const std::vector<std::string> words = Words(picture);
            Ffmpeg("-f lavfi -i color=" + words[0] + " -frames:v 1 " + words[1] + ".png");
        }
    }
};

TEST(NaturalOrder, CountsAsPeopleDo) {
    std::vector<std::string> names = {"img10.png", "Img2.png", "img02b.png", "b.png", "img2.png", "1.png", "img.png"};
    std::sort(names.begin(), names.end(), ComesBefore);
    EXPECT_EQ(names, (std::vector<std::string>{"1.png", "b.png", "img.png", "Img2.png", "img2.png", "img02b.png",
                                               "img10.png"}));
}

TEST(SlideTiming, FillsALengthAndShortensTransitionsThatExceedPictures) {
    const auto shared = [](const SlideTiming& t) { return std::vector<long long>{t.alone, t.transition, t.total}; };
    EXPECT_EQ(shared(ShareOut({-1, -1, -1}, 100, 25, 0)), (std::vector<long long>{100, 25, 350}));
    EXPECT_EQ(shared(ShareOut({-1, -1, -1}, 100, 25, 250)), (std::vector<long long>{66, 25, 250}));
    EXPECT_EQ(shared(ShareOut({-1, -1, -1}, 100, 25, 60)), (std::vector<long long>{13, 10, 60}));
    EXPECT_EQ(shared(ShareOut({-1}, 0, 25, 0)), (std::vector<long long>{0, 25, 1}));
    EXPECT_EQ(shared(ShareOut({-1, 50, -1}, 100, 25, 0)), (std::vector<long long>{100, 25, 300}));
    EXPECT_EQ(shared(ShareOut({-1, 50, -1}, 100, 25, 200)), (std::vector<long long>{50, 25, 200}));
    EXPECT_THROW(ShareOut({-1, 50, -1}, 100, 25, 101), HostError);
}

TEST_F(FilmTest, ASlideshowTakesFoldersInNaturalOrderAndPartsAreTheSameFrames) {
    std::ofstream(folder / "pics/notes.txt") << "none of its business";
    std::ofstream(folder / "pics/img3.jpg") << "broken";
    const std::string show = "slideshow pics --size 32x18 --rate 5 --seconds 1 --encoder ffv1 --motion none ";
    const Outcome whole = Nifikral(show + "-o whole.mkv");
    ASSERT_EQ(whole.exitCode, 0) << whole.errors;
    EXPECT_EQ(std::count(whole.errors.begin(), whole.errors.end(), '\n'), 1) << whole.errors;
    EXPECT_NE(whole.errors.find("img3.jpg"), std::string::npos);
    const std::string pictures = RawPictures("whole.mkv", "rgb24");
    constexpr std::size_t size = 32 * 18 * 3;
    ASSERT_EQ(pictures.size(), (3 * 5 + 2 * 5) * size);
    // In the middle of each picture's time: blue of "a;b", then green, then red.
    for (const auto& [frame, channel] : {std::pair(2, 2), std::pair(12, 1), std::pair(22, 0)})
        for (int c = 0; c < 3; ++c) {
            const auto value = std::uint8_t(pictures[std::size_t(frame) * size + (9 * 32 + 16) * 3 + std::size_t(c)]);
            EXPECT_TRUE(c == channel ? value > 200 : value < 50) << frame << " " << c << " " << int(value);
        }
    ASSERT_EQ(Nifikral(show + "-q -o part.mkv --frames 7-13").exitCode, 0);
    EXPECT_EQ(RawPictures("part.mkv", "rgb24"), pictures.substr(7 * size, 7 * size));

    const Outcome strict = Nifikral(show + "-o strict.mkv --strict");
    EXPECT_EQ(strict.exitCode, 3);
    EXPECT_NE(strict.errors.find("img3.jpg"), std::string::npos) << strict.errors;
    std::filesystem::create_directory(folder / "empty");
    EXPECT_EQ(Nifikral("slideshow empty -o out.mp4").errors,
              "nifikral: error: empty holds no pictures; name a folder with .jpg, .png or other picture files\n");
    EXPECT_EQ(Nifikral(show + "-o out.mkv --fit stretch").exitCode, 2);
    EXPECT_FALSE(Files().contains("strict.mkv") || Files().contains("out.mp4") || Files().contains("out.mkv"));
}

TEST_F(FilmTest, AProfileMakesTheStreamOfADvdAndTheSoundItsLength) {
    Ffmpeg("-f lavfi -i sine=frequency=440:duration=1.5:sample_rate=44100 tone.wav");
    const Outcome outcome =
        Nifikral("slideshow pics -o film.mpg --profile pal-16:9 --audio tone.wav --length audio --audio-fade 1");
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_EQ(outcome.errors, "");
    const std::string stream =
        Probe("film.mpg", "stream=codec_name,width,height,sample_aspect_ratio,display_aspect_ratio,r_frame_rate");
    EXPECT_TRUE(stream.starts_with("mpeg2video|720|576|64:45|16:9|25/1")) << stream;
    EXPECT_EQ(RawPictures("film.mpg", "gray").size(), 38u * 720 * 576);
    const std::string sound = Ffmpeg("-i film.mpg -f s16le -ac 1 -ar 48000 -");
    EXPECT_NEAR(double(sound.size()) / 2 / 48000, 1.5, 0.05);
    const auto loudest = [&](std::size_t begin, std::size_t end) {
        int most = 0;
        for (std::size_t i = begin; i < end; ++i)
            most = std::max(most, std::abs(int(std::int16_t(std::uint8_t(sound[2 * i]) | sound[2 * i + 1] << 8))));
        return most;
    };
    EXPECT_LT(loudest(66000, 70000), loudest(10000, 20000) / 3) << "it does not fade out";
    const Outcome longer = Nifikral("slideshow pics -o long.mkv --size 64x36 --audio tone.wav --length 4");
    EXPECT_NE(longer.errors.find("tone.wav ends after 2 s and the film after 4 s"), std::string::npos) << longer.errors;
    EXPECT_EQ(Nifikral("slideshow pics -o out.mp4 --profile pall").exitCode, 2);
    EXPECT_EQ(Nifikral("slideshow pics -o out.mp4 --length audio").exitCode, 2);
    EXPECT_EQ(Nifikral("slideshow pics -o out.mp4 --audio pics/notes.txt").exitCode, 3);
}

TEST_F(FilmTest, ATitleCountsFromTheFirstFrameAndKeepsWhatIsBeforeIt) {
    Ffmpeg("-f lavfi -i color=gray:size=64x36:rate=10:duration=2 -c:v ffv1 in.mkv");
    const std::string title = "title Hi in.mkv ";
    ASSERT_EQ(Nifikral(title + "whole.mkv --encoder ffv1 --begin 0.5 --size 20 --threads 2").exitCode, 0);
    ASSERT_EQ(Nifikral(title + "part.mkv --encoder ffv1 --begin 0.5 --size 20 --frames 8-11").exitCode, 0);
    const std::string plain = RawPictures("in.mkv", "gray"), whole = RawPictures("whole.mkv", "gray");
    constexpr std::size_t size = 64 * 36;
    ASSERT_EQ(whole.size(), 20 * size);
    EXPECT_EQ(whole.substr(0, 5 * size), plain.substr(0, 5 * size));
    EXPECT_NE(whole.substr(12 * size, size), plain.substr(12 * size, size)) << "there is no title";
    EXPECT_EQ(RawPictures("part.mkv", "gray"), whole.substr(8 * size, 4 * size));
    ASSERT_EQ(Nifikral("title Hi pics/img2.png film.mkv --seconds 1").exitCode, 0);
    EXPECT_EQ(RawPictures("film.mkv", "gray").size(), 25u * size);
    const auto rowsOf = [&](const std::string& words) {
        const Outcome made = Wait(Start({NIFIKRAL_PROGRAM, "title", words, "pics/img10.png", "t.png", "-y", "--size",
                                         "9", "--style", "normal", "--in-seconds", "0"}));
        EXPECT_EQ(made.errors, "");
        const std::string picture = RawPictures("t.png", "gray");
        int rows = 0;
        for (std::size_t y = 0; y < 36; ++y)
            rows += std::ranges::any_of(picture.substr(y * 64, 64), [](char c) { return std::uint8_t(c) > 150; });
        return rows;
    };
    EXPECT_GT(rowsOf("illl llll illl llll illl llll illl llll"), rowsOf("illl")) << "a long title is not broken";
    const Outcome latin = Wait(Start({NIFIKRAL_PROGRAM, "title", "Caf\xe9", "in.mkv", "latin.mkv"}));
    EXPECT_EQ(latin.exitCode, 2);
    EXPECT_EQ(latin.errors,
              "nifikral: error: the title is no UTF-8 (byte 4 is 0xe9); type it in a terminal that is set to UTF-8, or "
              "convert it with iconv -t UTF-8\n");
    EXPECT_EQ(Nifikral(title + "out.mkv --place center").exitCode, 2);
    EXPECT_EQ(Nifikral(title + "red.mkv --color #ff0000").exitCode, 0);
    EXPECT_EQ(Nifikral(title + "named.mkv --color Red").exitCode, 0);
    EXPECT_EQ(RawPictures("named.mkv", "yuv420p"), RawPictures("red.mkv", "yuv420p"));
    const Outcome rad = Nifikral(title + "out.mkv --color rad");
    EXPECT_EQ(rad.exitCode, 2);
    EXPECT_NE(rad.errors.find("did you mean red?"), std::string::npos) << rad.errors;
}

}  // namespace
}  // namespace Nifikral
