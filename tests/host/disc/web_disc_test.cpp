#include "host/disc/web_disc.h"

#include <nlohmann/json.hpp>

#include "host/base/errors.h"
#include "host/base/log.h"
#include "host/disc/dvd_script.h"
#include "host/films/media_manager.h"
#include "host/media/ffmpeg_log.h"
#include "tests/host/command.h"

namespace Nifikral {
namespace {

using Json = nlohmann::ordered_json;
using Kind = DiscTarget::Kind;

class WebDiscTest : public CommandTest {
 protected:
    WebDiscTest() {
        CaptureFfmpegMessages();
        SetVerbosity(Verbosity::Quiet);
        project.profile = FindProfile("pal-16:9");
    }
    ~WebDiscTest() override { SetVerbosity(Verbosity::Normal); }

    std::string Path(const std::string& name) const { return (folder / name).string(); }

    WebFilm Make(const std::string& path) {
        project.films.resize(1);
        project.films[0].thumbnail = 0.3;
        project.films[0].path = Path(path);
        const WebFilm made = MakeWebFilm(project, 0, Path(""), 2, module);
        EXPECT_EQ(ReadWebFilm(Path(""), 0), made);
        WriteWebPoster(project.films[0], made);
        return made;
    }

    std::string Streams(const std::string& file) const {
        std::string streams =
            Wait(Start(Words("ffprobe -v error -of compact=nk=1:p=0 -show_entries stream=codec_name " + file))).output;
        std::replace(streams.begin(), streams.end(), '\n', ' ');
        return streams;
    }
    std::string Checksum(const std::string& file) const {
        return Ffmpeg("-i " + file + " -map 0:v -c copy -bsf:v h264_mp4toannexb -f md5 -");
    }

