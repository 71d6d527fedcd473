// Where menus say that their pictures and texts rest, against what their frames show.

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <sstream>
#include <string_view>

#include "avbase/IMenuPlaces.h"
#include "dvd_effects/generator_table.h"
#include "tests/support/fake_manager.h"
#include "tests/support/test_frames.h"

namespace AVBased::Testing {
namespace {

constexpr unsigned pictures = 3, loop = 12;
constexpr std::uint32_t black = 0xFF000000, white = 0xFFFFFFFF;

struct Case {
    std::string name;
    unsigned width, height;
};

class Places : public testing::TestWithParam<Case> {
 protected:
    Places() {
        ForgetError();
        manager.files["black"] = FakeManager::Plain(64, 36, black);
        manager.files["white"] = FakeManager::Plain(64, 36, white);
        manager.textWidth = 120;
        manager.textHeight = 20;
    }
    ~Places() override { ForgetError(); }

    unsigned Width() const { return GetParam().width; }
    unsigned Height() const { return GetParam().height; }

    // A menu whose picture numbered `lit` is white, the others black; with a text unless it is to be left out.
    EffectOwner Make(unsigned lit) {
        EffectOwner menu(CreateEffect(&manager, GetParam().name.c_str(), GeneratorTable()));
        std::string paths;
        for (unsigned i = 0; i < pictures; ++i) paths += std::string(i ? ";" : "") + (i == lit ? "white" : "black");
        Settings settings = {{"duration", std::to_string(loop)},
                             {"additionSourceNumber", std::to_string(pictures)},
                             {"isAdditionSourceImages", "true;true;true"},
                             {"additionSourcePaths", paths},
                             {"textNumber", "1"},
                             {"textInfos", "A;F;;9;0;0;255;60;40;0;0;false;false;0;0"}};
        // It knows no places of its own. One moves, one is always there, one fades in.
        if (GetParam().name == "menu_common")
            settings.insert(settings.end(), {{"additionSourceSizes", "160;90;160;90;160;90"},
                                             {"startPositions", "0;200;300;200;500;350"},
                                             {"endPositions", "400;200;300;200;500;350"},
                                             {"moveSpeeds", "30;0;0"},
                                             {"moveFormulas", "0;0;0;0;0;0"},
                                             {"startTrans", "255;255;0"},
                                             {"endTrans", "255;255;255"},
                                             {"fadeSpeeds", "0;0;30"}});
        for (const auto& [property, value] : settings)
            EXPECT_TRUE(menu->SetProperty(property.c_str(), value.c_str())) << property;
        return menu;
    }
    static IMenuPlaces& PlacesOf(IVideoProc& menu) {
        return *static_cast<IMenuPlaces*>(menu.GetInterface(IMenuPlaces::name));
    }
    std::vector<Grid> Play(unsigned lit) {
        const EffectOwner menu = Make(lit);
        std::vector<Grid> frames;
        for (unsigned i = 0; i < loop; ++i) {
            TestFrame frame(formatRgba32, Width(), Height());
            Apply(*menu, frame);
            frames.push_back(frame.Samples());
        }
        return frames;
    }

    FakeManager manager;
};

// How much of a pixel of two frames is a picture that is black in one and white in the other: 0 to 255.
int Share(const Grid& none, const Grid& lit, unsigned x, unsigned y) {
    return std::abs(int(lit[y][x] >> 8 & 255) - int(none[y][x] >> 8 & 255));
}

struct Bounds {
    int left = INT_MAX, top = INT_MAX, right = 0, bottom = 0;

    void Add(unsigned x, unsigned y) {
        left = std::min(left, int(x));
        right = std::max(right, int(x) + 1);
        top = std::min(top, int(y));
        bottom = std::max(bottom, int(y) + 1);
    }
    int Width() const { return right - left; }
    int Height() const { return bottom - top; }
};

// Where frames show a picture: at all moments, and at any.
struct Judged {
    Bounds always, ever;
    std::vector<std::vector<bool>> pixels;  // of the latter
    bool isSeen = false;                    // half visible somewhere at all moments

