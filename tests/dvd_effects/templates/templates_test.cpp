// What all menus promise, whatever they compose.

#include <gtest/gtest.h>

#include <cstdlib>
#include <string_view>

#include "dvd_effects/generator_table.h"
#include "dvd_effects/templates/CAnimatedMenu.h"
#include "tests/support/fake_manager.h"
#include "tests/support/test_frames.h"

namespace AVBased::Testing {
namespace {

constexpr unsigned loop = 40;

FakeFile Slope(unsigned width, unsigned height, unsigned colour) {
    FakeFile file = FakeManager::Plain(width, height, 0);
    file.draw = [colour](CRawVideoFrame& frame, unsigned) {
        const PackedView view = ViewPacked(frame);
        for (unsigned y = 0; y < view.height; ++y)
            for (unsigned x = 0; x < view.width; ++x)
                view.Row(y)[x] = {std::uint8_t(colour), std::uint8_t(x * 255 / view.width),
                                  std::uint8_t(y * 255 / view.height), 255};
    };
    return file;
}

class Template : public testing::TestWithParam<EffectEntry> {
 protected:
    Template() {
        ForgetError();
        // Of all shapes; one with transparent parts.
        manager.files["0"] = Slope(64, 36, 20);
        manager.files["1"] = Slope(9, 40, 130);
        manager.files["2"] = Slope(50, 3, 220);
        manager.files["3"] = FakeManager::Plain(16, 16, 0x8040C0FF);
        manager.files["4"] = FakeManager::Plain(1, 1, 0xFFFF2010);
    }
    ~Template() override { ForgetError(); }

    EffectOwner Make(unsigned sources, bool hasTexts) {
        EffectOwner menu(CreateEffect(&manager, GetParam().name, GeneratorTable()));
        const auto set = [&](const char* name, const std::string& value) {
            EXPECT_TRUE(menu->SetProperty(name, value.c_str())) << name;
        };
        set("duration", std::to_string(loop));
        std::string paths, kinds;
        for (unsigned i = 0; i < sources; ++i) {
            paths += (i ? ";" : "") + std::to_string(i % 5);
            kinds += i ? ";true" : "true";
        }
        set("additionSourceNumber", std::to_string(sources));
        if (sources) set("isAdditionSourceImages", kinds);
        if (sources) set("additionSourcePaths", paths);
        if (hasTexts) set("textNumber", "2");
        if (hasTexts) set("textInfos", "A;F;;9;1;2;3;4;5;0;0;false\\B;F;;9;1;2;3;-9;30;6;2;false");
        return menu;
    }

