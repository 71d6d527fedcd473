#include "tests/host/command.h"

#include <algorithm>
#include <csignal>
#include <thread>

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
            {"apply in.mkv out.mkv tilereflect:size=0 -q", 2, {"tilereflect_size=0", "use 1 or more"}},
            {"apply in.mkv out.mkv gray --frames 50-60", 2, {"past the end", "0 to 49"}},
            {"apply in.mkv out.mkv gray --frames 9-3", 2, {"A-B"}},
            {"apply in.mkv out.mkv gray --format 99", 2, {"99", "yuv420p"}},
            {"apply in.mkv out.mkv gray --encoder nosuch", 2, {"nosuch"}},
            {"apply in.mkv out.mkv gray --threads 0", 2, {"threads"}},
            {"apply in.mkv out.nosuch gray", 2, {"extension", "-f"}},
            {"apply in.mkv out.png gray", 2, {"out_%06d.png", "--frames"}},
            {"apply in.mkv in.mkv gray -y", 2, {"input itself"}},
            {"apply in.mkv out.mkv menu_common", 2, {"no effect on pictures", "nifikral menu menu_common"}},
            {"slideshow in.mkv -o out.mkv --transitions dissolve", 2, {"\"dissolve\"", "crossfade, push, wipe"}},
            {"slideshow in.mkv -o out.mkv --motion none,zomin", 2, {"\"zomin\"", "did you mean zoomin?"}},
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

class Interrupts : public BadInputs {
 protected:
    // A run whose input never comes to its end. Returns when `begun` holds.
    void Begin(const std::string& arguments, const std::function<bool()>& begun) {
        Ffmpeg("-f lavfi -i testsrc2=size=320x240:duration=2 -pix_fmt yuv420p in.y4m");
        const std::string clip = ReadFile(folder / "in.y4m");
        int ends[2];
        ASSERT_EQ(pipe(ends), 0);
        m_child = Start(Words(NIFIKRAL_PROGRAM " apply - " + arguments), ends[0], [&] { close(ends[1]); });
        close(ends[0]);
        m_input = ends[1];
        ASSERT_EQ(write(m_input, clip.data(), clip.size() / 2), ssize_t(clip.size() / 2));
        for (int i = 0; i < 500 && !begun(); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(20));
        EXPECT_TRUE(begun());
    }
    Outcome End(int signal) {
        kill(m_child, signal);
        const Outcome outcome = Wait(m_child);
        close(m_input);
        return outcome;
    }
    std::size_t Parts() const {
        const std::set<std::string> files = Files();
        return std::size_t(
            std::count_if(files.begin(), files.end(), [](const std::string& name) { return name.ends_with(".part"); }));
    }

 private:
    pid_t m_child = 0;
    int m_input = -1;
};

TEST_F(Interrupts, LeaveNoHalfFile) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        Begin("out.nut gray", [&] { return Parts() == 1; });
        EXPECT_FALSE(Files().contains("out.nut"));
        const Outcome outcome = End(signal);
        EXPECT_EQ(outcome.exitCode, 130) << signal << outcome.errors;
        EXPECT_EQ(outcome.errors, "nifikral: error: interrupted; no output was kept\n");
        EXPECT_EQ(Files(), std::set<std::string>{"in.y4m"}) << signal;
    }
}

TEST_F(Interrupts, SayWhichPicturesStay) {
    Begin("out_%02d.png gray --threads 1", [&] { return Files().contains("out_05.png"); });
    const Outcome outcome = End(SIGINT);
    const std::set<std::string> files = Files();
    EXPECT_NE(outcome.errors.find("the pictures up to " + *files.rbegin() + " stay (" +
                                  std::to_string(files.size() - 1) + " of them)"),
              std::string::npos)
        << outcome.errors;
}

TEST_F(Interrupts, OfAKilledRunAreClearedUpAndThoseOfALivingOneAreNot) {
    Begin("out.nut gray", [&] { return Parts() == 1; });
    EXPECT_EQ(Nifikral("apply in.y4m other.nut gray").exitCode, 0);
    EXPECT_EQ(Parts(), 1u) << "a living run's file is gone";
    End(SIGKILL);
    ASSERT_EQ(Parts(), 1u);
    std::ofstream(folder / "mine.part") << "no business of ours";
    EXPECT_EQ(Nifikral("apply in.y4m other.nut gray -y --dry-run").exitCode, 0);
    EXPECT_EQ(Parts(), 2u) << "a trial has changed something";
    EXPECT_EQ(Nifikral("apply in.y4m third.nut gray").exitCode, 0);
    EXPECT_EQ(Files(), (std::set<std::string>{"in.y4m", "mine.part", "other.nut", "third.nut"}));
}