    DiscProject project;
    MediaManager manager;
    EffectModule module{NIFIKRAL_MODULE_FILE, &manager};
};

TEST_F(WebDiscTest, TakesOverWhatBrowsersPlayAndGivesEachSoundAFile) {
    std::ofstream(folder / "a.srt") << "1\n00:00:00,500 --> 00:00:01,500\n<i>Guten</i> Tag\n";
    Ffmpeg(
        "-f lavfi -i testsrc2=size=320x180:rate=25:duration=2 -f lavfi -i sine=duration=2 -f lavfi -i "
        "sine=frequency=900:duration=2 -i a.srt -map 0 -map 1 -map 2 -map 3 -c:v libx264 -pix_fmt yuv420p -c:a:0 aac "
        "-c:a:1 ac3 -metadata:s:a:0 language=ger -metadata:s:a:1 language=eng -metadata:s:a:1 title=Director "
        "-metadata:s:s:0 language=deu in.mkv");
    // Beside the film, and coded as it was usual once.
    std::ofstream(folder / "in.fr.srt") << "1\n00:00:01,000 --> 00:00:02,000\n\xC9t\xE9\n";
    project.films.resize(1);
    project.films[0].subtitles = {Path("in.fr.srt")};
    const WebFilm made = Make("in.mkv");
    EXPECT_TRUE(made.copied);
    EXPECT_EQ(Probe(made.poster, "stream=codec_name,width,height"), "mjpeg|320|180\n");
    const std::vector<WebTrack> sounds = {{Path("film-01.mp4"), "ger", ""},
                                          {Path("film-01-sound-2.mp4"), "eng", "Director"}};
    EXPECT_EQ(made.sounds, sounds);
    EXPECT_EQ(Checksum("film-01.mp4"), Checksum("in.mkv"));
    EXPECT_EQ(Checksum("film-01-sound-2.mp4"), Checksum("in.mkv"));
    for (const WebTrack& track : made.sounds) {
        EXPECT_EQ(Streams(track.file), "h264 aac ");
        // What it begins with comes first, so that it plays while it is loaded.
        const std::string bytes = ReadFile(track.file);
        EXPECT_LT(bytes.find("moov"), bytes.find("mdat")) << track.file;
        EXPECT_NEAR(std::stod(Probe(track.file, "format=duration")), 2, 0.05);
    }
    ASSERT_EQ(made.subtitles.size(), 2u);
    EXPECT_EQ(made.subtitles[1].language, "fr");
    EXPECT_EQ(ReadFile(made.subtitles[1].file), "WEBVTT\n\n00:01.000 --> 00:02.000\nÉté\n");
    // The container begins a little before the pictures.
    const std::string text = ReadFile(made.subtitles[0].file);
    EXPECT_TRUE(text.starts_with("WEBVTT\n\n00:00.52") && text.ends_with("<i>Guten</i> Tag\n")) << text;
}

TEST_F(WebDiscTest, EncodesWhatBrowsersDoNotPlay) {
    // Moments of their own in both fields, which browsers would show as combs.
    Ffmpeg(
        "-f lavfi -i testsrc2=size=720x576:rate=50:duration=1 -f lavfi -i sine=duration=1 -vf "
        "tinterlace=interleave_top,setfield=tff,setsar=64/45 -c:v mpeg2video -b:v 6M -flags +ildct+ilme -top 1 -c:a "
        "ac3 "
        "fields.mpg");
    const auto combs = [&](const std::string& file) {
        std::istringstream lines(Ffmpeg("-i " + file + " -vf idet,metadata=print:file=- -f null -"));
        int count = 0;
        for (std::string line; std::getline(lines, line);) count += line.ends_with("single.current_frame=tff");
        return count;
    };
    ASSERT_GT(combs("fields.mpg"), 20);
    EXPECT_FALSE(Make("fields.mpg").copied);
    EXPECT_EQ(Streams("film-01.mp4"), "h264 aac ");
    EXPECT_EQ(Probe("film-01.mp4", "stream=width,height,sample_aspect_ratio,field_order"),
              "1024|576|1:1|progressive\n");
    EXPECT_NEAR(std::stod(Probe("film-01.mp4", "format=duration")), 1, 0.1);
    EXPECT_LT(combs("film-01.mp4"), 4);
    Ffmpeg("-i fields.mpg -an -c:v libx264 -flags +ildct+ilme -top 1 fields.mp4");
    EXPECT_FALSE(Make("fields.mp4").copied);

    Ffmpeg("-f lavfi -i testsrc2=size=1440x2560:rate=5:duration=0.4 -c:v libx264 -preset ultrafast big.mp4");
    EXPECT_EQ(Make("big.mp4").sounds.size(), 1u);
    EXPECT_EQ(Probe("film-01.mp4", "stream=width,height,pix_fmt"), "1080|1920|yuv420p\n");
    EXPECT_EQ(Streams("film-01.mp4"), "h264 ");

    Ffmpeg("-f lavfi -i testsrc2=size=64x36:rate=5:duration=0.4 -c:v libx264 -pix_fmt yuv420p10le deep.mp4");
    EXPECT_FALSE(Make("deep.mp4").copied);
    EXPECT_EQ(Probe("film-01.mp4", "stream=width,height,pix_fmt"), "64|36|yuv420p\n");
}

TEST_F(WebDiscTest, KeepsHowATelephoneWasHeld) {
    Ffmpeg("-f lavfi -i testsrc2=size=192x108:rate=25:duration=0.4 -c:v libx264 -pix_fmt yuv420p plain.mp4");
    Ffmpeg("-i plain.mp4 -c copy -metadata:s:v rotate=90 held.mp4");
    EXPECT_TRUE(Make("held.mp4").copied);
    EXPECT_EQ(Probe("film-01.mp4", "stream_side_data=rotation"), Probe("held.mp4", "stream_side_data=rotation"));
    EXPECT_NE(Probe("film-01.mp4", "stream_side_data=rotation"), "");
}

TEST_F(WebDiscTest, MakesAFilmOfPhotographs) {
    Ffmpeg("-f lavfi -i testsrc2=size=300x400:rate=1:duration=2 %d.jpg");
    Ffmpeg("-f lavfi -i sine=duration=3 music.wav");
    DiscFilm show;
    show.pictures = {Path("1.jpg"), Path("2.jpg")};
    show.music = Path("music.wav");
    show.pictureSeconds = 1;
    project.films = {show};
    project.profile = FindProfile("ntsc-4:3");
    const WebFilm made = MakeWebFilm(project, 0, Path(""), 2, module);
    ASSERT_EQ(made.sounds.size(), 1u);
    EXPECT_EQ(Streams(made.sounds[0].file), "h264 aac ");
    EXPECT_EQ(Probe(made.sounds[0].file, "stream=width,height,sample_aspect_ratio,r_frame_rate"),
              "1440|1080|1:1|30000/1001\n");
    EXPECT_EQ(Files(), (std::set<std::string>{"1.jpg", "2.jpg", "film-01.json", "film-01.mp4", "music.wav"}));
}

// A disc of three films, the first with chapters; the menus have two pages of the disc and two of chapters.
class WebDiscInABrowser : public WebDiscTest {
 protected:
    WebDiscInABrowser() {
        project.title = R"(Sommer & "Meer" </script><b>)";
        project.films.resize(3);
        project.films[0].title = R"(Ein "Film" </script><!-- & mehr)";
        project.films[0].chapters = {{0, "Anfang"}, {1, "Mitte </script>"}, {2, ""}};
        project.films[1].title = "أفلام الصيف";
        project.films[2].title = "Third";
    }

