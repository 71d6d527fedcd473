#include "host/disc/dvd_title.h"

#include <algorithm>
#include <cmath>

#include "host/base/language_code.h"
#include "host/films/media_manager.h"
#include "tests/host/command.h"

namespace Nifikral {
namespace {

class DvdTitleTest : public CommandTest {
 protected:
    DvdTitleTest() { project.profile = FindProfile("pal-16:9"); }

    TitleReport Make(const DiscFilm& film, int videoRate = 6000, bool copy = false) {
        project.films = {film};
        if (!film.path.empty()) project.films[0].path = Path(film.path);
        return MakeTitle({&project, 0, videoRate, Path("title.mpg"), 2, copy}, module);
    }
    TitleReport Make(const std::string& path, int videoRate = 6000, bool copy = false) {
        DiscFilm film;
        film.path = path;
        return Make(film, videoRate, copy);
    }

    std::string Path(const std::string& name) const { return (folder / name).string(); }

    // The streams of pictures, sound and subtitles.
    std::string Streams() const {
        std::string streams = Probe("title.mpg", "stream=codec_name,width,height,display_aspect_ratio");
        for (const std::string kind : {"a", "s"})
            streams += Wait(Start(Words("ffprobe -v error -select_streams " + kind +
                                        " -of compact=nk=1:p=0 -show_entries stream=codec_name,channels title.mpg")))
                           .output;
        streams.erase(std::remove_if(streams.begin(), streams.end(), [](char c) { return c == '\n'; }), streams.end());
        return streams;
    }

    std::vector<double> KeyTimes() const {
        std::istringstream lines(Probe("title.mpg", "packet=pts_time,flags"));
        std::vector<double> times;
        double first = -1;
        for (std::string line; std::getline(lines, line);) {
            const double time = std::strtod(line.c_str(), nullptr);
            if (first < 0) first = time;
            if (line.find("|K") != std::string::npos) times.push_back(time - first);
        }
        return times;
    }

    // What dvdauthor prints about it but its progress, when it makes a disc of it alone.
    std::string Complaints() const {
        std::ofstream(folder / "disc.xml") << "<dvdauthor dest='disc'><vmgm/><titleset><titles><video format='pal'/>"
                                              "<pgc><vob file='title.mpg' chapters='0,1'/></pgc></titles></titleset>"
                                              "</dvdauthor>";
        std::filesystem::remove_all(folder / "disc");
        const Outcome outcome = Wait(Start(Words("env VIDEO_FORMAT=PAL dvdauthor -x disc.xml")));
        std::istringstream lines(outcome.errors);
        std::string complaints;
        for (std::string line; std::getline(lines, line);)
            if (line.find("WARN") != std::string::npos || line.find("ERR") != std::string::npos) complaints += line;
        if (outcome.exitCode != 0) complaints += outcome.errors;
        return complaints;
    }

