#include <algorithm>

#include "host/base/errors.h"
#include "host/run/effect_request.h"
#include "tests/host/command.h"

namespace Nifikral {
namespace {

class Requests : public CommandTest {
 protected:
    // Ten frames of grey, each of them 100 bytes.
    void MakeGreyClip() const {
        Ffmpeg("-f lavfi -i color=0x909090:size=20x10:rate=10:duration=1,format=bgra -c:v ffv1 in.mkv");
    }
    // The red of a pixel in each frame of out.mkv.
    std::vector<int> Reds(const std::string& file = "out.mkv") const {
        const std::string pictures = RawPictures(file, "bgra");
        std::vector<int> reds;
        for (std::size_t i = 2; i < pictures.size(); i += 20 * 10 * 4)
            reds.push_back(static_cast<unsigned char>(pictures[i]));
        return reds;
    }
    std::vector<int> Apply(const std::string& arguments) const {
        const Outcome outcome = Nifikral("apply in.mkv out.mkv -y --encoder ffv1 " + arguments);
        EXPECT_EQ(outcome.exitCode, 0) << arguments << "\n" << outcome.errors;
        return Reds();
    }
    Outcome Refused(const std::string& arguments) const {
        const Outcome outcome = Nifikral("apply in.mkv refused.mkv -y " + arguments);
        EXPECT_NE(outcome.exitCode, 0) << arguments;
        EXPECT_FALSE(std::filesystem::exists(folder / "refused.mkv")) << arguments;
        return outcome;
    }
};

TEST_F(Requests, WorkInTheirWindowAndLeaveTheRestAsItIs) {
    MakeGreyClip();
    const int a = 0x90, b = 255 - 0x90;
    EXPECT_EQ(Apply("invert@2-4"), (std::vector<int>{a, a, b, b, b, a, a, a, a, a}));
    EXPECT_EQ(Apply("invert@0.2s-0.5s"), (std::vector<int>{a, a, b, b, b, a, a, a, a, a}));
    EXPECT_EQ(Apply("invert@-3-"), (std::vector<int>{a, a, a, a, a, a, a, b, b, b}));
    EXPECT_EQ(Apply("invert@-0.3s-"), (std::vector<int>{a, a, a, a, a, a, a, b, b, b}));
    EXPECT_EQ(Apply("invert@0s-0.2s invert@5-"), (std::vector<int>{b, b, a, a, a, b, b, b, b, b}));
}

TEST_F(Requests, CountPositionsAndDurationFromTheirWindow) {
    MakeGreyClip();
    // Levels of 255, 192, 128, 64 and 0 of 256: the last frame is black, the ones before the window are untouched.
    EXPECT_EQ(Apply("directfadeout@-5-"), (std::vector<int>{144, 144, 144, 144, 144, 143, 108, 72, 36, 0}));
    // What comes behind a window is as it was.
    EXPECT_EQ(Apply("directfadeout@2-4"), (std::vector<int>{144, 144, 143, 72, 0, 144, 144, 144, 144, 144}));
    EXPECT_EQ(Apply("directfadein@0s-0.4s"), (std::vector<int>{0, 36, 72, 108, 144, 144, 144, 144, 144, 144}));
    const std::string ramp = "brightness_contrast@3-6:brightness=0..-100";
    const std::vector<int> reds = Apply(ramp);
    EXPECT_EQ(reds[2], 144);
    EXPECT_EQ(reds[3], 144);
    EXPECT_TRUE(reds[4] < 144 && reds[5] < reds[4]) << reds[4] << " " << reds[5];
    EXPECT_EQ(reds[6], 0);
    EXPECT_EQ(reds[7], 144);
}

TEST_F(Requests, GiveTheSameFramesInRangesAndChunks) {
    MakeGreyClip();
    const std::string chain =
        "directfadeout@-5- brightness_contrast@3-6:brightness=0..-100 invert@0.1s-0.3s:inside=circle,0..20,0,50%";
    const std::vector<int> whole = Apply(chain);
    EXPECT_EQ(Apply(chain + " --frames 4-7"), std::vector<int>(whole.begin() + 4, whole.begin() + 8));
    EXPECT_EQ(Apply(chain + " --frames 0-1"), std::vector<int>(whole.begin(), whole.begin() + 2));
    std::filesystem::remove(folder / "out.mkv");
    for (const std::string chunk : {"0-2", "3-4", "5-9"}) {
        const Outcome made = Nifikral("apply in.mkv out.mkv --encoder ffv1 --chunk " + chunk + " " + chain);
        ASSERT_EQ(made.exitCode, 0) << made.errors;
    }
    const Outcome joined = Nifikral("concat --last 9 apply in.mkv out.mkv --encoder ffv1 " + chain);
    ASSERT_EQ(joined.exitCode, 0) << joined.errors;
    EXPECT_EQ(Reds(), whole);
}

TEST_F(Requests, RefuseWindowsThatNoFrameLiesIn) {
    MakeGreyClip();
    for (const auto& [window, word] : {std::pair("5-3", "ends before it begins"),
                                       {"10-", "10 frames"},
                                       {"1s-", "behind the end"},
                                       {"2s", "gray@2s: it has no end; give 2s-"},
                                       {"-1s", "give -1s-"}}) {
        const Outcome outcome = Refused(std::string("gray@") + window);
        EXPECT_EQ(outcome.exitCode, 2) << outcome.errors;
        EXPECT_NE(outcome.errors.find(word), std::string::npos) << outcome.errors;
        EXPECT_NE(outcome.errors.find(std::string("gray@") + window), std::string::npos) << outcome.errors;
    }
    // Other frames of the run than those that are made now.
    EXPECT_EQ(Apply("invert@8- --frames 0-1"), (std::vector<int>{144, 144}));
}

TEST_F(Requests, StartIdleEffectsSoThatTheyShow) {
    Ffmpeg("-f lavfi -i testsrc2=size=64x36 -frames:v 1 in.png");
    const std::string before = RawPictures("in.png", "rgb24");
    const auto after = [&](const std::string& request) {
        const Outcome outcome = Nifikral("apply in.png out.png -y " + request);
        EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
        EXPECT_EQ(outcome.errors, "") << request;
        return RawPictures("out.png", "rgb24");
    };
    for (const char* const effect :
         {"brightness_contrast", "reverse", "spherize", "magnifier", "rotate", "tensile", "mosaic"})
        EXPECT_NE(after(effect), before) << effect;
    // What is set stays so, and what acts by itself is not joined by others.
    EXPECT_EQ(after("magnifier:x=25%"), after("magnifier:x=16:y=18:r=13:scale=1.6"));
    EXPECT_EQ(after("reverse:mirror=1"), after("reverse:mirror=1:vertical=0"));
    EXPECT_EQ(after("reverse"), after("reverse:mirror=on:vertical=on"));
    EXPECT_EQ(after("reverse:mirror=0"), before);
    EXPECT_EQ(after("brightness_contrast:contrast=30"), after("brightness_contrast:contrast=30:brightness=0"));
    EXPECT_EQ(after("tensile:vertical_scale=3"),
              after("tensile:horizontal=0:vertical=1:vertical_y1=35%:vertical_y2=65%:vertical_scale=3"));
}

TEST_F(Requests, WarnOfPlacesBesideThePicture) {
    Ffmpeg("-f lavfi -i testsrc2=size=64x36 -frames:v 1 in.png");
    for (const auto& [request, words] :
         {std::pair("magnifier:x=65", "magnifier_x=65 lies outside the sensible range 0 to 64"),
          {"magnifier:r=60%", "magnifier_r=22 lies outside the sensible range 0 to 18"}}) {
        const Outcome outcome = Nifikral(std::string("apply in.png out.png -y ") + request);
        EXPECT_EQ(outcome.exitCode, 0);
        EXPECT_NE(outcome.errors.find(words), std::string::npos) << outcome.errors;
    }
}

TEST_F(Requests, NameTheRemedyOfWhatTheyCannotTake) {
    MakeGreyClip();
    for (const auto& [request, words] : {std::pair("slide", "nifikral slideshow PICTURES"),
                                         {"title", "nifikral title TEXT IN OUT"},
                                         {"menu_common", "nifikral menu menu_common"},
                                         {"sepia", "did you mean aged_film?"},
                                         {"colorfilter:color=rad", "did you mean red"},
                                         {"colorfilter:color=1,2", "#rrggbb"},
                                         {"popstyle:palette=jungle", "0 sunset, 1 comic"},
                                         {"rotate:scale=50%", "no place or length"},
                                         {"rotate:scale=0..4~fast", "linear, in, out, in-out, hold"},
                                         {"gray:inside=elipse,1,2,3,4", "did you mean ellipse"},
                                         {"gray:inside=circle,1,2", "circle,X,Y,R"},
                                         {"gray:soft=3", "inside=AREA"},
                                         {"gray:insde=circle,1,2,3", "did you mean inside"},
                                         {"tilereflect:size=0", "use 1 or more"}}) {
        const Outcome outcome = Refused(request);
        EXPECT_EQ(outcome.exitCode, 2) << outcome.errors;
        EXPECT_NE(outcome.errors.find(words), std::string::npos) << outcome.errors;
        EXPECT_EQ(outcome.errors.find("(code"), std::string::npos) << outcome.errors;
    }
    const std::vector<int> red = Apply("colorfilter:color=red:density=100"),
                           same = Apply("colorfilter:color=0xff0000:density=100");
    EXPECT_EQ(red, same);
}

class PresetFiles : public Requests {
 protected:
    PresetFiles() {
        setenv("XDG_CONFIG_HOME", (folder / "config").c_str(), 1);
        std::filesystem::create_directories(folder / "config/nifikral");
        MakeGreyClip();
    }
    ~PresetFiles() override { unsetenv("XDG_CONFIG_HOME"); }
    void Write(const std::string& text) const { std::ofstream(folder / "config/nifikral/presets") << text; }
};

TEST_F(PresetFiles, StandForTheirChains) {
    Write("# a dark negative\nnight = invert 'brightness_contrast:brightness=-20'\n  invert\n\nback=x\n");
    const Outcome broken = Refused("@night");
    EXPECT_EQ(broken.exitCode, 2);
    EXPECT_NE(broken.errors.find("config/nifikral/presets:5: "), std::string::npos) << broken.errors;
    Write("# a dark negative\nnight = invert 'brightness_contrast:brightness=-20'\n  invert\nboth = @night @fades\n");
    const std::vector<int> chain = Apply("invert brightness_contrast:brightness=-20 invert");
    EXPECT_EQ(Apply("@night"), chain);
    EXPECT_EQ(Apply("@night invert"), Apply("invert brightness_contrast:brightness=-20"));
    EXPECT_EQ(Apply("@both"), Apply("@night directfadein@0s-1s directfadeout@-1s-"));
    std::vector<int> part(10, 144);
    std::copy(chain.begin() + 3, chain.begin() + 5, part.begin() + 3);
    EXPECT_EQ(Apply("@night@3-4"), part);
    EXPECT_EQ(Apply("@night:inside=rectangle,1,0,9,9"), std::vector<int>(10, 144)) << "the first pixel lies outside";
    std::filesystem::rename(folder / "config/nifikral/presets", folder / "other");
    EXPECT_EQ(Apply("@night --presets other"), chain);
    EXPECT_EQ(Refused("@night").exitCode, 2);
    EXPECT_EQ(Refused("@night --presets nosuch").exitCode, 3);
}

TEST_F(PresetFiles, NameFileAndLineOfTheirFaults) {
    for (const auto& [text, request, words] :
         {std::tuple("a = gray\nb = nosuch\n", "@b", "presets:2: there is no effect \"nosuch\""),
          {"a = gray @b\nb = @a\n", "@a", "contains itself"},
          {"a = gray@1-2\n", "@a@3-4", "window of its own"},
          {"a = gray\n", "@a:count=3", "inside, outside and soft"},
          {"a = gray\n", "@drem", "did you mean dream?"},
          {"gray\n", "@dream", "presets:1: this is not of the form"}}) {
        Write(text);
        const Outcome outcome = Refused(request);
        EXPECT_EQ(outcome.exitCode, 2) << outcome.errors;
        EXPECT_NE(outcome.errors.find(words), std::string::npos) << outcome.errors;
        // What needs no presets does not read them.
        EXPECT_EQ(Nifikral("apply in.mkv out.mkv -y gray").exitCode, 0);
    }
}

TEST_F(PresetFiles, AreListedAndPrinted) {
    Write("# a dark negative\nnight = invert\ndream = gray\n");
    const std::string list = Nifikral("list @").output;
    EXPECT_NE(list.find("  @night                    a dark negative\n"), std::string::npos) << list;
    EXPECT_EQ(list.find("gray"), std::string::npos) << list;
    EXPECT_NE(Nifikral("list --names").output.find("\n@night\n"), std::string::npos);
    EXPECT_NE(Nifikral("list @night --json").output.find("\"meaning\": \"a dark negative\""), std::string::npos);
    EXPECT_NE(Nifikral("info @dream").output.find("gray"), std::string::npos) << "one's own replaces the built-in one";
    EXPECT_NE(Nifikral("generate presets").output.find("dream = portrait"), std::string::npos);
}

TEST_F(PresetFiles, ChunksOfAnotherChainAreNotJoined) {
    Write("a = invert\n");
    ASSERT_EQ(Nifikral("apply in.mkv out.mkv --encoder ffv1 --chunk 0-4 @a").exitCode, 0);
    Write("a = gray\n");
    ASSERT_EQ(Nifikral("apply in.mkv out.mkv --encoder ffv1 --chunk 5-9 @a").exitCode, 0);
    const Outcome joined = Nifikral("concat --last 9 apply in.mkv out.mkv --encoder ffv1 @a");
    EXPECT_EQ(joined.exitCode, 3);
    EXPECT_NE(joined.errors.find("another command line"), std::string::npos) << joined.errors;
}

TEST_F(PresetFiles, EachBuiltInOneWorks) {
    std::istringstream names(Nifikral("list --names @").output);
    int count = 0;
    for (std::string name; names >> name; ++count) {
        const Outcome outcome = Nifikral("apply in.mkv out.mkv -y " + name);
        EXPECT_EQ(outcome.exitCode, 0) << name << outcome.errors;
        EXPECT_EQ(outcome.errors, "") << name;
    }
    EXPECT_GT(count, 5);
}

}  // namespace
}  // namespace Nifikral
