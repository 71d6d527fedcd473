#include <algorithm>
#include <map>

#include "host/catalogue/catalogue.h"
#include "tests/host/command.h"

namespace Nifikral {
namespace {

class Gallery : public CommandTest {
 protected:
    void MakePhotograph(const std::string& name, const std::string& size) const {
        Ffmpeg("-f lavfi -i testsrc=size=" + size + " -frames:v 1 " + name);
    }

    // What the page holds between `before` and the next `after`, at each place.
    std::vector<std::string> Find(const std::string& page, const std::string& before, char after) const {
        const std::string text = ReadFile(folder / page);
        std::vector<std::string> found;
        for (std::size_t at = 0; (at = text.find(before, at)) != std::string::npos;) {
            at += before.size();
            found.push_back(text.substr(at, text.find(after, at) - at));
        }
        return found;
    }

    std::vector<std::string> FrameEffects() const {
        std::vector<std::string> names;
        for (const EffectInfo& info : Catalogue())
            if (!(info.traits & generator)) names.emplace_back(info.name);
        return names;
    }

    // The files of a folder below the test's own, and what they hold.
    std::map<std::string, std::string> Contents(const std::string& name) const {
        std::map<std::string, std::string> contents;
        for (const auto& entry : std::filesystem::directory_iterator(folder / name))
            contents[entry.path().filename()] = ReadFile(entry.path());
        return contents;
    }
};

TEST_F(Gallery, ShowsEveryFrameEffectWithTheCommandThatMakesThePicture) {
    MakePhotograph("wide.png", "1201x101");
    const Outcome outcome = Nifikral("gallery wide.png -o gallery.html");
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(Files(), (std::set<std::string>{"wide.png", "gallery.html", "gallery_files"}));

    const std::vector<std::string> effects = FrameEffects();
    EXPECT_EQ(Find("gallery.html", "<article id=\"", '"'), effects);
    // Fades at three moments, and films of what moves.
    std::vector<std::string> files;
    for (const std::string& effect : effects) {
        const EffectInfo& info = *FindEffect(effect);
        const std::string ending = info.traits & changesAlpha ? ".webp" : ".jpg";
        if (info.traits & variesWithTime)
            for (const char* const moment : {"_1", "_2", "_3"}) files.push_back(effect + moment + ending);
        else
            files.push_back(effect + ending);
        if (info.traits & (variesWithTime | newEachFrame)) files.push_back(effect + ".mp4");
    }
    for (const std::string& picture : Find("gallery.html", "<img src=\"", '"'))
        EXPECT_EQ(Probe(picture, "stream=width,height"), "960|81\n") << picture;
    const std::vector<std::string> films = Find("gallery.html", "<video src=\"", '"');
    EXPECT_EQ(films.size(), 6u);
    for (const std::string& film : films)
        EXPECT_EQ(Probe(film, "stream=width,height,nb_frames"), "480|40|25\n") << film;

    const std::vector<std::string> commands = Find("gallery.html", "nifikral apply ", '\n');
    ASSERT_EQ(commands.size(), files.size());
    ASSERT_EQ(Nifikral("apply gallery_files/photo.png unchanged.jpg reverse:mirror=0").exitCode, 0);
    const std::string unchanged = ReadFile(folder / "unchanged.jpg");
    for (std::size_t i = 0; i < commands.size(); ++i) {
        const std::string command = commands[i].substr(0, commands[i].find('<'));
        const Outcome again = Nifikral("apply " + command);
        EXPECT_EQ(again.exitCode, 0) << command << again.errors;
        const std::string made = ReadFile(folder / files[i]);
        EXPECT_TRUE(made == ReadFile(folder / "gallery_files" / files[i])) << command;
        EXPECT_TRUE(made != unchanged) << command;
    }
}

TEST_F(Gallery, TakesOddNamesAndTurnsNothingIntoMarkup) {
    MakePhotograph("a.png", "5x3");
    std::filesystem::rename(folder / "a.png", folder / "<b>&\".png");
    ASSERT_EQ(Nifikral("gallery <b>&\".png -o it's:50%&.html").exitCode, 0);
    const std::string page = ReadFile(folder / "it's:50%&.html");
    EXPECT_NE(page.find("<h1>&lt;b&gt;&amp;&quot;.png"), std::string::npos);
    EXPECT_NE(page.find("src=\"it%27s%3A50%25%26_files/gray.jpg\""), std::string::npos);
    EXPECT_NE(page.find("apply 'it'\\''s:50%&amp;_files/photo.png' gray.jpg gray<"), std::string::npos);
    EXPECT_EQ(Probe("it's:50%&_files/rotate.jpg", "stream=width,height"), "5|3\n");
}

TEST_F(Gallery, OverwritesOnlyWhenAskedAndLeavesOtherFilesAlone) {
    MakePhotograph("a.png", "64x48");
    ASSERT_EQ(Nifikral("gallery a.png -o g.html").exitCode, 0);
    std::ofstream(folder / "g_files/notes.txt") << "precious";
    const std::string page = ReadFile(folder / "g.html");
    const auto pictures = Contents("g_files");
    const auto expectRefused = [&](const std::string& arguments, int exitCode, const std::string& word) {
        const Outcome outcome = Nifikral("gallery " + arguments);
        EXPECT_EQ(outcome.exitCode, exitCode) << arguments;
        EXPECT_NE(outcome.errors.find(word), std::string::npos) << outcome.errors;
        EXPECT_EQ(std::count(outcome.errors.begin(), outcome.errors.end(), '\n'), 1) << outcome.errors;
        EXPECT_EQ(ReadFile(folder / "g.html"), page) << arguments;
        EXPECT_EQ(Contents("g_files"), pictures) << arguments;
        EXPECT_EQ(Files(), (std::set<std::string>{"a.png", "g.html", "g_files"})) << arguments;
    };
    expectRefused("a.png -o g.html", 4, "g.html exists already; -y overwrites it");
    expectRefused("nosuch.png -o g.html -y", 3, "no such file");
    expectRefused("g_files/gray.jpg -o g.html -y", 2, "copy it elsewhere");
    expectRefused("a.png -o nosuch/g.html", 4, "mkdir");
    expectRefused("a.png -o -", 2, "gallery.html");
    expectRefused("a.png -o page_%03d.html", 2, "gallery.html");

    std::filesystem::remove(folder / "g.html");
    EXPECT_EQ(Nifikral("gallery a.png -o g.html").exitCode, 4) << "the pictures alone are there";
    MakePhotograph("a.png", "32x16");
    ASSERT_EQ(Nifikral("gallery a.png -o g.html -y").exitCode, 0);
    EXPECT_EQ(Probe("g_files/gray.jpg", "stream=width,height"), "32|16\n");
    EXPECT_EQ(ReadFile(folder / "g_files/notes.txt"), "precious");
}

TEST_F(Gallery, AFullDiskLeavesNothingHalf) {
    MakePhotograph("a.png", "640x480");
    const Outcome outcome = Nifikral("gallery a.png -o g.html", [] {
        const rlimit limit{20000, 20000};
        setrlimit(RLIMIT_FSIZE, &limit);
    });
    EXPECT_EQ(outcome.exitCode, 4) << outcome.errors;
    EXPECT_EQ(Files(), std::set<std::string>{"a.png"});
}

}  // namespace
}  // namespace Nifikral
