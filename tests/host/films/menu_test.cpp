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

TEST_F(Menu, ADryRunReportsFaultsAndMakesNothing) {
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
        {R"({"width": 160, "height": 90, "loopStart": 4})",
         "-o out.mp4 --length 2",
         2,
         {"loopStart: lies past the end of the film; give less, or 0"}},
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

TEST_F(Menu, TheEndOfALoopLeadsToItsBeginning) {
    WriteProject();
    const std::string menu = "menu menu_common menu.json --encoder ffv1 -o ";
    ASSERT_EQ(Nifikral(menu + "plain.mkv").exitCode, 0);
    std::string project = ReadFile(folder / "menu.json");
    std::ofstream(folder / "menu.json") << project.replace(0, 1, "{\"loopStart\": 0.4, ");
    ASSERT_EQ(Nifikral(menu + "whole.mkv").exitCode, 0);
    const std::string plain = RawPictures("plain.mkv", "yuv420p"), whole = RawPictures("whole.mkv", "yuv420p");
    constexpr std::size_t size = 160 * 90 * 3 / 2;
    ASSERT_EQ(whole.size(), 25 * size);
    // Seven frames, half of the loop, dissolve into those before it.
    EXPECT_EQ(whole.substr(0, 18 * size), plain.substr(0, 18 * size));
    EXPECT_EQ(whole.substr(24 * size), whole.substr(9 * size, size)) << "the seam jumps";
    for (std::size_t i = 20 * size; i < 21 * size; ++i) {
        const int end = std::uint8_t(plain[i]), begin = std::uint8_t(plain[i - 15 * size]);
        ASSERT_NEAR(double(std::uint8_t(whole[i])), end + (begin - end) * 3 / 7.0, 0.51);
    }
    ASSERT_EQ(Nifikral(menu + "part.mkv --frames 19-22").exitCode, 0);
    EXPECT_EQ(RawPictures("part.mkv", "yuv420p"), whole.substr(19 * size, 4 * size));
    ASSERT_EQ(Nifikral(menu + "loop.mkv --loop-only").exitCode, 0);
    EXPECT_EQ(RawPictures("loop.mkv", "yuv420p"), whole.substr(10 * size));
    EXPECT_NE(Nifikral(menu + "dry.mkv --dry-run").output.find("repeats from frame 10 (0.4 s)"), std::string::npos);
    EXPECT_EQ(Nifikral(menu + "long.mkv --length 0.3").exitCode, 2) << "the loop begins after the end";
    EXPECT_EQ(Nifikral("menu menu_memories example.json -o a.mkv --loop-only --frames 3").exitCode, 2);
}

TEST_F(Menu, HasAsManyPagesAsItsPicturesNeed) {
    const auto write = [&](const char* file, const std::vector<std::string>& colours, const std::string& more) {
        std::string list;
        for (const std::string& colour : colours) {
            if (!std::filesystem::exists(folder / (colour + ".png")))
                Ffmpeg("-f lavfi -i color=" + colour + ":size=40x30 -frames:v 1 " + colour + ".png");
            list += (list.empty() ? "\"" : ", \"") + colour + ".png\"";
        }
        std::ofstream(folder / file) << R"({"width": 160, "height": 90, "duration": 0.08, "additionSourcePaths": [)" +
                                            list + "]" + more + "}";
    };
    const std::string text = R"(, "textInfos": [{"text": "{page} of {pages}", "size": 20, "box": [9, 1]}])";
    write("all.json", {"red", "lime", "blue", "white", "gray"}, R"(, "perPage": 2)" + text);
    const std::string menu = "menu submenu_common all.json --encoder ffv1 ";
    const Outcome one = Nifikral(menu + "-o menu.mkv");
    EXPECT_EQ(one.exitCode, 2);
    EXPECT_EQ(one.errors,
              "nifikral: error: all.json has 3 pages; make all of them with -o menu_%d.mp4, or one with --page N "
              "(\"perPage\" in the project sets how many pictures a page shows)\n");
    ASSERT_EQ(Nifikral(menu + "-o menu_%d.mkv").exitCode, 0);
    ASSERT_EQ(Nifikral(menu + "-o second.mkv --page 2").exitCode, 0);
    write("second.json", {"blue", "white"}, R"(, "textInfos": [{"text": "2 of 3", "size": 20, "box": [9, 1]}])");
    ASSERT_EQ(Nifikral("menu submenu_common second.json --encoder ffv1 -o expected.mkv").exitCode, 0);
    EXPECT_EQ(RawPictures("menu_2.mkv", "yuv420p"), RawPictures("expected.mkv", "yuv420p"));
    EXPECT_EQ(RawPictures("second.mkv", "yuv420p"), RawPictures("expected.mkv", "yuv420p"));
    EXPECT_TRUE(Files().contains("menu_1.mkv") && Files().contains("menu_3.mkv") && !Files().contains("menu_4.mkv"));
    EXPECT_EQ(Nifikral(menu + "-o other.mkv --page 4").exitCode, 2);
    EXPECT_EQ(Nifikral("menu submenu_common second.json -o other.mkv --loop-only").exitCode, 2);
    EXPECT_EQ(Nifikral("plan " + menu + "-o other_%d.mkv").exitCode, 2);

    write("many.json", std::vector<std::string>(13, "red"), "");
    EXPECT_EQ(Nifikral("menu submenu_common many.json -o many.mkv").exitCode, 2) << "slivers of pictures";
    EXPECT_EQ(Nifikral("menu menu_push many.json -o many.mkv").exitCode, 0) << "one picture after the other";
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

TEST_F(Menu, TheExampleShowsPicturesAndATitleOfOnesOwn) {
    std::filesystem::create_directory(folder / "own");
    Ffmpeg("-f lavfi -i color=red:size=160x90 -frames:v 1 own/a.png");
    Ffmpeg("-f lavfi -i color=lime:size=60x90 -frames:v 1 own/b;c.png");
    std::ofstream(folder / "own/notes.txt") << "none of its business";
    constexpr int width = 1280, height = 720;
    const auto make = [&](const std::string& menu, const std::string& title, const std::vector<std::string>& pictures) {
        std::vector<std::string> words = {NIFIKRAL_PROGRAM, "init", menu,        "deep/example", "-y",
                                          "--title",        title,  "--pictures"};
        words.insert(words.end(), pictures.begin(), pictures.end());
        const Outcome outcome = Wait(Start(words));
        EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
        const Outcome still = Nifikral("menu " + menu + " deep/example/menu.json -o still.png -y --page 1 --frames 90");
        EXPECT_EQ(still.exitCode, 0) << still.errors;
        return RawPictures("still.png", "rgb24");
    };
    struct Extent {
        int left = width, top = height, right = -1, bottom = -1;
    };
    const auto extentOf = [&](const std::function<bool(std::size_t)>& isPart) {
        Extent extent;
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                if (isPart(std::size_t(y * width + x) * 3))
                    extent = {std::min(extent.left, x), std::min(extent.top, y), std::max(extent.right, x + 1),
                              std::max(extent.bottom, y + 1)};
        return extent;
    };
    const std::string still = make("menu_common", R"("Hi" & <you>)", {"own"});
    const auto coloured = [&](int most) {
        return extentOf([&, most](std::size_t at) {
            for (int c = 0; c < 3; ++c)
                if (std::abs(std::uint8_t(still[at + std::size_t(c)]) - 255 * (c == most)) > 30) return false;
            return true;
        });
    };
    const Extent red = coloured(0), lime = coloured(1);
    EXPECT_NEAR(double(red.right - red.left) / (red.bottom - red.top), 16.0 / 9, 0.05) << "it has lost its shape";
    EXPECT_NEAR(double(lime.right - lime.left) / (lime.bottom - lime.top), 2.0 / 3, 0.05);
    EXPECT_GT(red.bottom - red.top, 200) << "it is not as large as it could be";
    EXPECT_GE(lime.left, red.right);

    const std::string other =
        make("menu_common", "A title that is much too long for a single line above all of these pictures", {"own"});
    const Extent title = extentOf([&](std::size_t at) { return still.substr(at, 3) != other.substr(at, 3); });
    EXPECT_GT(title.right - title.left, 600);
    EXPECT_LE(title.right, width - 48);
    EXPECT_LE(title.bottom, red.top) << "it runs into the pictures";
    std::set<std::string> written;
    for (const auto& entry : std::filesystem::directory_iterator(folder / "deep/example"))
        written.insert(entry.path().filename().string());
    EXPECT_EQ(written, (std::set<std::string>{"background.png", "menu.json"}));

    std::filesystem::rename(folder / "own", folder / "deep/own");
    EXPECT_NE(make("submenu_common", "Own", {"deep/own"}), make("submenu_common", "Own", {"deep/own/a.png"}));
    std::filesystem::create_directory(folder / "moved");
    std::filesystem::rename(folder / "deep", folder / "moved/deep");
    EXPECT_EQ(Nifikral("menu submenu_common moved/deep/example/menu.json -o moved.png --frames 9").exitCode, 0);

    std::ofstream list(folder / "moved/list");
    for (int i = 0; i < 21; ++i) list << "deep/own/a.png\n";
    list.close();
    EXPECT_EQ(Nifikral("init menu_common pages --pictures moved/deep/own lost.png").exitCode, 3);
    EXPECT_EQ(Nifikral("init menu_common pages --title A;B").errors,
              "nifikral: error: --title holds ';', which menus cannot carry; choose another text\n");
    EXPECT_FALSE(Files().contains("pages"));
    const Outcome many = Nifikral("init menu_common pages --pictures @moved/list");
    EXPECT_NE(many.errors.find("make the films with\n  nifikral menu menu_common pages/menu.json -o menu_%d.mp4"),
              std::string::npos)
        << many.errors;
    EXPECT_EQ(Nifikral("menu menu_common pages/menu.json -o page_%d.mkv --frames 2").exitCode, 0);
    EXPECT_TRUE(Files().contains("page_2.mkv") && !Files().contains("page_3.mkv"));
}

}  // namespace
}  // namespace Nifikral