    MediaManager manager;
    EffectModule module{NIFIKRAL_MODULE_FILE, &manager};
    DiscProject project;
};

TEST_F(DvdTitleTest, FilmsOfTelephonesStandUprightBetweenBarsAtAConstantRate) {
    // Pictures of 0.02 and 0.08 seconds in turn, stored lying.
    Ffmpeg("-f lavfi -i color=red:s=320x180:r=50:d=2 -vf select=lt(mod(n\\,5)\\,2) -vsync vfr -c:v libx264 lying.mp4");
    Ffmpeg("-i lying.mp4 -c copy -metadata:s:v:0 rotate=90 phone.mp4");
    const TitleReport report = Make("phone.mp4");
    EXPECT_EQ(Streams(), "mpeg2video|720|576|16:9|ac3|2");
    const std::string pictures = RawPictures("title.mpg", "rgb24");
    ASSERT_EQ(pictures.size() % (720 * 576 * 3), 0u);
    EXPECT_NEAR(double(pictures.size() / (720 * 576 * 3)), 49, 1);
    EXPECT_NEAR(report.seconds, double(pictures.size() / (720 * 576 * 3)) / 25, 1e-6);
    // 9:16 in 16:9: red in the middle 228 of 720 columns, black on both sides.
    const auto red = [&](std::size_t column) { return int(std::uint8_t(pictures[(288 * 720 + column) * 3])); };
    EXPECT_LT(red(238), 30);
    EXPECT_GT(red(255), 200);
    EXPECT_GT(red(465), 200);
    EXPECT_LT(red(482), 30);
    EXPECT_EQ(Complaints(), "");
}

TEST_F(DvdTitleTest, KeepsSoundTracksAndLanguagesAndBeginsAnewAtChapters) {
    Ffmpeg(
        "-f lavfi -i testsrc2=s=321x241:r=30:d=3 -f lavfi -i sine=d=3 -f lavfi -i sine=d=3:r=44100 -map 0 -map 1 -map "
        "2 "
        "-c:v ffv1 -c:a:0 ac3 -ar:a:0 48000 -c:a:1 flac -metadata:s:a:0 language=ger -metadata:s:a:1 language=eng "
        "two.mkv");
    DiscFilm film;
    film.path = "two.mkv";
    film.chapters = {{0, ""}, {1.01, ""}, {2.21, ""}, {7, ""}};
    const TitleReport report = Make(film);
    EXPECT_EQ(report.audioLanguages, (std::vector<std::string>{"de", "en"}));
    EXPECT_EQ(report.chapters, (std::vector<double>{0, 1, 2.2}));
    EXPECT_EQ(Streams(), "mpeg2video|720|576|16:9|ac3|1ac3|1");
    const std::vector<double> keys = KeyTimes();
    for (const double chapter : report.chapters)
        EXPECT_TRUE(std::any_of(keys.begin(), keys.end(), [&](double key) { return std::abs(key - chapter) < 0.01; }))
            << chapter;
    // No picture needs one before its group.
    const std::string bytes = ReadFile(folder / "title.mpg"), groupHead("\0\0\1\xB8", 4);
    int groups = 0;
    for (std::size_t at = bytes.find(groupHead); at != std::string::npos; at = bytes.find(groupHead, at + 4), ++groups)
        EXPECT_TRUE(bytes[at + 7] & 0x40) << at;
    EXPECT_GE(groups, 6);
    EXPECT_EQ(Complaints(), "");
    EXPECT_EQ(ReadTitleReport(Path("title.mpg")), report);
    std::ofstream(folder / "title.mpg.json") << "{";
    EXPECT_THROW(ReadTitleReport(Path("title.mpg")), std::runtime_error);
}

TEST_F(DvdTitleTest, SoundStaysSurroundWithinWhatDiscsHave) {
    Ffmpeg(
        "-f lavfi -i testsrc2=s=64x64:r=25:d=1 -f lavfi -i sine=d=1:r=48000 -map 0 -map 1 -map 1 -map 1 -c:v ffv1 "
        "-c:a:0 ac3 -ac:a:0 6 -b:a:0 384k -c:a:1 ac3 -ac:a:1 6 -b:a:1 640k -c:a:2 flac -ac:a:2 8 three.mkv");
    Make("three.mkv");
    EXPECT_EQ(Wait(Start(Words("ffprobe -v error -select_streams a -of compact=nk=1:p=0 -show_entries "
                               "stream=channels,bit_rate title.mpg")))
                  .output,
              "6|384000\n6|448000\n6|448000\n");
    EXPECT_EQ(Complaints(), "");
}

TEST_F(DvdTitleTest, SilentFilmsGetASilentTrackOfTheirLength) {
    Ffmpeg("-f lavfi -i testsrc2=s=128x96:r=25:d=3 -c:v ffv1 mute.mkv");
    Make("mute.mkv");
    EXPECT_EQ(Streams(), "mpeg2video|720|576|16:9|ac3|2");
    const std::string samples = Ffmpeg("-i title.mpg -map 0:a -f s16le -");
    EXPECT_NEAR(double(samples.size()) / 4 / 48000, 3, 0.1);
    EXPECT_EQ(samples.find_first_not_of('\0'), std::string::npos);
    EXPECT_EQ(Complaints(), "");
}

TEST_F(DvdTitleTest, TwoPassesMeetALowRate) {
    // Hard at first, then a single colour: what one pass would spend in the wrong place.
    Ffmpeg(
        "-f lavfi -i testsrc2=s=720x576:r=25:d=4 -f lavfi -i mandelbrot=s=720x576:r=25 -filter_complex "
        "[1]trim=duration=4[b];[0][b]concat -c:v ffv1 hard.mkv");
    const TitleReport report = Make("hard.mkv", 1500);
    double bits = 0;
    std::istringstream sizes(Probe("title.mpg", "packet=size"));
    for (double size = 0; sizes >> size;) bits += 8 * size;
    EXPECT_NEAR(bits / report.seconds, 1.5e6, 0.08e6);
    EXPECT_EQ(Files(), (std::set<std::string>{"hard.mkv", "title.mpg", "title.mpg.json"}));
    // What even the coarsest steps exceed gets what it takes.
    Ffmpeg("-f lavfi -i nullsrc=s=720x576:r=25:d=1,geq=random(1)*255:128:128 -c:v mpeg2video -q:v 1 noise.mkv");
    EXPECT_GT(Make("noise.mkv", 1000).seconds, 0.9);
}

TEST_F(DvdTitleTest, PicturesThatAreCodedForDvdsStayAsTheyAre) {
    const std::string dvd = " -target pal-dvd -aspect 16:9 -bf 2 -t 4 ";
    // Sound begins before the pictures.
    Ffmpeg("-itsoffset 0.2 -f lavfi -i testsrc2=s=720x576:r=25 -f lavfi -i sine -shortest" + dvd + "ready.mpg");
    DiscFilm film;
    film.path = "ready.mpg";
    film.chapters = {{0, ""}, {2.5, ""}};
    std::ofstream(folder / "ready.de.srt") << "1\n00:00:01,000 --> 00:00:02,000\nH\n";
    film.subtitles = {Path("ready.de.srt")};
    const TitleReport report = Make(film, 6000, true);
    EXPECT_EQ(report.subtitleLanguages, std::vector<std::string>{"de"});
    EXPECT_EQ(Streams(), "mpeg2video|720|576|16:9|ac3|1dvd_subtitle");
    EXPECT_TRUE(report.copied);
    EXPECT_EQ(RawPictures("title.mpg", "yuv420p"), RawPictures("ready.mpg", "yuv420p"));
    EXPECT_NEAR(report.seconds, 4, 1e-6);
    // Groups of 15 begin at 0, 0.6 and so on; the third begins nearest.
    ASSERT_EQ(report.chapters.size(), 2u);
    EXPECT_NEAR(report.chapters[1], 2.4, 1e-6);
    const std::vector<double> keys = KeyTimes();
    ASSERT_GT(keys.size(), 4u);
    EXPECT_NEAR(keys[4], 2.4, 1e-3);
    EXPECT_EQ(Complaints(), "");
    // Long groups begin to hurt only later than what shows at first sight.
    Ffmpeg("-f lavfi -i testsrc2=s=720x576:r=25 -f lavfi -i sine -shortest" + dvd +
           "-t 33 -b:v 3000k -force_key_frames expr:lt(t,31)*gte(t,n_forced*0.6) -g 600 -sc_threshold 1000000000 "
           "late.mpg");
    EXPECT_FALSE(Make("late.mpg", 6000, true).copied);
    // Of another shape than the disc.
    project.profile = FindProfile("pal-4:3");
    EXPECT_FALSE(Make("ready.mpg", 6000, true).copied);
}

TEST_F(DvdTitleTest, KeysDifferWhereTheFilesWould) {
    std::ofstream(folder / "film.mkv") << "1";
    DiscFilm film;
    film.path = Path("film.mkv");
    film.chapters = {{0, "a"}, {2, "b"}};
    project.films = {film};
    const TitleJob job{&project, 0, 6000, Path("title.mpg"), 0, false};
    std::set<std::string> keys = {KeyOfTitle(job)};
    // Titles stand in menus, and cores only make it sooner.
    project.films[0].title = project.films[0].chapters[0].title = "other";
    TitleJob same = job;
    same.threads = 7;
    EXPECT_TRUE(keys.contains(KeyOfTitle(same)));
    TitleJob other = job;
    other.videoRate = 5000;
    EXPECT_TRUE(keys.insert(KeyOfTitle(other)).second);
    project.films[0].chapters[1].begin = 3;
    EXPECT_TRUE(keys.insert(KeyOfTitle(job)).second);
    project.profile = FindProfile("ntsc-16:9");
    EXPECT_TRUE(keys.insert(KeyOfTitle(job)).second);
    std::ofstream(folder / "film.mkv") << "22";
    EXPECT_TRUE(keys.insert(KeyOfTitle(job)).second);
}

TEST_F(DvdTitleTest, MakesSlideshowsWithMusic) {
    Ffmpeg("-f lavfi -i testsrc2=s=200x150:d=1:r=3 photo%d.png -f lavfi -i sine=d=30 music.mp3");
    DiscFilm film;
    film.pictures = {Path("photo1.png"), Path("photo2.png"), Path("photo3.png")};
    film.music = Path("music.mp3");
    film.pictureSeconds = 2;
    const TitleReport report = Make(film);
    EXPECT_NEAR(report.seconds, 5, 0.05);  // three alone for a second, and two transitions
    EXPECT_EQ(Streams(), "mpeg2video|720|576|16:9|ac3|2");
    EXPECT_EQ(Complaints(), "");
}

TEST_F(DvdTitleTest, SubtitlesOfTextBecomePictures) {
    std::ofstream(folder / "a.srt")
        << "1\n00:00:01,000 --> 00:00:02,000\nA long line that has to be broken to fit into "
           "the picture\n\n2\n00:00:02,500 --> 00:00:03,000\n<i>x</i>\n";
    Ffmpeg(
        "-f lavfi -i color=blue:s=640x360:r=25:d=4 -i a.srt -map 0 -map 1 -c:v ffv1 -c:s srt -metadata:s:s:0 "
        "language=fra film.mkv");
    const TitleReport report = Make("film.mkv");
    EXPECT_EQ(report.subtitleLanguages, std::vector<std::string>{"fr"});
    EXPECT_EQ(Streams(), "mpeg2video|720|576|16:9|ac3|2dvd_subtitle");
    const std::string times =
        Wait(Start(Words("ffprobe -v error -select_streams s -of csv=p=0 -show_entries packet=pts_time title.mpg")))
            .output;
    // The film begins half a second later in the file.
    const double begin = std::strtod(Probe("title.mpg", "stream=start_time").c_str(), nullptr);
    EXPECT_NEAR(std::strtod(times.c_str(), nullptr) - begin, 1, 0.05) << times;
    EXPECT_EQ(std::count(times.begin(), times.end(), '\n'), 2);
    // White letters over black rims appear in the lower part, within the title-safe area, and go away again.
    Ffmpeg(
        "-palette 000000,ffffff,808080,ffff00,00ffff,00ff00,ff00ff,ff0000,0000ff,808000,008080,008000,800080,800000,"
        "000080,ffa040 -i title.mpg -filter_complex [0:v][0:s]overlay -an -f rawvideo -pix_fmt rgb24 shown.raw");
    const std::string shown = ReadFile(folder / "shown.raw");
    constexpr std::size_t size = 720 * 576 * 3;
    ASSERT_EQ(shown.size() / size, 100u);
    std::size_t top = 576, bottom = 0, left = 720, right = 0, late = 0;
    for (std::size_t y = 0; y < 576; ++y)
        for (std::size_t x = 0; x < 720; ++x) {
            const auto white = [&](std::size_t frame) {
                const char* const pixel = &shown[frame * size + (y * 720 + x) * 3];
                return std::uint8_t(pixel[0]) > 200 && std::uint8_t(pixel[1]) > 200;
            };
            late += white(60);
            if (!white(37)) continue;
            top = std::min(top, y);
            bottom = std::max(bottom, y);
            left = std::min(left, x);
            right = std::max(right, x);
        }
    EXPECT_EQ(late, 0u);
    EXPECT_GT(top, 400u);
    EXPECT_LT(bottom, 540u);
    EXPECT_GT(left, 50u);
    EXPECT_LT(right, 670u);
    EXPECT_GT(bottom - top, 40u);  // two lines
    EXPECT_EQ(Complaints(), "");
}

TEST_F(DvdTitleTest, PicturesOfSubtitlesMoveWithTheFilm) {
    // Drawn for a film of 16:9; on a disc of 4:3 it lies between bars, and its subtitles with it.
    std::ofstream(folder / "a.srt") << "1\n00:00:00,500 --> 00:00:01,500\n{\\an8}HHHH\n";
    Ffmpeg("-f lavfi -i color=blue:s=640x360:r=25:d=2 -i a.srt -map 0 -map 1 -c:v ffv1 -c:s srt film.mkv");
    Make("film.mkv");
    std::filesystem::rename(folder / "title.mpg", folder / "wide.mpg");
    project.profile = FindProfile("pal-4:3");
    Make("wide.mpg");
    Ffmpeg(
        "-palette 000000,ffffff,808080 -i title.mpg -filter_complex [0:v][0:s]overlay -an -f rawvideo -pix_fmt gray "
        "shown.raw");
    const std::string shown = ReadFile(folder / "shown.raw").substr(720 * 576 * 25, 720 * 576);
    const auto brightest = [&](std::size_t y) {
        const std::string row = shown.substr(y * 720, 720);
        return int(std::uint8_t(*std::max_element(row.begin(), row.end(),
                                                  [](char a, char b) { return std::uint8_t(a) < std::uint8_t(b); })));
    };
    // The film takes up rows 72 to 503, and the letters of the top the first tenth of them.
    std::size_t first = 0;
    while (first < 576 && brightest(first) < 100) ++first;
    EXPECT_GT(first, 72u);
    ASSERT_LT(first, 140u);
    // They lack a palette: letters are white with a black rim, over blue.
    const std::string row = shown.substr(720 * (first + 6), 720);
    const auto edge = std::find_if(row.begin(), row.end(), [](char c) { return std::uint8_t(c) > 200; });
    ASSERT_GT(edge - row.begin(), 8);
    ASSERT_NE(edge, row.end());
    EXPECT_TRUE(std::any_of(edge - 8, edge, [](char c) { return std::uint8_t(c) < 16; }));
}

TEST(LanguageCodeTest, ReturnsTwoLettersForWhatFilmsHave) {
    EXPECT_EQ(LanguageCode("deu"), "de");
    EXPECT_EQ(LanguageCode("ger"), "de");
    EXPECT_EQ(LanguageCode("DE-at"), "de");
    EXPECT_EQ(LanguageCode("aa"), "aa");
    EXPECT_EQ(LanguageCode("zul"), "zu");
    // Letters within a code of three are none of their own.
    for (const char* const none : {"und", "ul", "", "e", "mul", "e:d", "german", "d:d"})
        EXPECT_EQ(LanguageCode(none), "");
}

}  // namespace
}  // namespace Nifikral
