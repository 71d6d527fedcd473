#include "tests/host/command.h"

namespace Nifikral {
namespace {

class Confinement : public CommandTest {
 protected:
    void SetUp() override {
        std::filesystem::create_directories(folder / "given");
        std::filesystem::create_directories(folder / "secret");
        std::filesystem::create_directories(folder / "made");
        for (const char* const name : {"given/one.png", "given/two.png", "secret/three.png"})
            Ffmpeg("-f lavfi -i testsrc2=size=64x48:duration=1 -frames:v 1 " + std::string(name));
        Ffmpeg("-f lavfi -i testsrc2=size=64x48:duration=1 -c:v mpeg2video -bf 0 secret/film.ts");
        if (const Outcome tried = Nifikral("apply given/one.png scratch/tried.png gray --sandbox");
            tried.exitCode == 1) {
            EXPECT_NE(tried.errors.find("Landlock"), std::string::npos) << tried.errors;
            GTEST_SKIP() << tried.errors;
        }
    }
    void Write(const std::string& name, const std::string& text) const { std::ofstream(folder / name) << text; }
};

TEST_F(Confinement, LeavesResultsAsTheyAre) {
    Write("given/list", "one.png\ntwo.png | 0.2 | Two\n");
    Write("given/menu.json",
          R"({"width": 64, "height": 48, "duration": 1, "additionSourcePaths": ["one.png", "two.png"],
              "additionSourceSizes": [[20, 20], [20, 20]], "textInfos": [{"text": "Words", "size": 12, "box": [2, 2]}]})");
    for (const std::string command :
         {"apply given/one.png OUT.png gray", "apply given/one.png given/two.png -o OUT/ gray",
          "title Words given/one.png OUT.avi --seconds 0.2 --encoder ffv1",
          "slideshow @given/list -o OUT.avi --seconds 0.2 --transition-seconds 0.1 --size 64x48 --encoder ffv1",
          "menu menu_common given/menu.json -o OUT.avi --encoder ffv1"}) {
        std::string made[2];
        for (const bool confined : {false, true}) {
            std::string words = command + (confined ? " --sandbox" : "");
            words.replace(words.find("OUT"), 3, "made/out");
            const Outcome outcome = Nifikral(words);
            EXPECT_EQ(outcome.exitCode, 0) << words << "\n" << outcome.errors;
            for (const auto& entry : std::filesystem::recursive_directory_iterator(folder / "made"))
                if (entry.is_regular_file()) made[confined] += ReadFile(entry.path());
            for (const auto& entry : std::filesystem::directory_iterator(folder / "made"))
                std::filesystem::remove_all(entry.path());
        }
        EXPECT_FALSE(made[0].empty()) << command;
        EXPECT_TRUE(made[0] == made[1]) << command;
    }
}

// What a playlist, a list or a project names is not the user's choice.
TEST_F(Confinement, ReachesOnlyWhatTheCommandLineNames) {
    Write("given/film.m3u8", "#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXTINF:1,\n../secret/film.ts\n#EXT-X-ENDLIST\n");
    Write("given/list", "one.png\n../secret/three.png\n");
    for (const std::string command :
         {"apply given/film.m3u8 made/film.mkv gray", "slideshow @given/list -o made/show.mkv --strict --size 64x48"}) {
        const Outcome confined = Nifikral(command + " --sandbox");
        EXPECT_EQ(confined.exitCode, 3) << command << "\n" << confined.errors;
        EXPECT_NE(confined.errors.find("--sandbox"), std::string::npos) << confined.errors;
        const Outcome free = Nifikral(command);
        EXPECT_EQ(free.exitCode, 0) << command << "\n" << free.errors;
    }
}

TEST_F(Confinement, HoldsForDiscsAndTheProgramsThatMakeThem) {
    const auto project = [](const std::string& pictures) {
        return R"({"version": 1, "title": "Disc", "profile": "pal-4:3", "menus": {"seconds": 2, "fade": 0},
                   "films": [{"title": "Slides", "pictureSeconds": 0.2, "pictures": [)" +
               pictures + "]}]}";
    };
    Write("given/own.json", project(R"("one.png", "two.png")"));
    Write("given/other.json", project(R"("../secret/three.png")"));
    const Outcome made = Nifikral("disc given/own.json -o made/disc.iso -q --sandbox");
    EXPECT_EQ(made.exitCode, 0) << made.errors;
    EXPECT_GT(ReadFile(folder / "made/disc.iso").size(), 300'000u);
    const Outcome refused = Nifikral("disc given/other.json -o made/other.iso --dry-run --sandbox");
    EXPECT_EQ(refused.exitCode, 3) << refused.errors;
    EXPECT_NE(refused.errors.find("--sandbox"), std::string::npos) << refused.errors;
    EXPECT_EQ(Nifikral("disc given/other.json -o made/other.iso --dry-run").exitCode, 0);
    const Outcome planned = Nifikral("plan disc given/own.json -o made/disc.iso --sandbox");
    EXPECT_EQ(planned.exitCode, 2);
    EXPECT_NE(planned.errors.find("in one run"), std::string::npos) << planned.errors;
}

}  // namespace
}  // namespace Nifikral