    void AddPage(int film, const std::vector<DiscTarget>& targets, const MenuProject& menu) {
        DiscPage page{"page" + std::to_string(pages.size()), "menu_common", menu, {}, film};
        for (std::size_t i = 0; i < targets.size(); ++i) {
            const DiscTarget& target = targets[i];
            const std::string names[] = {project.films[std::size_t(target.film)].title,
                                         "Teil " + std::to_string(target.chapter + 1), "Alles abspielen",
                                         "Seite " + std::to_string(target.page + 1)};
            page.buttons.push_back({names[std::size_t(target.kind)], 90 + int(i % 2) * 300, 116 + int(i / 2) * 140, 240,
                                    100, target, 0, 0, 0, 0});
        }
        LinkButtons(page.buttons);
        pages.push_back(page);
    }

    MenuProject Menu() {
        Ffmpeg("-f lavfi -i gradients=size=1024x576:seed=3 -frames:v 1 back.png");
        Ffmpeg("-f lavfi -i testsrc2=size=342x100:rate=25:duration=2 -c:v libx264 -pix_fmt yuv420p tile.mp4");
        std::ofstream(folder / "menu.json")
            << R"({"template": "menu_common", "frameRate": 25, "duration": 2, "sourcePath": "back.png",
                   "additionSourcePaths": ["tile.mp4", "tile.mp4", "tile.mp4", "tile.mp4"],
                   "startPositions": [[128, 116], [555, 116], [128, 256], [555, 256]],
                   "textInfos": [{"text": "Sommer & Meer", "size": 44, "box": [128, 40], "color": "White"}]})";
        Faults faults("menu.json");
        const MenuProject menu = ReadMenuProject(Path("menu.json"), "menu_common", project.profile, faults);
        faults.ThrowIfAny();
        return menu;
    }

    void MakeFilms() {
        std::ofstream(folder / "a.srt") << "1\n00:00:00,900 --> 00:00:01,500\nGuten Tag\n";
        Ffmpeg(
            "-f lavfi -i testsrc2=size=640x360:rate=25:duration=3 -f lavfi -i sine=duration=3 -f lavfi -i "
            "sine=frequency=900:duration=3 -i a.srt -map 0 -map 1 -map 2 -map 3 -c:v libx264 -pix_fmt yuv420p -c:a aac "
            "-metadata:s:a:0 language=deu -metadata:s:a:1 language=eng -metadata:s:s:0 language=deu a.mkv");
        Ffmpeg("-f lavfi -i testsrc2=size=360x640:rate=25:duration=1.2 -c:v libx264 -pix_fmt yuv420p b.mp4");
        Ffmpeg(
            "-f lavfi -i testsrc2=size=640x360:rate=25:duration=1.2 -f lavfi -i sine=duration=1.2 -c:v mpeg2video "
            "-c:a mp2 c.mpg");
        const char* const paths[] = {"a.mkv", "b.mp4", "c.mpg"};
        for (std::size_t i = 0; i < 3; ++i) {
            project.films[i].path = Path(paths[i]);
            films.push_back(MakeWebFilm(project, int(i), Path(""), 2, module));
            WriteWebPoster(project.films[i], films.back());
        }
    }

    void MakeDisc() {
        MakeFilms();
        const MenuProject menu = Menu();
        MenuProject led = menu;
        led.film.loopStart = 25;
        AddPage(-1, {{Kind::Film, 0}, {Kind::Film, 1}, {Kind::PlayAll}, {Kind::Page, 0, 0, 1}, {Kind::Page, 0, 0, 2}},
                menu);
        AddPage(-1, {{Kind::Page, 0, 0, 0}, {Kind::Film, 2}}, menu);
        AddPage(0, {{Kind::Chapter, 0, 0}, {Kind::Chapter, 0, 1}, {Kind::Page, 0, 0, 3}, {Kind::Page, 0, 0, 0}}, led);
        AddPage(0, {{Kind::Chapter, 0, 2}, {Kind::Page, 0, 0, 2}, {Kind::Page, 0, 0, 0}}, menu);
        for (std::size_t i = 0; i < pages.size(); ++i)
            menus.push_back(MakeWebMenu(project, pages, int(i), Path(""), 2, module));
    }

    void Write(bool overwrite = false) const { WriteWebDisc(project, pages, films, menus, Path("disc"), overwrite); }

