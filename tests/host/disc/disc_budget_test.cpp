#include "host/disc/disc_budget.h"

#include "host/base/errors.h"
#include "tests/host/command.h"

namespace Nifikral {
namespace {

DiscProject Project(double gigabytes = 4.7) {
    DiscProject project;
    project.profile = FindProfile("pal-16:9");
    project.capacity = (long long)(gigabytes * 1e9);
    project.films.resize(1);
    return project;
}
PlannedTitle Title(double seconds, int besideRate = 192) {
    PlannedTitle title;
    title.seconds = seconds;
    title.besideRate = besideRate;
    return title;
}
PlannedTitle Copied(long long bytes) {
    PlannedTitle title = Title(600);
    title.copied = true;
    title.bytes = bytes;
    return title;
}
std::string Refusal(const DiscProject& project, std::vector<PlannedTitle> titles) {
    DiscPlan plan;
    plan.titles = std::move(titles);
    Faults faults("disc.json");
    ShareSpace(plan, project, faults);
    try {
        faults.ThrowIfAny();
    } catch (const HostError& error) {
        EXPECT_EQ(error.Code(), ExitCode::Usage);
        return error.what();
    }
    return {};
}
DiscPlan Share(const DiscProject& project, std::vector<PlannedTitle> titles) {
    DiscPlan plan;
    plan.titles = std::move(titles);
    Faults faults("disc.json");
    ShareSpace(plan, project, faults);
    faults.ThrowIfAny();
    EXPECT_LE(plan.usedBytes, project.capacity);
    return plan;
}

TEST(DiscSpace, IsFilledByTheFilmsAtOneRate) {
    // 4.653 GB less 15.9 MB of menu; a kilobit takes 127.5 bytes; 192 for sound and 40 for the way through.
    DiscPlan plan = Share(Project(), {Title(7200)});
    EXPECT_EQ(plan.videoRate, 4810);
    EXPECT_GT(plan.usedBytes, 4'630'000'000);
    EXPECT_EQ(Share(Project(), {Title(3600, 576), Title(3600)}).videoRate, 4620);
    EXPECT_EQ(Share(Project(), {Title(60)}).videoRate, highestVideoRate);
    EXPECT_EQ(Share(Project(8.5), {Title(14400)}).videoRate, 4340);
    // What is copied takes its own space.
    plan = Share(Project(), {Copied(2'700'000'000), Title(3600)});
    EXPECT_EQ(plan.videoRate, 3980);
    plan = Share(Project(), {Copied(4'000'000'000)});
    EXPECT_EQ(plan.videoRate, 0);
}

TEST(DiscSpace, IsRefusedWhereTheFilmsDoNotFit) {
    const std::string full = Refusal(Project(), {Title(36000)});
    EXPECT_NE(full.find("films: take 5.67 GB at 1000 kbit/s, and the disc holds 4.70 GB; give \"gigabytes\": 8.5"),
              std::string::npos)
        << full;
    EXPECT_EQ(Refusal(Project(8.5), {Title(86400)}).find("\"gigabytes\""), std::string::npos);
    EXPECT_FALSE(Refusal(Project(), {Copied(4'690'000'000)}).empty());
    DiscProject fixed = Project();
    fixed.videoRate = 6000;
    EXPECT_NE(Refusal(fixed, {Title(7200)}).find("leave out \"videoRate\""), std::string::npos);
    EXPECT_EQ(Refusal(fixed, {Title(3600)}), "");
}

class DiscPlanned : public CommandTest {
 protected:
    DiscPlanned() {
        Ffmpeg(
            "-f lavfi -i testsrc2=size=128x72:rate=25:duration=2 -f lavfi -i sine=duration=2 -c:v mpeg2video good.mkv");
        Ffmpeg("-f lavfi -i testsrc2=size=32x72:rate=30:duration=1 -c:v mpeg2video silent.mkv");
    }
    void Write(const std::string& films, const std::string& more = "") const {
        std::ofstream(folder / "disc.json")
            << "{\"version\": 1, \"title\": \"Trip\", " + more + "\"films\": [" + films + "]}";
    }
};

TEST_F(DiscPlanned, IsPrintedAndNothingIsMade) {
    Write(R"({"title": "Lake", "path": "good.mkv", "chapters": [0, 1]}, {"title": "Quiet", "path": "silent.mkv"})");
    const auto files = Files();
    const Outcome outcome = Nifikral("disc disc.json -o trip.iso --dry-run");
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
    for (const char* const line :
         {"Trip: 2 titles, 0:00:03, pal-16:9, menu_common\n",
          "  1. Lake: 0:00:02, 128x72, 25 frames a second, 1 sound track, 2 chapters\n",
          "  2. Quiet: 0:00:01, 32x72, 30 frames a second, no sound\n", "Video: 8000 kbit/s\n",
          "Space: 0.03 GB of 4.70 GB, 0.03 GB of that for about 2 menu pages\n", "Time: about 0:0"})
        EXPECT_NE(outcome.output.find(line), std::string::npos) << line << "in\n" << outcome.output;
    EXPECT_NE(outcome.errors.find("Quiet: has no sound; it gets a silent track"), std::string::npos) << outcome.errors;
    EXPECT_NE(outcome.errors.find("Quiet: is shaped 0.44 to 1; it gets wide black borders"), std::string::npos)
        << outcome.errors;
    EXPECT_EQ(Files(), files);
    const Outcome web = Nifikral("disc disc.json -o web/ --format web --dry-run");
    EXPECT_EQ(web.exitCode, 0) << web.errors;
    EXPECT_EQ(web.output.find("kbit/s"), std::string::npos) << web.output;
    std::filesystem::create_directory(folder / "in");
    std::filesystem::copy_file(folder / "good.mkv", folder / "in/good.mkv");
    const Outcome surveyed = Nifikral("disc in -o trip.iso --dry-run");
    EXPECT_NE(surveyed.output.find("in: 1 title, 0:00:02"), std::string::npos) << surveyed.output << surveyed.errors;
}

TEST_F(DiscPlanned, ReportsAllFaultsOfTheProjectAtOnce) {
    std::ofstream(folder / "broken.mp4") << "not a film";
    std::ofstream(folder / "there.iso");
    Write(R"({"title": "a", "path": "none.mkv"}, {"title": "b", "path": "broken.mp4"},
             {"title": "c", "path": "good.mkv", "thumbnail": 7, "chapters": [0, 9]},
             {"title": "d", "pictures": ["nowhere"], "music": "silent.mkv"}, {"title": "e"})",
          R"("menus": {"background": "none.png", "music": "none.mp3"}, )");
    const Outcome outcome = Nifikral("disc disc.json -o there.iso --dry-run");
    EXPECT_EQ(outcome.exitCode, int(ExitCode::Usage));
    for (const char* const words :
         {"films[0].path: none.mkv: no such file", "films[1].path: broken.mp4 is no picture or video",
          "films[2].thumbnail: is 7, and the film ends at 2 seconds", "films[2].chapters: go to 9",
          "films[3].pictures: nowhere: no such file or folder", "films[3].music: silent.mkv holds no sound",
          "films[4]: has no path", "menus.background: none.png: no such file", "menus.music: none.mp3: no such file",
          "there.iso"})
        EXPECT_NE(outcome.errors.find(words), std::string::npos) << words << "\nin\n" << outcome.errors;
    EXPECT_EQ(std::count(outcome.errors.begin(), outcome.errors.end(), '\n'), 10) << outcome.errors;
    EXPECT_EQ(outcome.output, "");
    Write(R"({"title": "a", "path": "none.mkv"})");
    EXPECT_EQ(Nifikral("disc disc.json -o new.iso --dry-run").exitCode, int(ExitCode::Input));
    Write(R"({"title": "a", "path": "good.mkv"})");
    EXPECT_EQ(Nifikral("disc disc.json -o there.iso --dry-run").exitCode, int(ExitCode::Output));
    EXPECT_EQ(Nifikral("disc disc.json -o there.iso -y --dry-run").exitCode, 0);
    EXPECT_EQ(Nifikral("disc disc.json -o nowhere/new.iso --dry-run").exitCode, int(ExitCode::Output));
    // What shows only when the menus are laid out leaves nothing either.
    Write(R"({"title": "a", "path": "good.mkv"})",
          R"("menus": {"instructions": ["1", "2", "3", "4", "5", "6", "7", "8", "9", "10", "11", "12"]}, )");
    const auto files = Files();
    for (const std::string command : {"disc", "plan disc"}) {
        const Outcome refused = Nifikral(command + " disc.json -o new.iso");
        EXPECT_EQ(refused.exitCode, int(ExitCode::Usage));
        EXPECT_NE(refused.errors.find("menus.instructions: are 12 lines"), std::string::npos) << refused.errors;
        EXPECT_EQ(Files(), files);
    }
}

TEST_F(DiscPlanned, NeedsRoomOnTheDiskBesideWhatIsMadeAlready) {
    const auto available = std::filesystem::space(folder).available;
    DiscPlan plan;
    plan.usedBytes = (long long)(available / 2);
    const auto refuses = [&](const std::string& output) {
        Faults faults("disc.json");
        CheckDiscOutput((folder / output).string(), DiscFormat::Dvd, false, plan, faults);
        try {
            faults.ThrowIfAny();
        } catch (const HostError& error) {
            EXPECT_NE(std::string(error.what()).find("make room"), std::string::npos) << error.what();
            EXPECT_EQ(error.Code(), ExitCode::Output);
            return true;
        }
        return false;
    };
    EXPECT_TRUE(refuses("new.iso"));
    std::filesystem::create_directory(folder / "new.iso.work");
    std::ofstream(folder / "new.iso.work/film-1.mpg");
    // It takes none of the disk, as long as nothing is written.
    std::filesystem::resize_file(folder / "new.iso.work/film-1.mpg", available);
    EXPECT_FALSE(refuses("new.iso"));
}

}  // namespace
}  // namespace Nifikral
