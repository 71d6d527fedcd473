#include "host/base/errors.h"
#include "host/base/log.h"
#include "host/films/menu_project.h"
#include "host/media/ffmpeg_log.h"
#include "tests/host/command.h"

namespace Nifikral {
namespace {

class Project : public CommandTest {
 protected:
    Project() {
        CaptureFfmpegMessages();
        Ffmpeg("-f lavfi -i color=red:size=64x36 -frames:v 1 a.png");
        Ffmpeg("-f lavfi -i testsrc2=size=64x36:duration=0.4 -c:v ffv1 b.mkv");
    }

    MenuProject Read(const std::string& json) {
        std::ofstream(folder / "menu.json") << json;
        Faults faults("menu.json");
        MenuProject project = ReadMenuProject((folder / "menu.json").string(), "menu_common", nullptr, faults);
        faults.ThrowIfAny();
        return project;
    }
    void ExpectRefused(const std::string& json, ExitCode code, const std::vector<const char*>& words) {
        try {
            Read(json);
            ADD_FAILURE() << "nothing was refused in " << json;
        } catch (const HostError& error) {
            EXPECT_EQ(error.Code(), code) << json;
            for (const char* const word : words)
                EXPECT_NE(std::string(error.what()).find(word), std::string::npos) << word << "\nin\n" << error.what();
        }
    }
};

TEST_F(Project, BecomesThePropertiesOfTheModuleInTheirOrder) {
    const MenuProject project = Read(R"({
        "template": "menu_common", "frameRate": 29.97, "duration": 2, "width": 640, "height": 360,
        "sourcePath": "a.png", // relative to this file
        "additionSourcePaths": ["a.png", "b.mkv"],
        "startPositions": [[10, 20], [-30, 40]], "endPositions": [[50, 60], [70, -80]],
        "maskPaths": ["", "a.png"], "endTrans": [255, 100],
        "textInfos": [
            {"text": "still, 'quoted' <b>", "face": "DejaVu Sans", "fontstyle": "bold", "size": 20,
             "color": "Navy", "box": [1, 2, 3, 4], "show": [0, 9]},
            {"text": "moving", "size": 30, "box": [5, 6],
             "move": {"end": [7, 8], "formula": [9, 10], "speed": -11}}]})");
    EXPECT_EQ(project.film.frames, 60);
    EXPECT_EQ(project.film.frameRate.num, 30000);
    const std::string at = folder.string() + "/";
    using Pairs = std::vector<std::pair<std::string, std::string>>;
    const Pairs expected = {
        {"duration", "60"},
        {"width", "640"},
        {"height", "360"},
        {"sourcePath", at + "a.png"},
        {"textNumber", "2"},
        {"textInfos",
         "still, 'quoted' <b>;DejaVu Sans;bold;20;0;0;128;1;2;3;4;false;true;1;10\\"
         "moving;Cabin, DejaVu Sans;italic halo spacing=10;30;255;230;196;5;6;0;0;true;7;8;9;10;-11;0"},
        {"additionSourceNumber", "2"},
        {"isAdditionSourceImages", "true;false"},
        {"additionSourcePaths", at + "a.png;nifikral-played:30000/1001:loop:" + at + "b.mkv"},
        {"maskPaths", ";nifikral-played:30000/1001:loop:" + at + "a.png"},
        {"startPositions", "10;20;-30;40"},
        {"endPositions", "50;60;70;-80"},
        {"moveFormulas", "0;0;0;0"},
        {"moveSpeeds", "0;0"},
        {"startTrans", "255;255"},
        {"endTrans", "255;100"},
        {"fadeSpeeds", "0;0"}};
    EXPECT_EQ(MenuProperties(project), expected);
}

TEST_F(Project, ReportsAllFaultsAtOnceWithTheItemAndTheRemedy) {
    std::ofstream(folder / "empty.png");
    ExpectRefused(R"({
        "template": "menu_travel", "frameRate": 0, "duration": "long", "width": 0, "hight": 360,
        "sourcePath": "nosuch.png", "textNumber": 7,
        "additionSourcePaths": ["a.png", "empty.png", "x;y.png"],
        "additionSourceSizes": [[10, 0], [10], [99999, 10]],
        "startPositions": [[1, 2]], "moveSpeeds": [1, 2, 3.5], "startTrans": [256, 0, 0],
        "textInfos": [{"text": "a;b", "size": 0, "color": "rod", "box": [1, 2, 3], "font": "Arial"},
                      {"text": "c\\d", "size": 20, "box": [1, 2], "fontstyle": 3, "face": "it's"}]})",
                  ExitCode::Usage,
                  {"template: is \"menu_travel\"",
                   "frameRate: is 0; give",
                   "duration: is \"long\"",
                   "width: is 0; give",
                   "height: missing; give",
                   "hight: is no key of a project; did you mean height",
                   "nosuch.png: no such file",
                   "textNumber: is 7 and not the 2",
                   "empty.png is empty",
                   "x;y.png: no such file",
                   "additionSourceSizes[0][1]: is 0",
                   "additionSourceSizes[1]: is [10]",
                   "additionSourceSizes[2][0]: is 99999",
                   "startPositions: has 1 entries for 3",
                   "moveSpeeds[2]: is 3.5",
                   "startTrans[0]: is 256; give",
                   "textInfos[0].text: \"a;b\" holds ';'",
                   "textInfos[0].size: is 0",
                   "textInfos[0].color: is \"rod\"",
                   "textInfos[0].box: is [1,2,3]",
                   "textInfos[0].font: is no key",
                   "textInfos[1].text: \"c\\d\" holds '\\'",
                   "textInfos[1].fontstyle: is 3",
                   "textInfos[1].face: \"it's\" holds '''"});
    // What follows from a fault is not reported beside it.
    try {
        Read(R"({"width": 64, "height": 36, "additionSourcePaths": [5], "moveSpeeds": "1", "textNumber": "one",
                 "textInfos": [7], "textInfo": []})");
        ADD_FAILURE() << "nothing was refused";
    } catch (const HostError& error) {
        const std::string lines = error.what();
        EXPECT_EQ(std::count(lines.begin(), lines.end(), '\n'), 5) << lines;
    }
    ExpectRefused(R"({"width": 64, "height": 36, "sourcePath": "no.png"})", ExitCode::Input, {"sourcePath", "no.png"});
    ExpectRefused(R"({"width": 64,)", ExitCode::Input, {"menu.json is no JSON", "line 1"});
    ExpectRefused("[]", ExitCode::Input, {"no JSON object"});
    std::string many = R"("none.png")";
    for (int i = 0; i < 5000; ++i) many += R"(,"none.png")";
    ExpectRefused(R"({"width": 64, "height": 36, "additionSourcePaths": [)" + many + "]}", ExitCode::Usage,
                  {"additionSourcePaths: names 5001 files; a menu takes at most 4096"});
    constexpr std::size_t deep = 200000;
    ExpectRefused(R"({"width": )" + std::string(deep, '[') + std::string(deep, ']') + "}", ExitCode::Input,
                  {"menu.json is nested more than 64 deep"});
    ExpectRefused("{" + std::string(20 << 20, ' ') + "}", ExitCode::Input, {"menu.json is longer than 16 MB"});
}

}  // namespace
}  // namespace Nifikral