    // What it shows without a break from a place on: what is seen elsewhere as well does not belong to that.
    Bounds About(const MenuPlace& place) const {
        Bounds about;
        std::vector<std::vector<bool>> left = pixels;
        std::vector<std::pair<int, int>> open;
        const auto take = [&](int x, int y) {
            if (y < 0 || y >= int(left.size()) || x < 0 || x >= int(left[0].size()) || !left[y][x]) return;
            left[y][x] = false;
            about.Add(unsigned(x), unsigned(y));
            open.push_back({x, y});
        };
        for (int y = 0; y < place.height; ++y)
            for (int x = 0; x < place.width; ++x) take(place.left + x, place.top + y);
        while (!open.empty()) {
            const auto [x, y] = open.back();
            open.pop_back();
            take(x + 1, y);
            take(x - 1, y);
            take(x, y + 1);
            take(x, y - 1);
        }
        return about;
    }
};

Judged Judge(const std::vector<Grid>& none, const std::vector<Grid>& lit) {
    Judged judged;
    for (unsigned y = 0; y < none[0].size(); ++y) {
        judged.pixels.emplace_back(none[0][y].size());
        for (unsigned x = 0; x < none[0][y].size(); ++x) {
            int least = 255, most = 0;
            for (std::size_t i = 0; i < none.size(); ++i) {
                const int share = Share(none[i], lit[i], x, y);
                least = std::min(least, share);
                most = std::max(most, share);
            }
            // Soft edges and what flies by leave little.
            if (least > 8) judged.always.Add(x, y);
            if (most > 8) judged.ever.Add(x, y);
            judged.pixels[y][x] = most > 8;
            judged.isSeen |= least > 110;
        }
    }
    return judged;
}

TEST_P(Places, AreWhereFramesShowThePictures) {
    const std::vector<Grid> none = Play(pictures);
    const EffectOwner menu = Make(pictures);
    TestFrame frame(formatRgba32, Width(), Height());
    Apply(*menu, frame);
    IMenuPlaces& places = PlacesOf(*menu);
    ASSERT_TRUE(places.Watch(0, loop));
    for (unsigned k = 0; k < pictures; ++k) {
        SCOPED_TRACE(k);
        const Judged judged = Judge(none, Play(k));
        MenuPlace place{};
        ASSERT_TRUE(places.GetPlace(IMenuPlaces::pictures, k, &place));
        if (!place.width) {
            EXPECT_TRUE(!judged.isSeen || 2 * judged.always.Width() < judged.ever.Width() ||
                        2 * judged.always.Height() < judged.ever.Height())
                << "it rests from " << judged.always.left << ", " << judged.always.top << " to " << judged.always.right
                << ", " << judged.always.bottom;
            continue;
        }
        EXPECT_TRUE(judged.isSeen);
        // The bounds of what is turned or has soft edges reach a little beyond what is always there.
        constexpr int about = 6;
        EXPECT_NEAR(place.left, judged.always.left, about);
        EXPECT_NEAR(place.top, judged.always.top, about);
        EXPECT_NEAR(place.left + place.width, judged.always.right, about);
        EXPECT_NEAR(place.top + place.height, judged.always.bottom, about);
        const Bounds reach = judged.About(place);
        const int farthest =
            std::max({place.left - reach.left, place.top - reach.top, reach.right - place.left - place.width,
                      reach.bottom - place.top - place.height});
        EXPECT_NEAR(place.drift, farthest, about);
    }
    MenuPlace text{};
    ASSERT_TRUE(places.GetPlace(IMenuPlaces::texts, 0, &text));
    const MenuPlace expected = GetParam().name == "menu_layeredtitles" ? MenuPlace{} : MenuPlace{60, 40, 120, 20, 0};
    EXPECT_EQ(std::memcmp(&text, &expected, sizeof text), 0) << text.left << ", " << text.top << " " << text.width;
    EXPECT_EQ(LastError().code, 0);
}

TEST_P(Places, DoNotDisturbTheFramesThatFollow) {
    manager.files["black"].isStill = false;
    manager.files["black"].draw = [](CRawVideoFrame& frame, unsigned index) {
        FakeManager::Paint(frame, black | 0x101010u * (index % 16));
    };
    const EffectOwner watched = Make(pictures), same = Make(pictures);
    for (const auto& menu : {watched.get(), same.get()})
        ASSERT_TRUE(menu->SetProperty("isAdditionSourceImages", "false;false;false"));
    for (unsigned i = 0; i < 4; ++i) {
        TestFrame frame(0, 96, 54), expected(0, 96, 54);
        Apply(*watched, frame);
        Apply(*same, expected);
        ASSERT_EQ(frame, expected) << i;
        EXPECT_TRUE(PlacesOf(*watched).Watch(3, loop));
    }
}

std::vector<Case> Cases() {
    std::vector<Case> cases;
    for (const EffectEntry& entry : GeneratorTable())
        if (std::string_view(entry.name).find("menu_") != std::string_view::npos) {
            cases.push_back({entry.name, 720, 576});
            cases.push_back({entry.name, 720, 480});
        }
    return cases;
}

INSTANTIATE_TEST_SUITE_P(All, Places, testing::ValuesIn(Cases()),
                         [](const auto& c) { return c.param.name + (c.param.height == 576 ? "_Pal" : "_Ntsc"); });

// A menu of one template, with places of its own for plain pictures of 40 x 20.
class CommonPlaces : public testing::Test {
 protected:
    CommonPlaces() {
        ForgetError();
        manager.files["plain"] = FakeManager::Plain(40, 20, white);
        manager.files["mist"] = FakeManager::Plain(40, 20, 0x60FFFFFF);
    }
    ~CommonPlaces() override { ForgetError(); }

