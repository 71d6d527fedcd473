#include <nlohmann/json.hpp>

#include "host/run/chunks.h"
#include "tests/host/command.h"

namespace Nifikral {
namespace {

class ChunksTest : public CommandTest {
 protected:
    void MakeClip(const std::string& name) const {
        // Frames at uneven times, and sound.
        Ffmpeg(
            "-f lavfi -i testsrc2=s=48x32:d=1.6:r=25 -f lavfi -i sine=d=1.6 -vf select='gt(mod(n\\,5)\\,1)' "
            "-fps_mode vfr -c:v ffv1 -c:a aac -f matroska clip");
        std::filesystem::rename(folder / "clip", folder / name);
    }

    Outcome Shell(const std::string& script) const { return Wait(Start({"sh", "-ec", script})); }

    // Makes a run in chunks by the lines that are planned for it.
    void MakeInChunks(const std::string& run) const {
        const Outcome plan = Nifikral("plan --chunks 3 " + run);
        ASSERT_EQ(plan.exitCode, 0) << plan.errors;
        ASSERT_EQ(std::count(plan.output.begin(), plan.output.end(), '\n'), 4) << plan.output;
        const Outcome made = Shell(plan.output);
        ASSERT_EQ(made.exitCode, 0) << made.errors;
    }
};

struct Run {
    const char *name, *words;  // OUT stands for the output
};
void PrintTo(const Run& value, std::ostream* out) { *out << value.name; }

class RunInChunks : public ChunksTest, public ::testing::WithParamInterface<Run> {};

TEST_P(RunInChunks, IsTheWholeRun) {
    MakeClip("clip.mkv");
    Ffmpeg("-f lavfi -i testsrc2=s=48x32 -frames:v 1 photo.png");
    const auto with = [&](const std::string& output) {
        std::string words = GetParam().words;
        return words.replace(words.find("OUT"), 3, output) + " --encoder ffv1";
    };
    const Outcome whole = Nifikral(with("whole.mkv"));
    ASSERT_EQ(whole.exitCode, 0) << whole.errors;
    MakeInChunks(with("joined.mkv"));
    const auto contents = [&](const std::string& file, const std::string& map) {
        return Ffmpeg("-i " + file + " -map " + map + " -f framemd5 -");
    };
    EXPECT_EQ(contents("joined.mkv", "0:v -fps_mode passthrough"), contents("whole.mkv", "0:v -fps_mode passthrough"));
    const std::string streams = Probe("whole.mkv", "format=nb_streams");
    ASSERT_EQ(Probe("joined.mkv", "format=nb_streams"), streams);
    if (streams == "2\n") {
        EXPECT_EQ(contents("joined.mkv", "0:a -c copy"), contents("whole.mkv", "0:a -c copy"));
    }
}

INSTANTIATE_TEST_SUITE_P(
    , RunInChunks,
    ::testing::Values(
        Run{"WithTimeAndHistory", "apply clip.mkv OUT fadein addnoise mirage brightness_contrast:contrast=0..50"},
        Run{"OfARange", "apply clip.mkv OUT fadeout --frames 3-20"},
        Run{"ScaledAtAnotherRate", "apply clip.mkv OUT mirage --scale 32 --rate 40 --frames 2-50"},
        Run{"TitleOverAPicture", "title Hi photo.png OUT --seconds 0.8 --begin 0.2"},
        Run{"SlideshowWithSound", "slideshow photo.png photo.png -o OUT --size 32x18 --audio clip.mkv --length audio"}),
    [](const auto& info) { return info.param.name; });

TEST_F(ChunksTest, PicturesThatAreStoredOutOfOrderKeepTheirTimes) {
    MakeClip("clip.mkv");
    ASSERT_EQ(Nifikral("apply clip.mkv whole.mp4 gray").exitCode, 0);
    MakeInChunks("apply clip.mkv joined.mp4 gray");
    // Which pictures are stored out of order is the encoder's choice, when they are shown is not.
    const auto shown = [&](const std::string& file) {
        const std::vector<std::string> times = Words(Probe(file, "packet=pts"));
        EXPECT_FALSE(std::is_sorted(times.begin(), times.end(), [](const std::string& a, const std::string& b) {
            return std::stoll(a) < std::stoll(b);
        }));
        return std::set<std::string>(times.begin(), times.end());
    };
    EXPECT_EQ(shown("joined.mp4"), shown("whole.mp4"));
    EXPECT_EQ(Probe("joined.mp4", "stream=nb_frames,duration"), Probe("whole.mp4", "stream=nb_frames,duration"));
    EXPECT_EQ(Probe("joined.mp4", "stream=has_b_frames"), Probe("whole.mp4", "stream=has_b_frames"));
}

TEST_F(ChunksTest, OddNamesSurviveEveryFormOfAPlan) {
    const std::string input = "it's \"5\" $HOME `x` \\ #1 %.mkv";
    MakeClip(input);
    std::ofstream(folder / "sbatch")
        << "#!/bin/sh\n# Does at once what is queued.\nqueued=$(cat)\n"
           "for SLURM_ARRAY_TASK_ID in 0 1 2; do export SLURM_ARRAY_TASK_ID\n"
           "  printf '%s\\n' \"$queued\" | sh >&2 || exit; case $* in *array*) ;; *) break ;; esac\n"
           "done\necho 7\n";
    std::filesystem::permissions(folder / "sbatch", std::filesystem::perms::owner_all);
    std::string expected;
    for (const auto& [form, run] : {std::pair("shell", "sh -e plan"), std::pair("make", "make -s -j2 -f plan"),
                                    std::pair("slurm", "PATH=$PWD:$PATH sh plan")}) {
        const std::string output = std::string("out $$ ") + form + ".mkv";
        std::vector<std::string> words = Words(NIFIKRAL_PROGRAM " plan --chunks 3 --format " + std::string(form));
        words.insert(words.end(), {"apply", input, output, "gray"});
        const Outcome plan = Wait(Start(words));
        ASSERT_EQ(plan.exitCode, 0) << plan.errors;
        std::ofstream(folder / "plan") << plan.output;
        const Outcome made = Shell(run);
        ASSERT_EQ(made.exitCode, 0) << form << ": " << made.errors;
        std::filesystem::rename(folder / output, folder / "made.mkv");
        const std::string pictures = RawPictures("made.mkv", "yuv420p");
        EXPECT_EQ(pictures.size(), 24u * 48 * 32 * 3 / 2);
        EXPECT_EQ(expected.empty() ? pictures : expected, pictures) << form;
        expected = pictures;
    }
}

TEST_F(ChunksTest, JsonHasTheWordsOfEachCommand) {
    MakeClip("clip.mkv");
    const Outcome plan = Nifikral("plan --chunks 5 --format json apply clip.mkv out_%d.png gray --frames 1-3");
    const nlohmann::json json = nlohmann::json::parse(plan.output);
    ASSERT_EQ(json["chunks"].size(), 3u);
    EXPECT_EQ(json["chunks"][2]["first"], 3);
    EXPECT_TRUE(json["join"].is_null());
    for (const nlohmann::json& chunk : json["chunks"])
        ASSERT_EQ(Wait(Start(chunk["command"].get<std::vector<std::string>>())).exitCode, 0);
    EXPECT_EQ(Files(), (std::set<std::string>{"clip.mkv", "out_1.png", "out_2.png", "out_3.png"}));
}

TEST_F(ChunksTest, GoAwayWhenTheyAreJoinedAndThePlanMayRunAgain) {
    MakeClip("clip.mkv");
    MakeInChunks("apply clip.mkv other.mkv gray");
    const Outcome plan = Nifikral("plan --chunks 3 apply clip.mkv out.mkv gray");
    ASSERT_EQ(Shell(plan.output).exitCode, 0);
    EXPECT_EQ(Files(), (std::set<std::string>{"clip.mkv", "other.mkv", "out.mkv"}));
    const auto made = std::filesystem::last_write_time(folder / "out.mkv");
    const Outcome again = Shell(plan.output);
    EXPECT_EQ(again.exitCode, 0) << again.errors;
    EXPECT_EQ(std::filesystem::last_write_time(folder / "out.mkv"), made);
    EXPECT_EQ(Files().size(), 3u);
    // What is not one of the chunks stays.
    ASSERT_EQ(Nifikral("apply clip.mkv out.mkv gray -y --chunk 0-23").exitCode, 0);
    std::ofstream(folder / "out.mkv.chunks/notes.txt") << "mine";
    ASSERT_EQ(Nifikral("concat --last 23 apply clip.mkv out.mkv gray -y").exitCode, 0);
    EXPECT_EQ(ReadFile(folder / "out.mkv.chunks/notes.txt"), "mine");
    EXPECT_FALSE(std::filesystem::exists(folder / "out.mkv.chunks/000000-000023.nut"));
}

TEST_F(ChunksTest, AChunkThatIsMissingIncompleteOrForeignIsNamed) {
    MakeClip("clip.mkv");
    for (const char* const chunk : {"0-7", "8-15", "16-23"})
        ASSERT_EQ(Nifikral("apply clip.mkv out.mkv gray --chunk " + std::string(chunk)).exitCode, 0);
    const std::filesystem::path middle = folder / "out.mkv.chunks/000008-000015.nut";
    const auto refusal = [&](const std::string& words) {
        const Outcome outcome = Nifikral("concat --last 23 " + words);
        EXPECT_EQ(outcome.exitCode, 3) << outcome.errors;
        EXPECT_EQ(Files().count("again.mkv"), 0u);
        return outcome.errors;
    };
    EXPECT_NE(refusal("apply clip.mkv out.mkv invert -y").find("another command line"), std::string::npos);
    const std::string bytes = ReadFile(middle);
    std::filesystem::resize_file(middle, bytes.size() / 2);
    EXPECT_NE(refusal("apply clip.mkv out.mkv gray -y").find("out.mkv.chunks/000008-000015.nut has "),
              std::string::npos);
    std::filesystem::remove(middle);
    EXPECT_NE(refusal("apply clip.mkv out.mkv gray -y").find("frames 8-15 of out.mkv is missing"), std::string::npos);
    ASSERT_EQ(Nifikral("apply clip.mkv out.mkv gray --chunk 7-15").exitCode, 0);
    EXPECT_NE(refusal("apply clip.mkv out.mkv gray -y").find("another plan"), std::string::npos);
}

TEST_F(ChunksTest, WhatIsCompleteIsSkippedAndWhatIsNotIsMadeAnew) {
    MakeClip("clip.mkv");
    for (const auto& [output, run] :
         {std::pair("out.mkv", "apply clip.mkv out.mkv gray --encoder ffv1 --skip-existing"),
          std::pair("part.mkv.chunks/000005-000019.nut",
                    "apply clip.mkv part.mkv gray --encoder ffv1 --skip-existing --chunk 5-19")}) {
        ASSERT_EQ(Nifikral(run).exitCode, 0);
        const std::string bytes = ReadFile(folder / output);
        const auto made = std::filesystem::last_write_time(folder / output);
        ASSERT_EQ(Nifikral(run).exitCode, 0);
        EXPECT_EQ(std::filesystem::last_write_time(folder / output), made) << "made again";
        std::filesystem::resize_file(folder / output, bytes.size() / 2);
        ASSERT_EQ(Nifikral(run).exitCode, 0);
        EXPECT_EQ(ReadFile(folder / output).size(), bytes.size());
    }
    const std::string pictures = "apply clip.mkv out_%02d.png gray --skip-existing --frames 0-3";
    ASSERT_EQ(Nifikral(pictures).exitCode, 0);
    std::filesystem::resize_file(folder / "out_02.png", 0);
    ASSERT_EQ(Nifikral(pictures).exitCode, 0);
    EXPECT_GT(ReadFile(folder / "out_02.png").size(), 0u);
}

TEST_F(ChunksTest, ProgressComesAsALineOfJsonForEachFrame) {
    MakeClip("clip.mkv");
    const Outcome outcome = Nifikral("apply clip.mkv out.mkv gray --progress json --frames 2-5");
    std::istringstream lines(outcome.errors);
    int count = 0;
    for (std::string line; std::getline(lines, line);) {
        const nlohmann::json json = nlohmann::json::parse(line);
        EXPECT_EQ(json["frame"], ++count);
        EXPECT_EQ(json["frames"], 4);
        EXPECT_GT(json["fps"], 0.0);
        EXPECT_GE(json["secondsLeft"], 0.0);
    }
    EXPECT_EQ(count, 4);
}

TEST(RunMark, LeavesOutWhatLeavesTheResultAsItIs) {
    const std::string mark = RunMark({"apply", "in", "out", "gray"});
    EXPECT_EQ(RunMark({"apply", "--chunk", "3-4", "--threads=2", "in", "out", "gray", "-q", "--skip-existing"}), mark);
    EXPECT_NE(RunMark({"apply", "in", "out", "invert"}), mark);
    EXPECT_NE(RunMark({"apply", "in", "outgray"}), mark);
}

}  // namespace
}  // namespace Nifikral
