#include "host/disc/disc_survey.h"

#include "host/base/errors.h"
#include "host/disc/disc_json.h"
#include "host/disc/film_moments.h"
#include "host/media/ffmpeg_log.h"
#include "host/media/subtitle_file.h"
#include "tests/host/command.h"

namespace Nifikral {
namespace {

class Survey : public CommandTest {
 protected:
    Survey() { CaptureFfmpegMessages(); }

    void Film(const std::string& file, const std::string& source = "testsrc2=size=128x72:rate=25:duration=1",
              const std::string& options = "-c:v mpeg2video -q:v 5") const {
        Ffmpeg("-f lavfi -i " + source + " " + options + " " + file);
    }
    void Folder(const std::string& name) const { std::filesystem::create_directories(folder / name); }
    std::string Refusal(const std::string& name) const {
        try {
            SurveyFolder((folder / name).string());
        } catch (const HostError& error) {
            EXPECT_EQ(error.Code(), ExitCode::Input);
            return error.what();
        }
        ADD_FAILURE() << "nothing was refused";
        return {};
    }
};

TEST_F(Survey, MakesAProjectOfWhatLiesInAFolder) {
    for (const char* const name : {"My_holiday/Photos_2", "My_holiday/b side", "My_holiday/.cache"}) Folder(name);
    Film("My_holiday/day10.mkv");
    Film("My_holiday/day2.MPG");
    Film("My_holiday/named.mkv", "testsrc2=size=96x72:rate=30000/1001:duration=5",
         "-c:v mpeg2video -metadata title=Finale");
    Ffmpeg("-f lavfi -i testsrc2=size=64x36 -frames:v 3 My_holiday/Photos_2/p%d.png");
    Ffmpeg("-f lavfi -i sine=duration=1 My_holiday/Photos_2/song.wav");
    std::filesystem::copy_file(folder / "My_holiday/day10.mkv", folder / "My_holiday/b side/One more.mkv");
    std::filesystem::copy_file(folder / "My_holiday/day10.mkv", folder / "My_holiday/.cache/preview.mkv");
    std::ofstream(folder / "My_holiday/notes.txt") << "milk";
    for (const char* const name : {"day1.srt", "day10.srt", "day10.EN.forced.vtt", "named.pt-BR.ASS"})
        std::ofstream(folder / "My_holiday" / name) << "1\n00:00:00,500 --> 00:00:01,000\nHello\n";

    const Outcome outcome = Nifikral("init disc My_holiday");
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_NE(outcome.errors.find("disc.json is written: 4 films and 1 slideshow, ntsc-4:3"), std::string::npos)
        << outcome.errors;
    Faults faults("disc.json");
    const DiscProject project = ReadDiscProject((folder / "disc.json").string(), faults);
    faults.ThrowIfAny();
    EXPECT_EQ(project.title, "My holiday");
    std::vector<std::string> titles;
    for (const DiscFilm& film : project.films) titles.push_back(film.title);
    EXPECT_EQ(titles, (std::vector<std::string>{"day2", "day10", "Finale", "One more", "Photos 2"}));
    EXPECT_NE(outcome.errors.find("day1.srt has the name of no film; it is left out"), std::string::npos)
        << outcome.errors;
    EXPECT_EQ(project.films[0].subtitles.size(), 0u);
    EXPECT_EQ(project.films[1].subtitles,
              (std::vector<std::string>{(folder / "My_holiday/day10.EN.forced.vtt").string(),
                                        (folder / "My_holiday/day10.srt").string()}));
    EXPECT_EQ(LanguageOfName(project.films[1].subtitles[0]), "en");
    ASSERT_EQ(project.films[2].subtitles.size(), 1u);
    EXPECT_EQ(LanguageOfName(project.films[2].subtitles[0]), "pt");
    EXPECT_EQ(project.films[3].path, (folder / "My_holiday/b side/One more.mkv").string());
    const DiscFilm& show = project.films[4];
    EXPECT_EQ(show.pictures, (std::vector<std::string>{(folder / "My_holiday/Photos_2").string()}));
    EXPECT_EQ(show.music, (folder / "My_holiday/Photos_2/song.wav").string());

    const std::string written = ReadFile(folder / "disc.json");
    EXPECT_EQ(Nifikral("init disc My_holiday").exitCode, int(ExitCode::Output));
    EXPECT_EQ(ReadFile(folder / "disc.json"), written);
    EXPECT_EQ(Nifikral("init disc My_holiday -y -o My_holiday/own.json").exitCode, 0);
    EXPECT_NE(ReadFile(folder / "My_holiday/own.json").find("\"path\": \"b side/One more.mkv\""), std::string::npos);
    EXPECT_EQ(Nifikral("init disc").exitCode, int(ExitCode::Usage));
}

TEST_F(Survey, FollowsMostOfTheMaterial) {
    Folder("a");
    Film("a/long.mkv", "testsrc2=size=128x72:rate=50:duration=3");
    Film("a/short.mkv", "testsrc2=size=96x72:rate=30:duration=1");
    EXPECT_STREQ(SurveyFolder((folder / "a").string()).profile->name, "pal-16:9");
    // A telephone held upright says nothing about the screen.
    Film("a/upright.mkv", "testsrc2=size=72x128:rate=30:duration=9");
    EXPECT_STREQ(SurveyFolder((folder / "a").string()).profile->name, "ntsc-16:9");
}

TEST_F(Survey, ReportsAllFaultsAtOnce) {
    Folder("bad/in");
    std::ofstream(folder / "bad/broken.mp4") << "not a film";
    std::ofstream(folder / "bad/in/empty.mov");
    std::ofstream(folder / "bad/caf\xE9.mkv") << "x";
    Film("bad/good.mkv");
    const std::string faults = Refusal("bad");
    EXPECT_NE(faults.find("broken.mp4 is no picture or video"), std::string::npos) << faults;
    EXPECT_NE(faults.find("empty.mov is empty"), std::string::npos) << faults;
    EXPECT_NE(faults.find("has a name that is no UTF-8; rename it"), std::string::npos) << faults;
    EXPECT_EQ(std::count(faults.begin(), faults.end(), '\n'), 3) << faults;

    Folder("none");
    std::ofstream(folder / "none/notes.txt") << "milk";
    EXPECT_NE(Refusal("none").find("holds no films and no pictures; name"), std::string::npos);
    EXPECT_NE(Refusal("nowhere").find("no such folder; check"), std::string::npos);
    EXPECT_NE(Refusal("none/notes.txt").find("is no folder; name"), std::string::npos);
    for (int i = 0; i < 100; ++i) {
        const std::string name = "many/" + std::to_string(i);
        Folder(name);
        std::ofstream(folder / name / "p.png") << "x";
    }
    EXPECT_NE(Refusal("many").find("films are 100, and a DVD holds 99 titles; leave some out"), std::string::npos);
}

TEST_F(Survey, TakesAThumbnailThatIsNeitherBlackNorBlurred) {
    // Black with noise, then blurred, then sharp, then white.
    Ffmpeg(
        "-f lavfi -i color=black:s=160x90:r=10:d=8 -f lavfi -i testsrc2=s=160x90:r=10:d=8 "
        "-f lavfi -i testsrc2=s=160x90:r=10:d=4 -f lavfi -i color=white:s=160x90:r=10:d=8 -filter_complex "
        "[0]noise=alls=100:allf=t[a];[1]gblur=sigma=12[b];[a][b][2][3]concat=n=4 -c:v mpeg2video -q:v 3 -g 20 a.mkv");
    const std::string film = (folder / "a.mkv").string();
    const double moment = FindThumbnail(film, 28, 2);
    EXPECT_GE(moment, 16);
    EXPECT_LT(moment, 20);
    // All is as dark: the beginning of what there is will do.
    Film("dark.mkv", "color=black:s=160x90:r=10:d=5");
    EXPECT_LT(FindThumbnail((folder / "dark.mkv").string(), 5, 2), 1);
}

TEST_F(Survey, BeginsChaptersAtCutsAboutEveryFiveMinutes) {
    // A cut 4 seconds behind the first mark, motion but no cut about the second, and an end that is too short for a
    // third.
    Ffmpeg(
        "-f lavfi -i testsrc2=s=64x36:r=5:d=304 -f lavfi -i mandelbrot=s=64x36:r=5:end_scale=0.1 -filter_complex "
        "[0]negate[a];[1]trim=duration=716[b];[a][b]concat=n=2 -c:v mpeg2video -g 15 a.mkv");
    const std::vector<DiscChapter> chapters = FindChapters((folder / "a.mkv").string(), 1020);
    ASSERT_EQ(chapters.size(), 3u);
    EXPECT_EQ(chapters[0].begin, 0);
    EXPECT_NEAR(chapters[1].begin, 304, 0.65);
    EXPECT_GE(chapters[1].begin, 303.99) << "the scene before shows";
    EXPECT_EQ(chapters[2].begin, 600);
    EXPECT_TRUE(FindChapters((folder / "a.mkv").string(), 449).empty());
}

TEST_F(Survey, BeginsChaptersOfAShowWithAPicture) {
    const std::vector<DiscChapter> chapters = ChaptersOfShow(700, 7);
    ASSERT_EQ(chapters.size(), 2u);
    EXPECT_EQ(chapters[1].begin, 301);
    EXPECT_TRUE(ChaptersOfShow(440, 5).empty());
    // A very long one has as many as a disc holds.
    EXPECT_LE(ChaptersOfShow(86400, 5).size(), mostChapters);
}

}  // namespace
}  // namespace Nifikral
