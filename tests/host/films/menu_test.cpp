#include <algorithm>

#include "tests/host/command.h"

namespace Nifikral {
namespace {

class Menu : public CommandTest {
 protected:
    // A small film in which everything moves: a video, a fading picture and a text.
    void WriteProject() const {
        Ffmpeg("-f lavfi -i testsrc2=size=64x48:rate=15:duration=0.4,format=yuv420p -c:v ffv1 clip.mkv");
        Ffmpeg("-f lavfi -i testsrc=size=40x30 -frames:v 1 photo.png");
        std::ofstream(folder / "menu.json") << R"({
            "frameRate": 25, "duration": 1, "width": 160, "height": 90, "sourcePath": "clip.mkv",
            "additionSourcePaths": ["clip.mkv", "photo.png"],
            "startPositions": [[0, 10], [60, 20]], "endPositions": [[100, 10], [60, 20]], "moveSpeeds": [3, 0],
            "startTrans": [255, 0], "fadeSpeeds": [0, 9],
            "textInfos": [{"text": "Hi <b>", "size": 20, "box": [0, 60], "move": {"end": [90, 60], "speed": 2}}]})";
    }
};

TEST_F(Menu, PartsAreTheSameFramesAsTheWholeFilm) {
    WriteProject();
    ASSERT_EQ(Nifikral("menu menu_common menu.json -o whole.mkv --encoder ffv1").exitCode, 0);
    const Outcome part = Nifikral("menu menu_common menu.json -o part.mkv --encoder ffv1 --frames 12-15 --threads 1");
    ASSERT_EQ(part.exitCode, 0) << part.errors;
    EXPECT_EQ(part.errors, "");
    const std::string whole = RawPictures("whole.mkv", "yuv420p");
    constexpr std::size_t size = 160 * 90 * 3 / 2;
    ASSERT_EQ(whole.size(), 25 * size);
    EXPECT_NE(whole.substr(12 * size, size), whole.substr(13 * size, size)) << "nothing moves";
    EXPECT_EQ(RawPictures("part.mkv", "yuv420p"), whole.substr(12 * size, 4 * size));
    EXPECT_EQ(Probe("part.mkv", "stream=width,height,color_range,color_space,r_frame_rate"),
              "160|90|tv|smpte170m|25/1\n");

    ASSERT_EQ(Nifikral("menu menu_common menu.json -o still_%02d.png --frames 24-99").exitCode, 0);
    EXPECT_TRUE(Files().contains("still_24.png"));
    const Outcome pipe = Nifikral("menu menu_common menu.json -o - -f y4m --frames 3");
    EXPECT_EQ(pipe.output.substr(0, 17), "YUV4MPEG2 W160 H9");
}

TEST_F(Menu, ADryRunTellsFaultsAndMakesNothing) {
    WriteProject();
    const Outcome good = Nifikral("menu menu_common menu.json -o out.mp4 --dry-run");
    EXPECT_EQ(good.exitCode, 0) << good.errors;
    EXPECT_NE(good.output.find("frames 0 to 24 of 25"), std::string::npos) << good.output;
    EXPECT_FALSE(Files().contains("out.mp4"));

    struct Case {
        const char* json;
        const char* arguments;
        int exitCode;
        std::vector<const char*> lines;
    };
    const std::vector<Case> cases = {
        {R"({"width": 161, "height": 90, "sourcePath": "nosuch.png"})",
         "-o out.mp4 --dry-run",
         2,
         {"sourcePath: nosuch.png: no such file", "width: is odd, and videos need even sides"}},
        {R"({"profile": "dvd", "width": 64, "height": 48})",
         "-o out.mp4",
         2,
         {"profile: \"dvd\" is no profile; give one of pal, pal-4:3, "}},
        {R"({"width": 160, "height": 90, "sourcePath": "nosuch.png"})", "-o out.mp4", 3, {"nosuch.png: no such file"}},
        {R"({"width": 160, "height": 90})", "-o out.png", 2, {"out.png is one picture and the film has more"}},
        {R"({"width": 160, "height": 90})", "-o out.mp4 --frames 250", 2, {"0 to 249"}},
        {R"({"width": 160, "height": 90})", "-o nosuch/out.mp4", 4, {"mkdir"}},
        {R"({"width": 160, "height": 90, "sourcePath": "photo.png"})",
         "-o photo.png --frames 1 -y",
         2,
         {"input itself"}},
    };
    for (const Case& c : cases) {
        std::ofstream(folder / "bad.json") << c.json;
        const Outcome outcome = Nifikral("menu menu_common bad.json " + std::string(c.arguments));
        EXPECT_EQ(outcome.exitCode, c.exitCode) << c.json << outcome.errors;
        EXPECT_EQ(std::size_t(std::count(outcome.errors.begin(), outcome.errors.end(), '\n')), c.lines.size())
            << outcome.errors;
        for (const char* const line : c.lines)
            EXPECT_NE(outcome.errors.find(line), std::string::npos) << line << "\nin\n" << outcome.errors;
        EXPECT_EQ(Files(), (std::set<std::string>{"bad.json", "clip.mkv", "menu.json", "photo.png"}));
    }
    EXPECT_EQ(Nifikral("menu menu_comon menu.json -o out.mp4").exitCode, 2);
    EXPECT_EQ(Nifikral("menu menu_common nosuch.json -o out.mp4").exitCode, 3);
}

TEST_F(Menu, TheExampleProjectRendersAtOnceAndIsNotOverwritten) {
    ASSERT_EQ(Nifikral("init menu_common example").exitCode, 0);
    const Outcome film = Nifikral("menu menu_common example/menu.json -o still.png --frames 40");
    EXPECT_EQ(film.exitCode, 0) << film.errors;
    EXPECT_EQ(film.errors, "");
    EXPECT_EQ(Probe("still.png", "stream=width,height"), "1280|720\n");

    std::ofstream(folder / "example/menu.json") << "mine";
    std::filesystem::remove(folder / "example/lake.png");
    const Outcome again = Nifikral("init menu_common example");
    EXPECT_EQ(again.exitCode, 4);
    EXPECT_EQ(ReadFile(folder / "example/menu.json"), "mine");
    EXPECT_FALSE(std::filesystem::exists(folder / "example/lake.png")) << "half an example was written";
    EXPECT_EQ(Nifikral("init menu_common example -y").exitCode, 0);
    EXPECT_NE(ReadFile(folder / "example/menu.json"), "mine");
}

}  // namespace
}  // namespace Nifikral