    // What the walk is to find, from the pages themselves.
    std::string Expected() const {
        constexpr const char* kinds[] = {"film", "chapter", "all", "page"};
        const FilmProfile& profile = *project.profile;
        Json json = {{"aspect", av_q2d(profile.shownAspect)},
                     {"playAll", {0, 2}},
                     {"chapterButton", {2, 1}},
                     {"loop", {2, 1}},
                     {"pages", Json::array()},
                     {"films", Json::array()}};
        for (const DiscPage& page : pages) {
            Json buttons = Json::array();
            for (const DiscButton& b : page.buttons)
                buttons.push_back({{"caption", b.caption},
                                   {"kind", kinds[std::size_t(b.target.kind)]},
                                   {"film", b.target.film},
                                   {"chapter", b.target.chapter},
                                   {"page", b.target.page},
                                   {"place",
                                    {double(b.x) / profile.width, double(b.y) / profile.height,
                                     double(b.width) / profile.width, double(b.height) / profile.height}},
                                   {"links", {b.up, b.down, b.left, b.right}}});
            json["pages"].push_back({{"buttons", buttons}});
        }
        const std::vector<std::vector<std::string>> files = {
            {"film-01.mp4", "film-01-sound-2.mp4"}, {"film-02.mp4"}, {"film-03.mp4"}};
        for (std::size_t film = 0; film < files.size(); ++film) {
            const ButtonPlace place = PlaceOfFilm(pages, int(film));
            Json entry = {{"files", files[film]}, {"place", {place.page, place.button}}, {"chapters", Json::array()}};
            for (const DiscChapter& chapter : project.films[film].chapters) entry["chapters"].push_back(chapter.begin);
            json["films"].push_back(entry);
        }
        json["films"][0]["subtitle"] = "Guten Tag";
        return json.dump();
    }

    std::vector<DiscPage> pages;
    std::vector<WebFilm> films;
    std::vector<WebMenu> menus;
};

TEST_F(WebDiscInABrowser, DoesWhatADiscDoesInAPlayer) {
    MakeDisc();
    Write();
    std::ofstream(folder / "expected.json") << Expected();
    const Outcome outcome = Wait(Start({NIFIKRAL_BROWSER_WALK, Path("disc"), Path("expected.json")}));
    if (outcome.exitCode == 77) GTEST_SKIP() << outcome.output;
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
}

TEST_F(WebDiscInABrowser, StandsUnderItsNameOnlyWhenComplete) {
    const auto file = [&](const std::string& name) {
        std::ofstream(folder / name) << name;
        return Path(name);
    };
    films.resize(3);
    for (std::size_t i = 0; i < films.size(); ++i) films[i].poster = file(std::to_string(i) + ".jpg");
    films[0].sounds = {{file("a.mp4"), "ger", ""}};
    films[0].subtitles = {{file("a.vtt"), "eng", ""}};
    films[1].sounds = {{file("b.mp4"), "", ""}};
    films[2].sounds = {{file("c.mp4"), "", ""}};
    menus = {{file("m.mp4"), file("m.jpg")}};
    AddPage(-1, {{Kind::Film, 0}}, {});
    Write();
    const std::string page = ReadFile(folder / "disc/index.html");
    const std::string open = "id=\"disc\">";
    const std::size_t begin = page.find(open) + open.size();
    const Json json = Json::parse(page.substr(begin, page.find("</script>", begin) - begin));
    EXPECT_EQ(json["title"], project.title);
    EXPECT_EQ(json["films"][0]["title"], project.films[0].title);
    EXPECT_EQ(json["films"][0]["sounds"][0]["language"], "de");
    EXPECT_EQ(json["films"][0]["subtitles"][0]["text"], "a.vtt");

    const auto expectRefused = [&](bool overwrite, const std::string& reason) {
        try {
            Write(overwrite);
            ADD_FAILURE() << "not refused: " << reason;
        } catch (const HostError& error) {
            EXPECT_EQ(error.Code(), ExitCode::Output);
            EXPECT_NE(std::string(error.what()).find(reason), std::string::npos) << error.what();
        }
    };
    expectRefused(false, "-y overwrites it");
    Write(true);
    // A film that is gone leaves the older disc as it was.
    std::filesystem::remove(folder / "c.mp4");
    expectRefused(true, "c.mp4");
    EXPECT_EQ(ReadFile(folder / "disc/films/c.mp4"), "c.mp4");
    std::ofstream(folder / "disc/letter.txt");
    expectRefused(true, "letter.txt");
    EXPECT_EQ(Files(),
              (std::set<std::string>{"0.jpg", "1.jpg", "2.jpg", "a.mp4", "a.vtt", "b.mp4", "disc", "m.jpg", "m.mp4"}));
}

}  // namespace
}  // namespace Nifikral
