#include "host/disc/stages.h"

#include <chrono>
#include <csignal>
#include <thread>

#include "host/base/errors.h"
#include "host/base/log.h"
#include "tests/host/command.h"

namespace Nifikral {
namespace {

class StagesTest : public CommandTest {
 protected:
    StagesTest() { work = (folder / "work").string(); }

    // A program in place of the command: runs the first word as a shell's line, and leaves the key, the second, beside
    // what that makes. Each run leaves a line in "log".
    Stage Of(const std::string& name, const std::string& script, const std::string& key = "key") const {
        std::ofstream(folder / "program")
            << "#!/bin/sh\ncd " << folder.string() << "\neval \"$1\"\nprintf %s \"$2\" > \"$3\"\n";
        std::filesystem::permissions(folder / "program", std::filesystem::perms::owner_all);
        const std::string result = work + "/" + name;
        return {name, {"echo " + name + " >> log; " + script, key, result + ".key"}, key, result, 1, 1};
    }
    Stage Making(const std::string& name, const std::string& key = "key") const {
        return Of(name, "echo made > work/" + name, key);
    }
    void Run(const std::vector<Stage>& stages) const {
        WorkLock lock(work);
        lock.Keep();
        MakeStages(
            stages, [](double) {}, (folder / "program").string());
    }
    std::string Log() const {
        std::string log = ReadFile(folder / "log");
        std::filesystem::remove(folder / "log");
        return log;
    }

    std::string work;
};

TEST_F(StagesTest, MakesAgainOnlyWhatIsMadeFromSomethingElse) {
    Run({Making("a"), Making("b")});
    EXPECT_EQ(Log().size(), 4u);
    Run({Making("a"), Making("b", "other")});
    EXPECT_EQ(Log(), "b\n");
    std::filesystem::remove(folder / "work/a");
    Run({Making("a"), Making("b", "other")});
    EXPECT_EQ(Log(), "a\n");
    // A run that made it from something else than this one knows of.
    Stage newer = Making("a", "newer");
    newer.words[1] = "newest";
    EXPECT_THROW(Run({newer}), HostError);
}

TEST_F(StagesTest, AStageMadeAloneCountsAsMadeOnlyWhenItIsComplete) {
    std::filesystem::create_directory(work);
    const auto make = [&](const std::string& text) { return [this, text] { std::ofstream(work + "/a") << text; }; };
    MakeStage(Making("a"), make("1"));
    MakeStage(Making("a"), make("2"));
    EXPECT_EQ(ReadFile(work + "/a"), "1");
    Run({Making("a")});
    EXPECT_EQ(Log(), "");
    // What the old key has left is not taken for the new, and a failure leaves nothing.
    const auto fail = [] { throw HostError(ExitCode::Input, "broken"); };
    EXPECT_THROW(MakeStage(Making("a", "new"), fail), HostError);
    EXPECT_FALSE(IsMade(Making("a")));
    EXPECT_FALSE(IsMade(Making("a", "new")));
}

TEST_F(StagesTest, TheFirstFailureEndsTheOthersAndKeepsWhatIsComplete) {
    const auto begin = std::chrono::steady_clock::now();
    Stage slow = Of("slow", "exec sleep 60");
    slow.weight = 9;
    try {
        Run({slow, Making("quick"), Of("bad", "echo 'nifikral: error: bad.mp4 is damaged; repair it' >&2; exit 3")});
        FAIL();
    } catch (const HostError& error) {
        EXPECT_STREQ(error.what(), "bad: bad.mp4 is damaged; repair it");
        EXPECT_EQ(error.Code(), ExitCode::Input);
    }
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
    EXPECT_TRUE(IsMade(Making("quick")));
    EXPECT_FALSE(std::filesystem::exists(folder / "work/slow.key"));
}

TEST_F(StagesTest, ACrashIsReportedWithTheStageAndARemedy) {
    // What it has printed before is not the reason.
    const std::string says = "echo 'nifikral: error: a picture is damaged' >&2; ";
    for (const auto& [end, reason] : {std::pair("kill -KILL $$",
                                                "bad: its run was killed, as happens when memory runs "
                                                "out; close other programs and run it again"),
                                      std::pair("kill -SEGV $$", "bad: its run crashed (Segmentation fault)")})
        try {
            Run({Of("bad", says + end)});
            ADD_FAILURE() << end;
        } catch (const HostError& error) {
            EXPECT_TRUE(std::string_view(error.what()).starts_with(reason)) << error.what();
            EXPECT_EQ(error.Code(), ExitCode::Failed);
        }
}

TEST_F(StagesTest, PrintAWarningOnceWhoeverHasIt) {
    const std::string warn = "echo 'nifikral: warning: boxes are drawn' >&2; echo made > work/";
    PrintWarning("a film is silent");
    testing::internal::CaptureStderr();
    Run({Of("a", warn + "a; echo 'nifikral: warning: a film is silent' >&2"), Of("b", warn + "b")});
    const std::string printed = testing::internal::GetCapturedStderr();
    EXPECT_EQ(printed.find("boxes are drawn"), printed.rfind("boxes are drawn")) << printed;
    EXPECT_NE(printed.find("boxes are drawn"), std::string::npos) << printed;
    EXPECT_EQ(printed.find("silent"), std::string::npos) << printed;
}

TEST_F(StagesTest, RefusesAFolderInUseAndGoesOnAfterAKill) {
    const std::vector<Stage> first = {Of("a", "touch begun; sleep 1; echo made > work/a")};
    const pid_t child = fork();
    if (child == 0) {
        Run(first);
        _exit(0);
    }
    while (!std::filesystem::exists(folder / "begun")) std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_THROW(Run(first), HostError);
    kill(child, SIGKILL);
    Wait(child);
    // The run that belonged to it has gone with it.
    std::this_thread::sleep_for(std::chrono::milliseconds(1500));
    EXPECT_FALSE(std::filesystem::exists(folder / "work/a"));
    Run({Making("a")});
    EXPECT_TRUE(IsMade(Making("a")));
}

TEST_F(StagesTest, KeysOfFilesChangeWithThem) {
    std::filesystem::create_directory(folder / "photos");
    std::ofstream(folder / "photos/a") << "1";
    const std::string before = KeyOfFile((folder / "photos").string());
    EXPECT_EQ(KeyOfFile((folder / "photos").string()), before);
    std::ofstream(folder / "photos/b") << "1";
    const std::string more = KeyOfFile((folder / "photos").string());
    EXPECT_NE(more, before);
    std::ofstream(folder / "photos/b") << "22";
    EXPECT_NE(KeyOfFile((folder / "photos").string()), more);
}

}  // namespace
}  // namespace Nifikral
