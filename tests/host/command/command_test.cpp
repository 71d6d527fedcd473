#include "tests/host/command.h"

#include <algorithm>
#include <csignal>
#include <thread>

#include "host/run/effect_request.h"
#include "host/base/errors.h"

namespace Nifikral {
namespace {

struct BadInput {
    const char* arguments;
    int exitCode;
    std::vector<const char*> words;  ///< of the one line on stderr: the thing and the remedy
};

class BadInputs : public CommandTest {
 protected:
    void Expect(const std::vector<BadInput>& cases) {
        const std::set<std::string> before = Files();
        for (const BadInput& bad : cases) {
            const Outcome outcome = Nifikral(bad.arguments);
            EXPECT_EQ(outcome.exitCode, bad.exitCode) << bad.arguments << "\n" << outcome.errors;
            EXPECT_EQ(std::count(outcome.errors.begin(), outcome.errors.end(), '\n'), 1) << outcome.errors;
            for (const char* const word : bad.words)
                EXPECT_NE(outcome.errors.find(word), std::string::npos) << word << " in: " << outcome.errors;
            EXPECT_EQ(Files(), before) << bad.arguments;
        }
    }
    void MakeClip(const std::string& name) const {
        Ffmpeg("-f lavfi -i testsrc2=size=64x48:duration=2 -c:v ffv1 " + name);
    }
};

TEST_F(BadInputs, OfEffectsAndNumbersAreUsageErrors) {
    MakeClip("in.mkv");
    Expect({{"apply in.mkv out.mkv grey", 2, {"grey", "did you mean gray"}},
            {"apply in.mkv out.mkv Rotate", 2, {"did you mean rotate"}},
            {"apply in.mkv out.mkv rotate:radius=3", 2, {"rotate has no parameter", "radius", "nifikral info rotate"}},
            {"apply in.mkv out.mkv rotate:rotate_xx=3", 2, {"did you mean rotate_x"}},
            {"apply in.mkv out.mkv rotate:x=abc", 2, {"rotate_x", "\"abc\" is no number"}},
            {"apply in.mkv out.mkv rotate:x=3px", 2, {"\"3px\" is no number"}},
            {"apply in.mkv out.mkv rotate:x=1.5", 2, {"no whole number"}},
            {"apply in.mkv out.mkv rotate:scale=nan", 2, {"is no number"}},
            {"apply in.mkv out.mkv rotate:x=99999999999", 2, {"out of range"}},
            {"apply in.mkv out.mkv rotate:x", 2, {"name=value"}},
            {"apply in.mkv out.mkv rotate:x=@5:1,3:2", 2, {"ascend"}},
            {"apply in.mkv out.mkv simple_gauss_blur:count=-1", 2, {"blur_count=-1", "0 to 10000"}},
            {"apply nosuch.mkv out.mkv oilpainting:brushsize=3..1001", 2, {"brushsize=1001", "0 to 1000"}},
            {"apply nosuch.mkv out.mkv tilereflect:angle=181", 2, {"angle=181", "-180 to 180"}},
            {"apply in.mkv out.mkv tilereflect:size=0 -q", 2, {"tilereflect_size=0", "Invalid Param Value"}},
            {"apply in.mkv out.mkv gray --frames 50-60", 2, {"past the end", "0 to 49"}},
            {"apply in.mkv out.mkv gray --frames 9-3", 2, {"A-B"}},
            {"apply in.mkv out.mkv gray --format 99", 2, {"99", "yuv420p"}},
            {"apply in.mkv out.mkv gray --encoder nosuch", 2, {"nosuch"}},
            {"apply in.mkv out.mkv gray --threads 0", 2, {"threads"}},
            {"apply in.mkv out.nosuch gray", 2, {"extension", "-f"}},
            {"apply in.mkv out.png gray", 2, {"out_%06d.png", "--frames"}},
            {"apply in.mkv in.mkv gray -y", 2, {"input itself"}},
            {"apply in.mkv out.mkv menu_common", 2, {"film of its own", "nifikral menu menu_common"}},
            {"apply in.mkv", 2, {"--help"}},
            {"info nosuch", 2, {"nosuch"}}});
}

TEST_F(BadInputs, OfFilesNameTheFileAndTheRemedy) {
    MakeClip("in.mkv");
    Ffmpeg("-i in.mkv -c:v libx264 -movflags +faststart whole.mp4");
    const std::string whole = ReadFile(folder / "whole.mp4"), clip = ReadFile(folder / "in.mkv");
    std::ofstream(folder / "cut.mp4") << whole.substr(0, whole.size() * 2 / 3);
    std::ofstream(folder / "cut.mkv") << clip.substr(0, clip.size() * 2 / 3);
    std::ofstream(folder / "empty.mp4");
    std::ofstream(folder / "text.txt") << "not a picture\n";
    std::ofstream(folder / "there.mkv") << "precious";
    Expect({{"apply nosuch.mp4 out.mkv gray", 3, {"nosuch.mp4", "no such file"}},
            {"apply scratch out.mkv gray", 3, {"folder"}},
            {"apply empty.mp4 out.mkv gray", 3, {"empty.mp4 is empty"}},
            {"apply text.txt out.mkv gray", 3, {"text.txt"}},
            {"apply cut.mp4 out.mkv gray", 3, {"cut.mp4", "cut short", "--keep-going"}},
            {"apply cut.mkv out.mkv gray", 3, {"cut.mkv", "cut short", "--keep-going"}},
            {"apply in.mkv nosuch/out.mkv gray", 4, {"nosuch", "does not exist", "mkdir"}},
            {"apply in.mkv scratch gray -f nut", 4, {"folder"}},
            {"apply in.mkv there.mkv gray", 4, {"there.mkv exists", "-y"}}});
    EXPECT_EQ(ReadFile(folder / "there.mkv"), "precious");
    EXPECT_EQ(Nifikral("apply cut.mkv out.mkv gray --keep-going").exitCode, 0);
    EXPECT_EQ(Nifikral("apply in.mkv dry.mkv gray --dry-run").exitCode, 0);
    EXPECT_FALSE(Files().contains("dry.mkv"));
    EXPECT_EQ(Nifikral("apply in.mkv there.mkv gray -y").exitCode, 0);
    EXPECT_GT(ReadFile(folder / "there.mkv").size(), 1000u);
}

TEST_F(BadInputs, AFullDiskLeavesNoHalfFile) {
    MakeClip("in.mkv");
    const std::set<std::string> before = Files();
    const auto limitFileSize = [] {
        const rlimit limit{2000, 2000};
        setrlimit(RLIMIT_FSIZE, &limit);
    };
    for (const char* const output : {"out.mkv --encoder rawvideo", "out.nut", "out.mp4"}) {
        const Outcome outcome = Nifikral("apply in.mkv " + std::string(output) + " gray", limitFileSize);
        EXPECT_EQ(outcome.exitCode, 4) << output << outcome.errors;
        EXPECT_NE(outcome.errors.find("cannot be written"), std::string::npos) << outcome.errors;
        EXPECT_EQ(Files(), before) << output;
    }
}

TEST_F(BadInputs, AnInterruptLeavesNoHalfFile) {
    Ffmpeg("-f lavfi -i testsrc2=size=320x240:duration=2 -pix_fmt yuv420p in.y4m");
    const std::string clip = ReadFile(folder / "in.y4m");
    const std::set<std::string> before = Files();
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const pid_t child = Start({NIFIKRAL_PROGRAM, "apply", "-", "out.nut", "gray"}, ends[0], [&] { close(ends[1]); });
    close(ends[0]);
    // Less than the whole clip: the command has begun its output and waits for more.
    const std::size_t half = clip.size() / 2;
    ASSERT_EQ(write(ends[1], clip.data(), half), ssize_t(half));
    for (int i = 0; i < 500 && Files().size() == before.size(); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_GT(Files().size(), before.size()) << "no part file was begun";
    EXPECT_FALSE(Files().contains("out.nut"));
    kill(child, SIGINT);
    const Outcome outcome = Wait(child);
    close(ends[1]);
    EXPECT_EQ(outcome.exitCode, 130) << outcome.errors;
    EXPECT_EQ(Files(), before);
}

TEST(ParameterValueTest, MovesInStraightLinesBetweenKeyPoints) {
    const ParameterValue ramp("10..20", PropertyType::Int32), points("@2:1,4:2,10:-1", PropertyType::Real);
    EXPECT_EQ(ramp.At(0, 5), "10");
    EXPECT_EQ(ramp.At(1, 5), "13");  // 12.5 rounds away from zero
    EXPECT_EQ(ramp.At(4, 5), "20");
    EXPECT_EQ(ramp.At(0, 1), "10");
    EXPECT_EQ(points.At(0, 5), "1");
    EXPECT_EQ(points.At(3, 5), "1.5");
    EXPECT_EQ(points.At(8, 5), "0");
    EXPECT_EQ(points.At(99, 5), "-1");
    EXPECT_EQ(ParameterValue("0xFF8000", PropertyType::Int32).At(0, 1), "16744448");
}

TEST_F(BadInputs, WhatIsHardlyMeantIsDoneWithOneWarning) {
    MakeClip("in.mkv");
    const Outcome outcome = Nifikral("apply in.mkv out.mkv emboss:level=@0:21,5:22,9:3 --frames 0-9");
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(std::count(outcome.errors.begin(), outcome.errors.end(), '\n'), 1) << outcome.errors;
    EXPECT_NE(outcome.errors.find("emboss_level=21 lies outside the sensible range 0 to 20"), std::string::npos)
        << outcome.errors;
}

TEST_F(BadInputs, NoneInTheListings) {
    const Outcome list = Nifikral("list"), json = Nifikral("list --json"), info = Nifikral("info rotate");
    EXPECT_NE(list.output.find("aged_film"), std::string::npos);
    EXPECT_NE(json.output.find("\"name\": \"aged_film\""), std::string::npos);
    for (const char* const word : {"rotate_r (int32, default 0)", "rotate_scale (real", "pixels"})
        EXPECT_NE(info.output.find(word), std::string::npos) << info.output;
}

}  // namespace
}  // namespace Nifikral