    EffectOwner Make(const Settings& settings) {
        EffectOwner menu(CreateEffect(&manager, "menu_common", GeneratorTable()));
        for (const auto& [property, value] : settings)
            EXPECT_TRUE(menu->SetProperty(property.c_str(), value.c_str())) << property;
        return menu;
    }
    // "x,y wxh" of the pictures from frame `first` to before `end`, a blank between them; "-" for one without rest.
    std::string PlacesFrom(IVideoProc& menu, unsigned count, unsigned first, unsigned end) {
        TestFrame frame(formatRgba32, 200, 100);
        Apply(menu, frame);
        auto& places = *static_cast<IMenuPlaces*>(menu.GetInterface(IMenuPlaces::name));
        EXPECT_TRUE(places.Watch(first, end));
        std::ostringstream text;
        for (unsigned i = 0; i < count; ++i) {
            MenuPlace at{};
            EXPECT_TRUE(places.GetPlace(IMenuPlaces::pictures, i, &at));
            text << (i ? " " : "");
            if (at.width)
                text << at.left << "," << at.top << " " << at.width << "x" << at.height;
            else
                text << "-";
        }
        return text.str();
    }

    FakeManager manager;
};

TEST_F(CommonPlaces, AreThoseOfTheWatchedFramesAlone) {
    // One comes in until the frame 10 and stays; one fades in until then; one leaves.
    const EffectOwner menu = Make({{"additionSourceNumber", "3"},
                                   {"isAdditionSourceImages", "true;true;true"},
                                   {"additionSourcePaths", "plain;plain;plain"},
                                   {"startPositions", "0;5;100;5;100;70"},
                                   {"endPositions", "50;5;100;5;300;70"},
                                   {"moveSpeeds", "5;0;8"},
                                   {"moveFormulas", "0;0;0;0;0;0"},
                                   {"startTrans", "255;0;255"},
                                   {"endTrans", "255;255;255"},
                                   {"fadeSpeeds", "0;12;0"}});
    EXPECT_EQ(PlacesFrom(*menu, 3, 0, 30), "- - -");
    EXPECT_EQ(PlacesFrom(*menu, 3, 12, 30), "50,5 40x20 100,5 40x20 -");
    EXPECT_EQ(PlacesFrom(*menu, 3, 0, 1), "5,5 40x20 - 108,70 40x20");
    // The third has left in the last of very many frames.
    EXPECT_EQ(PlacesFrom(*menu, 3, 12, 100000), "50,5 40x20 100,5 40x20 -");
}

TEST_F(CommonPlaces, AreNoneOfWhatIsMostlyCoveredOrOutside) {
    const auto places = [&](const char* paths, const char* at) {
        const EffectOwner menu = Make({{"additionSourceNumber", "2"},
                                       {"isAdditionSourceImages", "true;true"},
                                       {"additionSourcePaths", paths},
                                       {"startPositions", at},
                                       {"endPositions", at},
                                       {"startTrans", "255;255"},
                                       {"endTrans", "255;255"}});
        return PlacesFrom(*menu, 2, 0, 5);
    };
    EXPECT_EQ(places("plain;plain", "10;10;30;10"), "10,10 40x20 30,10 40x20") << "half covered";
    EXPECT_EQ(places("plain;plain", "10;10;25;10"), "- 25,10 40x20") << "covered";
    EXPECT_EQ(places("plain;mist", "10;10;10;10"), "10,10 40x20 10,10 40x20") << "seen through what is over it";
    EXPECT_EQ(places("plain;plain", "-15;10;-25;50"), "0,10 25x20 -") << "outside";
}

TEST_F(CommonPlaces, AreAskedForWithinBounds) {
    const EffectOwner menu = Make({{"additionSourceNumber", "1"},
                                   {"isAdditionSourceImages", "true"},
                                   {"additionSourcePaths", "plain"},
                                   {"startTrans", "255"},
                                   {"endTrans", "255"}});
    auto& places = *static_cast<IMenuPlaces*>(menu->GetInterface(IMenuPlaces::name));
    MenuPlace place{};
    EXPECT_FALSE(places.Watch(0, 9)) << "before a frame";
    EXPECT_EQ(LastError().code, 10021008);
    EXPECT_FALSE(places.GetPlace(IMenuPlaces::pictures, 0, &place)) << "before it watched";
    EXPECT_EQ(LastError().code, 10021000);
    EXPECT_EQ(places.GetCover(IMenuPlaces::pictures, 0, 0, 9, 9), 0);
    ForgetError();
    EXPECT_EQ(PlacesFrom(*menu, 1, 0, 9), "0,0 40x20");
    EXPECT_EQ(places.GetCover(IMenuPlaces::pictures, 20, 0, 40, 20), 0.5);
    EXPECT_EQ(places.GetCover(IMenuPlaces::texts, 20, 0, 40, 20), 0);
    EXPECT_FALSE(places.Watch(9, 9)) << "no frames";
    EXPECT_FALSE(places.GetPlace(IMenuPlaces::pictures, 1, &place));
    EXPECT_FALSE(places.GetPlace(IMenuPlaces::texts, 0, &place));
    EXPECT_FALSE(places.GetPlace(2, 0, &place));
    EXPECT_EQ(LastError().code, 10021000);
    EXPECT_FALSE(places.GetPlace(IMenuPlaces::pictures, 0, nullptr));
    EXPECT_EQ(LastError().code, 10021003);
}

}  // namespace
}  // namespace AVBased::Testing
