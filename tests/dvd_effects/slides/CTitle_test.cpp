#include <gtest/gtest.h>

#include "dvd_effects/generator_table.h"
#include "tests/support/failing_host.h"
#include "tests/support/test_frames.h"

namespace AVBased::Testing {
namespace {

constexpr std::uint32_t blue = 0xFF0000FF, black = 0xFF000000;

// The host's texts are blue and 8x4.
class Title : public testing::Test {
 protected:
    Title() { ForgetError(); }
    ~Title() override { EXPECT_EQ(manager.openSources, 0) << "not released"; }

    static EffectOwner Make(const Settings& settings, FakeManager* host) {
        EffectOwner title(CreateEffect(host, "title", GeneratorTable()));
        if (!title) throw std::runtime_error("no title");
        for (const auto& [name, value] : settings)
            if (!title->SetProperty(name.c_str(), value.c_str())) throw std::runtime_error(name + " refuses " + value);
        return title;
    }
    EffectOwner Make(const Settings& settings) { return Make(settings, &manager); }
    static TestFrame Next(IVideoProc& title, unsigned format = 30) {
        TestFrame frame(format, 20, 12);
        for (unsigned p = 0; p < frame.GetBufferCount(); ++p) frame.Fill(p, format == 30 || p == 3 ? 0xFF : 16);
        if (format == 30) frame.SetSamples(0, Grid(12, std::vector<unsigned>(20, black)));
        Apply(title, frame);
        EXPECT_TRUE(frame.GuardsIntact());
        return frame;
    }