    FakeManager manager;
};

// What changes from one frame to another.
std::uint64_t Step(const TestFrame& a, const TestFrame& b) {
    std::uint64_t sum = 0;
    const Grid from = a.Samples(), to = b.Samples();
    for (unsigned y = 0; y < from.size(); ++y)
        for (unsigned x = 0; x < from[y].size(); ++x) sum += unsigned(std::abs(int(from[y][x]) - int(to[y][x])));
    return sum;
}

TEST_P(Template, LoopsWithoutAJump) {
    for (unsigned sources : {1u, 5u}) {
        const EffectOwner menu = Make(sources, true);
        // Others move as their properties say.
        if (!dynamic_cast<const CAnimatedMenu*>(menu.get())) return;
        std::vector<TestFrame> frames;
        for (unsigned i = 0; i < loop * 2; ++i) Apply(*menu, frames.emplace_back(0, 96, 54));
        for (unsigned i = 0; i < loop; ++i) ASSERT_EQ(frames[i], frames[i + loop]) << i;
        std::uint64_t most = 0;
        for (unsigned i = 1; i < loop; ++i) most = std::max(most, Step(frames[i - 1], frames[i]));
        EXPECT_GT(most, 0u) << "nothing moves";
        EXPECT_LE(Step(frames[loop - 1], frames[loop]), most) << sources << " sources";
    }
}

TEST_P(Template, ComposesAnyNumberOnAnyFrame) {
    static constexpr FrameSize sizes[] = {{1, 1}, {16, 16}, {37, 21}, {3, 40}, {90, 2}};
    std::mt19937 random(3);
    for (unsigned format : {30u, 0u, 4u, 6u, 7u, 12u, 13u, 35u, 60u})
        for (const FrameSize& size : sizes)
            for (unsigned sources : {0u, 1u, 13u}) {
                SCOPED_TRACE(testing::Message() << "format " << format << " size " << size.width << "x" << size.height
                                                << " sources " << sources);
                const EffectOwner menu = Make(sources, random() % 2);
                TestFrame frame(format, size.width, size.height, {{7, 3, 5, 2}, random() % 2 == 0});
                frame.Randomise(random);
                for (int i = 0; i < 3; ++i) {
                    const TestFrame before = frame;
                    Apply(*menu, frame);
                    ASSERT_TRUE(frame.GuardsIntact());
                    for (unsigned p = 0; p < frame.GetBufferCount(); ++p)
                        ASSERT_EQ(frame.Padding(p), before.Padding(p)) << "plane " << p;
                }
                EXPECT_EQ(LastError().code, 0) << LastError().message;
                if (HasFailure()) return;
            }
}

// Whatever divides by the menu's size, or steps by a part of it.
TEST_P(Template, ReturnsForFramesWithoutPixelsAndMenusOfAnySize) {
    for (unsigned format : {30u, 7u, 60u})
        for (const FrameSize& size : {FrameSize{0, 0}, {1, 0}, {8, 0}, {0, 8}}) {
            const EffectOwner menu = Make(2, true);
            TestFrame frame(format, size.width, size.height);
            for (int i = 0; i < 2; ++i) Apply(*menu, frame);
            EXPECT_EQ(LastError().code, 0) << LastError().message;
        }
    for (const char* side : {"-7", "1", "16385", "2147483647"}) {
        const EffectOwner menu = Make(2, true);
        ASSERT_TRUE(menu->SetProperty("width", side));
        TestFrame frame(30, 8, 1);
        for (int i = 0; i < 2; ++i) Apply(*menu, frame);
        ForgetError();
    }
}

TEST_P(Template, DoesNotDependOnWhatWasInTheFrame) {
    std::mt19937 random(9);
    for (unsigned format : {30u, 7u, 35u}) {
        const EffectOwner menu = Make(5, true), same = Make(5, true);
        TestFrame frame(format, 48, 26), other(format, 48, 26);
        frame.Randomise(random);
        other.Randomise(random);
        Apply(*menu, frame);
        Apply(*same, other);
        for (unsigned p = 0; p < frame.GetBufferCount(); ++p) ASSERT_EQ(frame.Samples(p), other.Samples(p)) << format;
    }
}

// Where pictures fill the menu or move over all of it, there are no places to choose.
bool FillsTheMenu(std::string_view name) {
    static constexpr std::string_view names[] = {"menu_fullscreen", "menu_layeredtitles", "menu_performance",
                                                 "menu_push",       "menu_rectangles",    "menu_resizingpanels",
                                                 "menu_videowall",  "menu_vignette",      "menu_travel"};
    return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

TEST_P(Template, PlacesPicturesWhereItIsAskedTo) {
    const EffectOwner menus[] = {Make(1, false), Make(1, false)};
    static constexpr const char* places[] = {"9;30", "70;30"};
    for (unsigned i = 0; i < 2; ++i)
        for (const auto& [name, value] : {std::pair{"additionSourceSizes", "18;18"},
                                          {"startPositions", places[i]},
                                          {"endPositions", places[i]},
                                          {"startTrans", "255"}})
            ASSERT_TRUE(menus[i]->SetProperty(name, value)) << name;
    bool differLeft = false, differRight = false;
    for (unsigned i = 0; i < loop; ++i) {
        TestFrame frames[] = {{30, 96, 54}, {30, 96, 54}};
        for (unsigned k = 0; k < 2; ++k) Apply(*menus[k], frames[k]);
        const Grid left = frames[0].Samples(), right = frames[1].Samples();
        differLeft |= left[37][18] != right[37][18];
        differRight |= left[37][79] != right[37][79];
    }
    EXPECT_NE(differLeft, FillsTheMenu(GetParam().name));
    EXPECT_NE(differRight, FillsTheMenu(GetParam().name));
}

TEST_P(Template, PaintsInThreeMoods) {
    const EffectOwner menu = Make(0, false);
    const bool hasMoods = dynamic_cast<const CAnimatedMenu*>(menu.get()) != nullptr;
    EXPECT_EQ(menu->SetProperty("mood", "0"), hasMoods);
    if (!hasMoods) return ForgetError();
    for (const unsigned format : {30u, 0u}) {
        const auto painted = [&](const char* mood) {
            EXPECT_TRUE(menu->SetProperty("mood", mood));
            TestFrame frame(format, 96, 54);
            for (unsigned i = 0; i < loop; ++i) Apply(*menu, frame);
            return frame;
        };
        const auto brightness = [](const TestFrame& frame) {
            std::uint64_t sum = 0;
            const Grid samples = frame.Samples();
            for (const auto& row : samples)
                for (const auto sample : row) sum += (sample >> 8 ? sample >> 8 : sample) & 255;
            return sum / (samples.size() * samples[0].size());
        };
        const TestFrame own = painted("0"), light = painted("1"), dark = painted("2");
        EXPECT_GT(brightness(light), brightness(dark) + 60) << format;
        EXPECT_NE(own, light);
        EXPECT_NE(own, dark);
        EXPECT_EQ(painted("0"), own);
        EXPECT_EQ(painted("7"), own) << "an unknown one";
    }
}

TEST_P(Template, LeavesUnknownFormatsAlone) {
    TestFrame frame(30, 20, 20, {}, 99);
    const TestFrame before = frame;
    Apply(*Make(2, true), frame);
    EXPECT_EQ(frame, before);
}

std::vector<EffectEntry> Menus() {
    std::vector<EffectEntry> menus;
    for (const EffectEntry& entry : GeneratorTable())
        if (std::string_view(entry.name).find("menu_") != std::string_view::npos) menus.push_back(entry);
    return menus;
}

INSTANTIATE_TEST_SUITE_P(All, Template, testing::ValuesIn(Menus()),
                         [](const auto& entry) { return std::string(entry.param.name); });

}  // namespace
}  // namespace AVBased::Testing
