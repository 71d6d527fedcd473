#include "host/disc/disc_json.h"

#include "host/base/errors.h"
#include "tests/host/command.h"

namespace Nifikral {
namespace {

class DiscFile : public CommandTest {
 protected:
    DiscProject Read(const std::string& json) {
        const std::string path = (folder / "disc.json").string();
        std::ofstream(path) << json;
        Faults faults("disc.json");
        DiscProject project = ReadDiscProject(path, faults);
        faults.ThrowIfAny();
        return project;
    }
    // The faults, one a line.
    std::string Refusal(const std::string& json, ExitCode code) {
        try {
            Read(json);
        } catch (const HostError& error) {
            EXPECT_EQ(error.Code(), code) << error.what();
            return error.what();
        }
        ADD_FAILURE() << "nothing was refused in " << json;
        return {};
    }
};

constexpr char full[] = R"({
  "version": 1,
  "title": "Été",
  "profile": "ntsc-4:3",
  "gigabytes": 8.5,
  "videoRate": 6000,
  "films": [
    {
      "title": "The lake",
      "path": "films/lake [1].mkv",
      "chapters": [0, 12.5, 300],
      "thumbnail": 3.25
    },
    {
      "title": "Pictures",
      "pictures": ["photos", "more/last.jpg"],
      "pictureSeconds": 4,
      "music": "song.mp3",
      "chapters": [
        0,
        {
          "begin": 60,
          "title": "Home"
        }
      ],
      "thumbnail": 0
    }
  ],
  "menus": {
    "template": "menu_travel",
    "chapterTemplate": "submenu_festival",
    "instructionTemplate": "instructionmenu_festival",
    "mood": "dark", "background": "back.png",
    "music": "loop.ogg",
    "seconds": 12.5,
    "fade": 1,
    "playAll": false,
    "chapters": false,
    "instructions": ["Arrows choose.", "Enter plays."],
    "words": {
      "playAll": "Alles abspielen",
      "back": "戻る"
    },
    "language": "de",
    "mark": "underline",
    "chosen": "#102030",
    "pressed": "#ffffff"
  }
}
)";