    FakeManager manager;
};

// Rows and columns that hold anything of the text.
struct Bounds {
    unsigned left = ~0u, top = ~0u, right = 0, bottom = 0;
    bool operator==(const Bounds&) const = default;
    friend void PrintTo(const Bounds& b, std::ostream* out) {
        *out << b.left << ";" << b.top << " to " << b.right << ";" << b.bottom;
    }
};
Bounds TextIn(const TestFrame& frame) {
    Bounds bounds;
    const Grid grid = frame.Samples();
    for (unsigned y = 0; y < grid.size(); ++y)
        for (unsigned x = 0; x < grid[y].size(); ++x)
            if (grid[y][x] != black)
                bounds = {std::min(bounds.left, x), std::min(bounds.top, y), std::max(bounds.right, x + 1),
                          std::max(bounds.bottom, y + 1)};
    return bounds;
}

TEST_F(Title, StandsInItsBoxAsAlignedAndNoLargerThanIt) {
    const auto still = [&](Settings settings) {
        settings.insert(settings.end(), {{"text", "Hi"}, {"inDuration", "0"}});
        return TextIn(Next(*Make(settings)));
    };
    EXPECT_EQ(still({}), (Bounds{6, 4, 14, 8}));
    EXPECT_EQ(manager.lastHtml, "<font color='#ffffff' size='1' face='Sans' fontstyle='bold shadow'>Hi</font>");
    EXPECT_EQ(still({{"align", "left"}, {"valign", "top"}, {"color", "#0A0b0c"}, {"size", "30"}}),
              (Bounds{2, 1, 10, 5}));
    EXPECT_EQ(manager.lastHtml, "<font color='#0a0b0c' size='30' face='Sans' fontstyle='bold shadow'>Hi</font>");
    EXPECT_EQ(still({{"align", "right"}, {"valign", "bottom"}, {"box", "1;1;15;9"}}), (Bounds{8, 6, 16, 10}));
    EXPECT_EQ(still({{"box", "2;3;4;9"}}), (Bounds{2, 6, 6, 8}));
    EXPECT_EQ(still({{"box", "-4;-2;8;4"}}), (Bounds{0, 0, 4, 2}));
    EXPECT_EQ(still({{"box", "2147483647;-2147483648;2147483647;2147483647"}}), Bounds{});
    EXPECT_EQ(LastError().code, 0);
}

TEST_F(Title, BreaksLinesBeforeItShrinksThemBelowThreeQuarters) {
    manager.setsType = true;
    const auto html = [&](const char* text, const char* size, const char* box = "0;0;20;12") {
        const TestFrame frame =
            Next(*Make({{"text", text}, {"size", size}, {"box", box}, {"fontstyle", ""}, {"inDuration", "0"}}));
        EXPECT_EQ(LastError().code, 0) << text;
        return std::pair(manager.lastHtml.substr(manager.lastHtml.find("size")), TextIn(frame));
    };
    using Shown = std::pair<std::string, Bounds>;
    const auto font = [](const char* size, const char* line) {
        return "size='" + std::string(size) + "' face='Sans' fontstyle=''>" + line + "</font>";
    };
    // Thirteen pixels in a box of ten are shrunk, in one line; fourteen take two lines of their own size.
    EXPECT_EQ(html("abcdef ghijkl", "1", "0;0;10;12"), Shown(font("1", "abcdef ghijkl"), (Bounds{0, 5, 10, 6})));
    EXPECT_EQ(html("abcdef ghijklm", "1", "0;0;10;12"), Shown(font("1", "ghijklm"), (Bounds{1, 5, 8, 7})));
    // Its own lines stay; words stay whole as long as more than half the size is left to them.
    EXPECT_EQ(html("ab\ncd efghijkl", "4", "0;0;26;12"), Shown(font("3", "efghijkl"), (Bounds{1, 1, 20, 10})));
    EXPECT_EQ(html("abcdefgh", "4"), Shown(font("4", "fgh"), (Bounds{0, 2, 20, 10})));
    manager.setsType = false;
    manager.textWidth = 40;
    EXPECT_EQ(html("ab cd", "1", "0;0;10;12"), Shown(font("1", "ab cd"), (Bounds{0, 5, 10, 6}))) << "of a plain host";
}

TEST_F(Title, FadesAndMovesInAndOut) {
    const EffectOwner title = Make({{"text", "Hi"},
                                    {"duration", "9"},
                                    {"inDuration", "3"},
                                    {"outDuration", "1"},
                                    {"inMotion", "right"},
                                    {"outMotion", "none"},
                                    {"distance", "64"}});
    std::vector<TestFrame> frames;
    for (int i = 0; i < 11; ++i) frames.push_back(Next(*title));
    // A quarter of its way in: 3t^2 - 2t^3 visible, (1 - t)^3 of the distance missing, which is 27 pixels.
    EXPECT_EQ(TextIn(frames[0]), Bounds{});
    EXPECT_EQ(TextIn(frames[1]), (Bounds{0, 4, 6, 8}));
    EXPECT_EQ(frames[1].Samples()[5][2], 0xFF00007F);
    EXPECT_EQ(TextIn(frames[2]), (Bounds{5, 4, 13, 8}));
    EXPECT_EQ(frames[3].Samples()[5][6], blue);
    EXPECT_EQ(frames[7].Samples()[5][6], blue);
    EXPECT_EQ(TextIn(frames[8]), (Bounds{6, 4, 14, 8}));
    EXPECT_EQ(frames[8].Samples()[5][6], 0xFF00007F);
    EXPECT_EQ(TextIn(frames[9]), Bounds{});
    EXPECT_EQ(TextIn(frames[10]), Bounds{});
}

TEST_F(Title, SeekEqualsRunning) {
    const Settings settings = {{"text", "One\n\nTwo"}, {"duration", "25"},   {"inDuration", "8"},
                               {"outDuration", "9"},   {"inMotion", "zoom"}, {"outMotion", "left"},
                               {"lineDelay", "2"},     {"distance", "5"},    {"box", "0;0;20;12"}};
    for (const unsigned format : {0u, 30u, 60u}) {
        const EffectOwner running = Make(settings), jumping = Make(settings);
        std::vector<TestFrame> frames;
        for (int i = 0; i < 28; ++i) frames.push_back(Next(*running, format));
        EXPECT_FALSE(frames[5] == frames[12]);
        for (unsigned i = 0; i < 28; ++i) {
            const unsigned position = i * 11 % 28;
            EXPECT_TRUE(jumping->Seek(position));
            ASSERT_EQ(Next(*jumping, format), frames[position]) << position;
        }
    }
    const EffectOwner endless = Make({{"text", "One\nTwo"}, {"box", "0;0;20;12"}});
    endless->Seek(0xFFFFFFFF);
    EXPECT_EQ(TextIn(Next(*endless)), (Bounds{6, 2, 14, 10}));
    EXPECT_EQ(LastError().code, 0);
}

TEST_F(Title, RefusesWhatItCannotReadAndTakesAnyNumber) {
    const EffectOwner title = Make({{"text", "a\nb"}});
    for (const auto& [name, value] : Settings{{"color", "white"},
                                              {"color", "#12345g"},
                                              {"box", "1;2;3"},
                                              {"box", "1;2;0;4"},
                                              {"align", "middle"},
                                              {"valign", ""},
                                              {"inMotion", "Up"}}) {
        ForgetError();
        EXPECT_FALSE(title->SetProperty(name.c_str(), value.c_str())) << name;
        EXPECT_EQ(LastError().message, "Invalid Param Value");
    }
    ForgetError();
    for (const char* number : {"-2147483648", "2147483647", "0"}) {
        for (const char* name : {"duration", "size", "inDuration", "outDuration", "distance", "lineDelay"})
            ASSERT_TRUE(title->SetProperty(name, number));
        for (const unsigned position : {0u, 1u, 0xFFFFFFFFu}) {
            title->Seek(position);
            Next(*title);
        }
    }
    EXPECT_EQ(LastError().code, 0);
    TestFrame unknown(30, 4, 4, {}, 99);
    const TestFrame before = unknown;
    Apply(*title, unknown);
    EXPECT_EQ(unknown, before);
    EXPECT_EQ(TextIn(Next(*Make({{"text", "a"}, {"inDuration", "0"}}, nullptr))), Bounds{});
    EXPECT_EQ(LastError().message, "Null Pointer");
}

TEST_F(Title, LivesWithAHostThatFailsAtEveryStep) {
    UseFailingHosts({}, [](FakeManager& host) {
        const EffectOwner title(CreateEffect(&host, "title", GeneratorTable()));
        if (!title) return;
        title->SetProperty("text", "a\nb");
        for (int i = 0; i < 3; ++i) Next(*title);
    });
}

}  // namespace
}  // namespace AVBased::Testing
