#include <fcntl.h>
#include <sys/stat.h>

#include <csignal>
#include <thread>

#include "tests/host/command.h"

namespace Nifikral {
namespace {

namespace fs = std::filesystem;

class ManyFiles : public CommandTest {
 protected:
    ManyFiles() {
        for (const char* const name : {"a", "b", "c"}) MakePicture(std::string(name) + ".png", name[0] - 'a');
    }
    void MakePicture(const std::string& name, int hue) const {
        Ffmpeg("-f lavfi -i testsrc2=size=64x48 -vf hue=h=" + std::to_string(60 * hue) + " -frames:v 1 " + name);
    }
    std::set<std::string> FilesIn(const std::string& name) const {
        std::set<std::string> names;
        std::error_code error;
        for (const auto& entry : fs::directory_iterator(folder / name, error))
            names.insert(entry.path().filename().string());
        return names;
    }
    // Refused with words in its one line, and nothing made.
    void ExpectRefusal(const std::string& arguments, int exitCode, const std::vector<std::string>& words) const {
        const std::set<std::string> before = Files();
        const Outcome outcome = Nifikral(arguments);
        EXPECT_EQ(outcome.exitCode, exitCode) << arguments << outcome.errors;
        EXPECT_EQ(std::count(outcome.errors.begin(), outcome.errors.end(), '\n'), 1) << outcome.errors;
        for (const std::string& word : words) EXPECT_NE(outcome.errors.find(word), std::string::npos) << outcome.errors;
        EXPECT_EQ(Files(), before) << arguments;
    }
};

TEST_F(ManyFiles, KeepTheirNamesInAFolderAndAreAsIfMadeAlone) {
    for (const char* const threads : {"1", "3"}) {
        const Outcome outcome =
            Nifikral("apply a.png b.png c.png -o out/ invert gray -y --threads " + std::string(threads));
        EXPECT_EQ(outcome.exitCode, 0);
        EXPECT_EQ(outcome.errors, "nifikral: 3 of 3 files done\n");
        EXPECT_EQ(FilesIn("out"), (std::set<std::string>{"a.png", "b.png", "c.png"}));
        for (const std::string name : {"a.png", "b.png", "c.png"}) {
            ASSERT_EQ(Nifikral("apply " + name + " alone.png invert gray -y").exitCode, 0);
            EXPECT_EQ(ReadFile(folder / "out" / name), ReadFile(folder / "alone.png")) << name;
        }
    }
    EXPECT_EQ(Nifikral("apply a.png b.png c.png -o out/ invert -q -y").errors, "");
}

TEST_F(ManyFiles, OneThatIsBrokenDoesNotEndTheRest) {
    std::ofstream(folder / "b.png") << "no picture";
    for (const char* const threads : {"1", "4"}) {
        const Outcome outcome = Nifikral("apply a.png b.png c.png -o out invert --threads " + std::string(threads));
        EXPECT_EQ(outcome.exitCode, 2) << "a folder that is not there is no folder";
        const Outcome made = Nifikral("apply a.png b.png c.png -o out/ invert -y --threads " + std::string(threads));
        EXPECT_EQ(made.exitCode, 3);
        EXPECT_EQ(FilesIn("out"), (std::set<std::string>{"a.png", "c.png"}));
        EXPECT_TRUE(made.errors.starts_with("nifikral: error: b.png")) << made.errors;
        EXPECT_TRUE(made.errors.ends_with("\nnifikral: error: 2 of 3 files done, 1 failed\n")) << made.errors;
        fs::remove_all(folder / "out");
    }
    // Failures of different kinds are a failed run, and a folder that stays empty is not left behind.
    EXPECT_EQ(Nifikral("apply a.png b.png -o out/{name}.nosuch gray").exitCode, 1);
    EXPECT_FALSE(Files().contains("out"));
}

TEST_F(ManyFiles, AreCalledByAPattern) {
    ASSERT_EQ(Nifikral("apply c.png a.png -o out/{number}-{name}.jpg gray").exitCode, 0);
    EXPECT_EQ(FilesIn("out"), (std::set<std::string>{"1-c.jpg", "2-a.jpg"}));
    ASSERT_EQ(Nifikral("apply c.png a.png -o {name}_old gray").exitCode, 0);
    EXPECT_TRUE(Files().contains("c_old.png") && Files().contains("a_old.png"));
    ASSERT_EQ(Nifikral("apply -o one.jpg a.png gray").exitCode, 0);
    EXPECT_TRUE(Files().contains("one.jpg"));
    std::string many = "apply";
    for (int i = 0; i < 10; ++i) many += " a.png";
    ASSERT_EQ(Nifikral(many + " -o n{number} gray").exitCode, 0);
    EXPECT_TRUE(Files().contains("n01.png") && Files().contains("n10.png"));
}

TEST_F(ManyFiles, ThatAreThereAreRefusedAllAtOnce) {
    fs::create_directory(folder / "out");
    for (const char* const name : {"out/b.png", "out/c.png"}) std::ofstream(folder / name) << "precious";
    const std::string run = "apply a.png b.png c.png -o out gray";
    ExpectRefusal(run, 4, {"2 of 3 outputs exist already (out/b.png, out/c.png)", "-y", "--skip-existing"});
    EXPECT_EQ(FilesIn("out").size(), 2u);
    ASSERT_EQ(Nifikral(run + " --skip-existing").exitCode, 0);
    EXPECT_EQ(ReadFile(folder / "out/b.png"), "precious");
    EXPECT_EQ(FilesIn("out").size(), 3u);
    ASSERT_EQ(Nifikral(run + " -y").exitCode, 0);
    EXPECT_NE(ReadFile(folder / "out/b.png"), "precious");
}

TEST_F(ManyFiles, ThatWouldMeetAreRefused) {
    fs::create_directory(folder / "in");
    fs::copy(folder / "a.png", folder / "in/a.png");
    ExpectRefusal("apply a.png in/a.png -o out/ gray", 2,
                  {"a.png and in/a.png would both become out/a.png", "{number}"});
    ExpectRefusal("apply a.png b.png -o . gray -y", 2, {"is an input itself"});
    ExpectRefusal("apply a.png b.png -o in/../{name}.png gray -y", 2, {"is an input itself"});
    ExpectRefusal("apply a.png b.png -o out.jpg gray", 2, {"one output for 2 inputs", "{name}.jpg"});
    ExpectRefusal("apply a.png - -o out/ gray", 2, {"stdin has no name"});
    ExpectRefusal("plan apply a.png b.png -o out/ gray", 2, {"chunks"});
}

TEST_F(ManyFiles, AreDistinguishedFromEffects) {
    ExpectRefusal("apply a.png grey -o out/", 2, {"\"grey\" is neither a file nor an effect", "did you mean gray?"});
    ExpectRefusal("apply a.png gone.png gray -o out/", 2, {"\"gone.png\" is neither a file nor an effect"});
    ExpectRefusal("apply a.png b.png -o out/", 2, {"no effect is given"});
    ExpectRefusal("apply a.png b.png c.png gray", 2, {"c.png is a file and no effect", "-o"});
    ExpectRefusal("apply a.png b.png -o out/ gray c.png", 2, {"c.png"});
    fs::copy(folder / "a.png", folder / "gray");
    ExpectRefusal("apply a.png gray -o out/", 2, {"gray is an effect and a file", "./gray"});
    fs::copy(folder / "a.png", folder / "gray@2x.png");
    ASSERT_EQ(Nifikral("apply gray@2x.png ./gray -o {number}.png invert").exitCode, 0);
    EXPECT_EQ(ReadFile(folder / "1.png"), ReadFile(folder / "2.png"));
}

TEST_F(ManyFiles, MayBeFilmsAndGetTitles) {
    for (const std::string name : {"x.mkv", "y.mkv"})
        Ffmpeg("-f lavfi -i testsrc2=size=64x48:duration=0.4 -c:v ffv1 " + name);
    ASSERT_EQ(Nifikral("apply x.mkv y.mkv a.png -o out/ gray --encoder-option g=1").exitCode, 0);
    EXPECT_EQ(FilesIn("out"), (std::set<std::string>{"a.png", "x.mkv", "y.mkv"}));
    EXPECT_EQ(RawPictures("out/y.mkv", "gray").size(), 10u * 64 * 48);
    ASSERT_EQ(Nifikral("title Hi x.mkv a.png -o titled/").exitCode, 0);
    EXPECT_EQ(FilesIn("titled"), (std::set<std::string>{"a.png", "x.mkv"}));
    EXPECT_EQ(Nifikral("title Hi a.png").exitCode, 2);
}

TEST_F(ManyFiles, ThatAreInterruptedSayHowManyAreDone) {
    ASSERT_EQ(mkfifo((folder / "endless.y4m").c_str(), 0600), 0);
    const pid_t child = Start(Words(NIFIKRAL_PROGRAM " apply a.png b.png endless.y4m -o out/ gray"));
    for (int i = 0; i < 500 && FilesIn("out").size() < 2; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    const int writer = open((folder / "endless.y4m").c_str(), O_RDWR | O_CLOEXEC);
    const auto waits = [&] {
        std::error_code error;
        for (const auto& entry : fs::directory_iterator("/proc/" + std::to_string(child) + "/fd", error))
            if (fs::read_symlink(entry.path(), error).filename() == "endless.y4m") return true;
        return false;
    };
    for (int i = 0; i < 500 && !waits(); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(20));
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    kill(child, SIGINT);
    const Outcome outcome = Wait(child);
    close(writer);
    EXPECT_EQ(outcome.exitCode, 130);
    EXPECT_EQ(outcome.errors, "nifikral: error: interrupted; 2 of 3 files done, these stay\n");
}

}  // namespace
}  // namespace Nifikral