TEST_F(BadInputs, AFullDiskOnStandardOutputIsAnError) {
    MakeClip("in.mkv");
    for (const std::string arguments :
         {"list", "info rotate", "generate man", "--help", "help apply", "--version", "plan apply in.mkv out.mkv gray",
          "apply in.mkv out.mkv gray --dry-run", "apply in.mkv - gray"}) {
        const Outcome outcome = Wait(Start({"sh", "-c", NIFIKRAL_PROGRAM " " + arguments + " > /dev/full"}));
        EXPECT_EQ(outcome.exitCode, 4) << arguments;
        EXPECT_NE(outcome.errors.find("stdout cannot be written (No space left on device)"), std::string::npos)
            << arguments << outcome.errors;
        EXPECT_EQ(std::count(outcome.errors.begin(), outcome.errors.end(), '\n'), 1) << outcome.errors;
    }
    // A reader that closes the pipe early is not a failure.
    EXPECT_EQ(Wait(Start({"sh", "-c", NIFIKRAL_PROGRAM " generate schema | true"})).errors, "");
}

TEST_F(BadInputs, AnOutputThatIsALinkIsWrittenWhereItPoints) {
    MakeClip("in.mkv");
    for (const char* const target : {"elsewhere", "missing"}) std::filesystem::create_directory(folder / target);
    std::ofstream(folder / "elsewhere/old.mkv") << "old";
    std::filesystem::create_symlink("elsewhere/old.mkv", folder / "link.mkv");
    std::filesystem::create_symlink("link.mkv", folder / "far.mkv");
    std::filesystem::create_symlink("missing/new.mkv", folder / "dangling.mkv");
    EXPECT_EQ(Nifikral("apply in.mkv far.mkv gray").exitCode, 4);
    EXPECT_EQ(ReadFile(folder / "elsewhere/old.mkv"), "old");
    EXPECT_EQ(Nifikral("apply in.mkv far.mkv gray -y").exitCode, 0);
    EXPECT_EQ(Nifikral("apply in.mkv dangling.mkv gray").exitCode, 0);
    for (const char* const link : {"far.mkv", "link.mkv", "dangling.mkv"})
        EXPECT_TRUE(std::filesystem::is_symlink(folder / link)) << link;
    EXPECT_GT(std::filesystem::file_size(folder / "elsewhere/old.mkv"), 1000u);
    EXPECT_TRUE(std::filesystem::is_regular_file(folder / "missing/new.mkv"));
}

TEST_F(BadInputs, OfCommandsAndOptionsNameWhatMayBeMeant) {
    Expect({{"aply a b gray", 2, {"no command \"aply\"", "did you mean apply?"}},
            {"help aply", 2, {"did you mean apply?"}},
            {"plan slideshw a -o b", 2, {"did you mean slideshow?"}},
            {"apply a b gray --treads 2", 2, {"apply has no option --treads", "did you mean --threads?"}},
            {"slideshow a -o b.mp4 --rate x", 2, {"nifikral: error: --rate x is no frame rate"}}});
}

TEST_F(BadInputs, HelpFitsAScreenAndLeadsOn) {
    const std::string overview = Nifikral("--help").output;
    EXPECT_EQ(Nifikral("help").output, overview);
    const auto lines = std::count(overview.begin(), overview.end(), '\n');
    EXPECT_TRUE(lines >= 24 && lines <= 40) << lines;
    EXPECT_LT(overview.find("apply"), overview.find("concat"));
    EXPECT_EQ(Nifikral("help apply").output, Nifikral("apply --help").output);
    for (const std::string command : {"", "apply", "title", "slideshow", "menu", "plan"}) {
        std::istringstream page(Nifikral(command + " --help").output);
        for (std::string line; std::getline(page, line);) EXPECT_LE(line.size(), 80u) << command << ": " << line;
    }
}

TEST_F(BadInputs, UnlikelyRequestsAreCarriedOutWithOneWarning) {
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
    for (const char* const word : {"rotate_r (int32, default 0, started at 45%)", "rotate_scale (real", "pixels"})
        EXPECT_NE(info.output.find(word), std::string::npos) << info.output;
}

}  // namespace
}  // namespace Nifikral