TEST_F(DiscFile, IsReadAndWrittenWithoutALoss) {
    const DiscProject project = Read(full);
    EXPECT_EQ(project.capacity, 8'500'000'000);
    ASSERT_EQ(project.films.size(), 2u);
    EXPECT_EQ(project.films[0].path, (folder / "films/lake [1].mkv").string());
    EXPECT_EQ(project.films[1].item, "films[1]");
    EXPECT_EQ(project.films[1].chapters[1].title, "Home");
    EXPECT_EQ(project.menus.chosen, 0x102030u);
    std::string written = DiscJson(project, (folder / "disc.json").string());
    // Lists of texts stand in several lines; it is their content that counts.
    EXPECT_EQ(Json::parse(written), Json::parse(full)) << written;
    EXPECT_NE(written.find("\"chapters\": [0, 12.5, 300],"), std::string::npos) << written;
    const std::string elsewhere = DiscJson(project, (folder / "films/disc.json").string());
    EXPECT_NE(elsewhere.find("\"lake [1].mkv\""), std::string::npos) << elsewhere;
    EXPECT_NE(elsewhere.find("\"../photos\""), std::string::npos) << elsewhere;
}

TEST_F(DiscFile, NeedsLittleAndBeginsChaptersAtTheBeginning) {
    const DiscProject project =
        Read(R"({"version": 1, "films": [{"title": "a", "path": "a.mp4", "chapters": [7, 8]}]})");
    EXPECT_STREQ(project.profile->name, "pal-16:9");
    EXPECT_EQ(project.capacity, 4'700'000'000);
    ASSERT_EQ(project.films[0].chapters.size(), 3u);
    EXPECT_EQ(project.films[0].chapters[0].begin, 0);
    EXPECT_EQ(project.menus.mainTemplate, "menu_common");
}

TEST_F(DiscFile, ReportsAllFaultsAtOnceWithTheItemAndTheRemedy) {
    const std::string longTitle = [] {
        std::string text;
        for (int i = 0; i < 101; ++i) text += "é";
        return text;
    }();
    std::string manyChapters = "0";
    for (int i = 1; i < 100; ++i) manyChapters.append(",").append(std::to_string(i));
    const std::string faults = Refusal(R"({
        "version": 1, "titl": "x", "profile": "hd", "gigabytes": 25, "videoRate": 9000,
        "films": [
            {"title": ")" + longTitle + R"(", "path": "a.mp4", "pictures": ["b"]},
            {"title": "", "path": ""},
            {"path": "c.mp4", "music": "d.mp3", "chapters": [0, 5, 5], "thumbnail": -1},
            {"title": "d", "pictures": []},
            {"title": "e"},
            {"title": "f", "path": "f.mp4", "chapters": [)" +
                                           manyChapters + R"(]}],
        "menus": {"template": "submenu_common", "chapterTemplate": "submenu_comon", "seconds": 0, "mood": "sad",
                  "mark": "circle", "chosen": "rod", "words": {"bak": "x", "next": ""}, "language": "my own", "instructions": [7], "music": ""}})",
                                       ExitCode::Usage);
    for (const char* const words : {"menus.words.bak: is no key of a project; did you mean back",
                                    "menus.words.next: is empty; write",
                                    "menus.language: \"my own\" names no language; give",
                                    "titl: is no key of a project; did you mean title",
                                    "profile: \"hd\" is no profile of DVDs; give",
                                    "gigabytes: is 25; give",
                                    "videoRate: is 9000; give",
                                    "films[0]: has a path and pictures; leave",
                                    "films[0].title: has 101 characters; give 100",
                                    "films[1].title: is empty; write",
                                    "films[1].path: names no file",
                                    "films[2].title: missing; give",
                                    "films[2].music: is for slideshows; leave",
                                    "films[2].chapters[2]: does not begin after",
                                    "films[2].thumbnail: is -1; give",
                                    "films[3].pictures: are none; name",
                                    "films[4]: has no path; name",
                                    "films[5].chapters: are 100",
                                    "menus.template: \"submenu_common\" is no template for this",
                                    "did you mean submenu_common?",
                                    "menus.seconds: is 0; give",
                                    "menus.mood: is \"sad\"; give own, light or dark",
                                    "menus.mark: \"circle\" is no mark; give",
                                    "menus.chosen: is \"rod\"; give",
                                    "menus.instructions[0]: is 7; give",
                                    "menus.music: names no file"})
        EXPECT_NE(faults.find(words), std::string::npos) << words << "\nin\n" << faults;
    EXPECT_EQ(std::count(faults.begin(), faults.end(), '\n'), 26) << faults;
    const std::string same = Refusal(
        R"({"version": 1, "films": [{"title": "a", "path": "a"}], "menus": {"pressed": "#ffd040"}})", ExitCode::Usage);
    EXPECT_NE(same.find("menus.pressed: is the colour of buttons that are chosen; give"), std::string::npos) << same;
}

TEST_F(DiscFile, IsRefusedWithOneLineWhereNothingElseCanBeSaid) {
    const std::string later = Refusal(R"({"version": 2, "reels": 7})", ExitCode::Input);
    EXPECT_NE(later.find("version: is 2, and this nifikral reads version 1; use a newer"), std::string::npos) << later;
    EXPECT_EQ(std::count(later.begin(), later.end(), '\n'), 0) << later;
    EXPECT_NE(Refusal("{\"version\": 1, \"title\": \"\xFF\"}", ExitCode::Input).find("UTF-8"), std::string::npos);
    EXPECT_NE(
        Refusal(R"({"films": [{"title": "a", "path": "a.mp4"}]})", ExitCode::Usage).find("version: missing; give"),
        std::string::npos);
    EXPECT_NE(Refusal(R"({"version": 1, "films": []})", ExitCode::Usage).find("films: are none; name at least one"),
              std::string::npos);
    std::string films = R"({"title": "a", "path": "a.mp4"})";
    for (int i = 0; i < 99; ++i) films += R"(,{"title": "a", "path": "a.mp4"})";
    EXPECT_NE(
        Refusal(R"({"version": 1, "films": [)" + films + "]}", ExitCode::Usage).find("a DVD holds 99 titles; leave"),
        std::string::npos);
}

}  // namespace
}  // namespace Nifikral
