#include <gtest/gtest.h>

#include "TarvoBased/IStrings.h"
#include "dvd_effects/generator_table.h"
#include "dvd_effects/menu/menu_motion.h"
#include "tests/support/failing_host.h"
#include "tests/support/test_frames.h"

namespace AVBased::Testing {
namespace {

constexpr std::uint32_t red = 0xFFFF0000, green = 0xFF00FF00, blue = 0xFF0000FF;
constexpr char unknownTail[] = ";false";

EffectOwner MakeMenu(FakeManager* manager, const Settings& settings) {
    EffectOwner menu(CreateEffect(manager, "menu_common", GeneratorTable()));
    if (!menu) throw std::runtime_error("no menu");
    for (const auto& [name, value] : settings)
        if (!menu->SetProperty(name.c_str(), value.c_str())) throw std::runtime_error(name + " refuses " + value);
    return menu;
}

std::string Text(int x, int y, int width, int height, const std::string& tail) {
    std::string item = "Hi;Face;bold;12;255;0;16";
    for (int number : {x, y, width, height}) item.append(";").append(std::to_string(number));
    return item + tail;
}

class Menu : public testing::Test {
 protected:
    Menu() : frame(30, 16, 8) {
        ForgetError();
        manager.files["green"] = FakeManager::Plain(16, 8, green);
        manager.files["red"] = FakeManager::Plain(4, 2, red);
        manager.files["blue"] = FakeManager::Plain(2, 2, blue);
        manager.files["half"] = FakeManager::Plain(3, 5, 0xFF808080);
        manager.files["empty"] = FakeManager::Plain(0, 0, 0);
        FakeFile video = FakeManager::Plain(2, 2, 0);
        video.isStill = false;
        video.draw = [](CRawVideoFrame& picture, unsigned index) {
            FakeManager::Paint(picture, 0xFF000000 | (index + 1));
        };
        manager.files["video"] = video;
    }
    ~Menu() override {
        EXPECT_EQ(manager.openSources, 0) << "not released";
        ForgetError();
    }

    // The pixel words of a fresh frame that the menu has composed.
    Grid Next(IVideoProc& menu) {
        std::mt19937 random(1);
        frame.Randomise(random);
        Apply(menu, frame);
        EXPECT_TRUE(frame.GuardsIntact());
        return frame.Samples();
    }
    static Settings OneSource(const std::string& path, const char* isImage = "true") {
        return {{"additionSourceNumber", "1"},
                {"isAdditionSourceImages", isImage},
                {"additionSourcePaths", path},
                {"startPositions", "0;0"},
                {"endPositions", "100;100"},
                {"startTrans", "255"},
                {"endTrans", "255"}};
    }

    FakeManager manager;
    TestFrame frame;
};

TEST_F(Menu, DeclaresItsProperties) {
    const EffectOwner menu = MakeMenu(nullptr, {});
    TarvoBased::IStrings* const names = menu->GetPropertyNames();
    EXPECT_EQ(names->GetCount(), 19);
    names->Free();
    int numbers = 0;
    for (const char* name :
         {"width", "height", "textNumber", "additionSourceNumber", "sourcePath", "backgroundMask", "textInfos",
          "isAdditionSourceImages", "additionSourcePaths", "additionSourceSizes", "maskPaths", "startPositions",
          "endPositions", "moveFormulas", "moveSpeeds", "startTrans", "endTrans", "fadeSpeeds"}) {
        int type = -1;
        ASSERT_NE(menu->GetProperty(name, &type), nullptr) << name;
        ASSERT_TRUE(type == 0 || type == 3);
        numbers += type == 3;
    }
    EXPECT_EQ(numbers, 4);
    EXPECT_STREQ(menu->GetName(), "menu_common");
}

TEST_F(Menu, WithoutAnythingIsTransparentBlack) {
    EXPECT_EQ(Next(*MakeMenu(&manager, {})), Grid(8, std::vector<unsigned>(16, 0)));
}

TEST_F(Menu, ShowsItsBackgroundWithItsAspectAndWhereItsMaskIsWhite) {
    manager.files["square"] = FakeManager::Plain(4, 4, green);
    const Grid bands = Next(*MakeMenu(&manager, {{"sourcePath", "square"}}));
    EXPECT_EQ(bands[0],
              (std::vector<unsigned>{0, 0, 0, 0, green, green, green, green, green, green, green, green, 0, 0, 0, 0}));
    const Grid menuSized = Next(*MakeMenu(&manager, {{"sourcePath", "square"}, {"width", "4"}, {"height", "2"}}));
    EXPECT_EQ(menuSized[1], (std::vector<unsigned>{0, green, green, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(menuSized[2], std::vector<unsigned>(16, 0));
    const Grid masked = Next(*MakeMenu(&manager, {{"sourcePath", "green"}, {"backgroundMask", "half"}}));
    EXPECT_EQ(masked[3][7], 0x8000FF00u);
    EXPECT_EQ(manager.lastImporter, "ImageImporter");
}

TEST_F(Menu, AVideoBackgroundTakesAFrameEachTimeAndKeepsTheLast) {
    manager.files["video"].frames = 2;
    const EffectOwner menu = MakeMenu(&manager, {{"sourcePath", "video"}, {"width", "2"}, {"height", "2"}});
    EXPECT_EQ(manager.lastImporter, "");
    EXPECT_EQ(Next(*menu)[0][0], 0xFF000001);
    EXPECT_EQ(Next(*menu)[0][0], 0xFF000002);
    EXPECT_EQ(LastError().code, 0);
    EXPECT_EQ(Next(*menu)[0][0], 0xFF000002);
    EXPECT_EQ(LastError().message, "Null Pointer");
}

TEST_F(Menu, MovesASourceByItsFormulaAndFadesIt) {
    Settings settings = OneSource("red");
    settings.insert(settings.end(), {{"startPositions", "1;0"},
                                     {"endPositions", "9;5"},
                                     {"moveFormulas", "1;-2"},
                                     {"moveSpeeds", "2"},
                                     {"startTrans", "250"},
                                     {"endTrans", "-4"},
                                     {"fadeSpeeds", "-100"}});
    const EffectOwner menu = MakeMenu(&manager, settings);
    static constexpr unsigned opacity[] = {250, 150, 50, 0, 0};
    for (int n = 1; n <= 5; ++n) {
        const point_t at = MovedPosition({1, 0}, {9, 5}, {1, -2}, 2, n);
        const Grid grid = Next(*menu);
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < 16; ++x) {
                const bool inside = x >= at.x && x < at.x + 4 && y >= at.y && y < at.y + 2 && opacity[n - 1];
                EXPECT_EQ(grid[unsigned(y)][unsigned(x)], inside ? opacity[n - 1] << 24 | 0xFF0000 : 0u) << n;
            }
        EXPECT_TRUE(menu->Seek(7));
    }
}

TEST_F(Menu, ScalesASourceIntoItsBoxAndMasksIt) {
    Settings settings = OneSource("red");
    settings.insert(settings.end(), {{"additionSourceSizes", "8;8"}, {"maskPaths", "half"}});
    const Grid grid = Next(*MakeMenu(&manager, settings));
    EXPECT_EQ(grid[1], std::vector<unsigned>(16, 0));
    EXPECT_EQ(grid[2][0], 0x80FF0000);
    EXPECT_EQ(grid[5][7], 0x80FF0000);
    EXPECT_EQ(grid[2][8], 0u);
    EXPECT_EQ(grid[6][0], 0u);
}

TEST_F(Menu, KeepsVideosOpenAndReadsPicturesOnce) {
    const EffectOwner menu = MakeMenu(&manager, {{"additionSourceNumber", "2"},
                                                 {"isAdditionSourceImages", "true;false"},
                                                 {"additionSourcePaths", "red;video"},
                                                 {"startPositions", "0;0;8;0"},
                                                 {"endPositions", "0;0;8;0"},
                                                 {"startTrans", "255;255"},
                                                 {"endTrans", "255;255"}});
    EXPECT_EQ(manager.openSources, 0);
    for (unsigned n = 1; n <= 3; ++n) {
        const Grid grid = Next(*menu);
        EXPECT_EQ(grid[0][0], red);
        EXPECT_EQ(grid[0][8], 0xFF000000 | n);
        EXPECT_EQ(manager.openSources, 1);
        EXPECT_EQ(manager.framesRead, int(n) + 1);
        EXPECT_EQ(manager.lengthsSet, 1) << "the picture's";
    }
    ASSERT_TRUE(menu->SetProperty("additionSourceNumber", "1"));
    EXPECT_EQ(manager.openSources, 0);
    EXPECT_EQ(Next(*menu)[0][0], 0u);
}

TEST_F(Menu, DrawsTextsOverEverything) {
    const std::string infos = Text(1, 1, 0, 0, unknownTail) + "\\" + Text(0, 0, 0, 0, ";true;15;0;0;0;5;x") + "\\" +
                              Text(4, 6, 4, 0, ";false;true;2;3");
    const EffectOwner menu = MakeMenu(&manager, {{"sourcePath", "green"}, {"textNumber", "3"}, {"textInfos", infos}});
    const Grid first = Next(*menu), second = Next(*menu);
    EXPECT_EQ(manager.lastHtml, "<font color='#ff0010' size='12' face='Face' fontstyle='bold'>Hi</font>");
    EXPECT_EQ(first[4][1], blue);
    EXPECT_EQ(first[5][1], green);
    EXPECT_EQ(first[0][4], green);
    EXPECT_EQ(first[0][5], blue);
    EXPECT_EQ(second[0][9], green);
    EXPECT_EQ(second[0][10], blue);
    EXPECT_EQ(first[6][4], green);
    EXPECT_EQ(second[7][7], blue);
    EXPECT_EQ(second[7][8], green);
    Next(*menu);
    EXPECT_EQ(Next(*menu)[6][4], green);
    ASSERT_TRUE(menu->SetProperty("textNumber", "2"));
    EXPECT_EQ(Next(*menu)[1][1], green);
    EXPECT_EQ(LastError().code, 0);
}

TEST_F(Menu, PlanarFramesTakeTheSamePictures) {
    TestFrame planar(0, 17, 9, {{3, 1, 2, 0}, true});
    manager.files["odd"] = FakeManager::Plain(17, 9, green);
    Settings settings = OneSource("red");
    settings.emplace_back("sourcePath", "odd");
    const EffectOwner menu = MakeMenu(&manager, settings);
    Apply(*menu, planar);
    const auto near = [](unsigned actual, unsigned expected) { EXPECT_NEAR(double(actual), expected, 2); };
    near(planar.Samples(0)[0][0], 81);
    near(planar.Samples(2)[0][1], 240);
    near(planar.Samples(0)[4][8], 145);
    near(planar.Samples(1)[2][4], 54);
    near(planar.Samples(0)[8][16], 145);
    EXPECT_EQ(planar.Samples(1)[4][8], planar.Samples(1)[2][4]);
    // Another kind of frame has everything made anew.
    EXPECT_EQ(Next(*menu)[0][0], red);
    EXPECT_EQ(frame.Samples()[4][8], green);
    TestFrame unknown(30, 4, 4, {}, 99);
    const TestFrame before = unknown;
    Apply(*menu, unknown);
    EXPECT_EQ(unknown, before);
}

TEST_F(Menu, RefusesWrongListsAndKeepsWhatItHad) {
    const EffectOwner menu = MakeMenu(&manager, OneSource("red"));
    const std::pair<const char*, const char*> wrong[] = {
        {"additionSourceNumber", "-1"}, {"additionSourceNumber", "2000000000"},
        {"startPositions", "1"},        {"moveFormulas", "1;2;3"},
        {"fadeSpeeds", "1;2"},          {"isAdditionSourceImages", "true;true"}};
    for (const auto& [name, value] : wrong) {
        ForgetError();
        const std::string before = menu->GetProperty(name, nullptr);
        EXPECT_FALSE(menu->SetProperty(name, value)) << name;
        EXPECT_EQ(LastError().message, "Invalid Param Value");
        EXPECT_EQ(menu->GetProperty(name, nullptr), before);
    }
    EXPECT_EQ(Next(*menu)[1][3], red);
    EXPECT_FALSE(MakeMenu(&manager, {})->SetProperty("startPositions", "1;2"));
    EXPECT_EQ(LastError().message, "Null Pointer");
    for (const char* property : {"sourcePath", "backgroundMask"}) {
        EXPECT_FALSE(menu->SetProperty(property, "missing"));
        EXPECT_EQ(LastError().message, "missing");
    }
    EXPECT_FALSE(MakeMenu(nullptr, {})->SetProperty("sourcePath", "green"));
    EXPECT_EQ(LastError().message, "Null Pointer");
    ForgetError();
    manager.FailFrom(0, FakeManager::Fault::Null);
    EXPECT_FALSE(menu->SetProperty("sourcePath", "green"));
    EXPECT_EQ(LastError().message, "Null Background Source");
    manager.FailFrom(-1, FakeManager::Fault::Null);
    ASSERT_TRUE(menu->SetProperty("additionSourcePaths", "red;red"));
    ForgetError();
    EXPECT_EQ(Next(*menu)[1][3], 0u);
    EXPECT_EQ(LastError().code, 0);
}

TEST_F(Menu, FilesABadSourceOnceAndComposesTheRest) {
    const auto twoSources = [](const std::string& first, const std::string& masks, const std::string& sizes) {
        return Settings{{"additionSourceNumber", "2"},
                        {"isAdditionSourceImages", "true;true"},
                        {"additionSourcePaths", first + ";blue"},
                        {"maskPaths", masks},
                        {"additionSourceSizes", sizes},
                        {"startPositions", "0;0;8;0"},
                        {"endPositions", "0;0;8;0"},
                        {"startTrans", "255;999"},
                        {"endTrans", "255;255"}};
    };
    const Settings bad[] = {twoSources("missing", "", ""),    twoSources("empty", "", ""),
                            twoSources("red", "missing", ""), twoSources("red", "empty", ""),
                            twoSources("red", "", "0;5;2;2"), twoSources("red", "", "5;20000;2;2")};
    for (const Settings& settings : bad) {
        ForgetError();
        const EffectOwner menu = MakeMenu(&manager, settings);
        Grid grid = Next(*menu);
        EXPECT_NE(LastError().code, 0);
        EXPECT_EQ(grid[0][0], 0u);
        EXPECT_EQ(grid[0][8], blue);
        ForgetError();
        EXPECT_EQ(Next(*menu)[0][8], blue);
        EXPECT_EQ(LastError().code, 0);
        EXPECT_EQ(manager.openSources, 0);
    }
}

// A whole menu: pictures, a video, masks, a background and a text.
Settings Everything() {
    return {{"sourcePath", "video"},
            {"backgroundMask", "half"},
            {"additionSourceNumber", "2"},
            {"isAdditionSourceImages", "true;false"},
            {"additionSourcePaths", "red;video"},
            {"maskPaths", "half;video"},
            {"startPositions", "-2147483648;5;8;2147483647"},
            {"endPositions", "2147483647;0;8;-2147483648"},
            {"moveFormulas", "2147483647;0;-3;2147483647"},
            {"moveSpeeds", "2147483647;-2147483648"},
            {"startTrans", "0;255"},
            {"endTrans", "255;0"},
            {"fadeSpeeds", "-2147483648;3"},
            {"textNumber", "1"},
            {"textInfos", "'<\">;;;-1;1;2;3;4;5;6;7;false"}};
}

TEST_F(Menu, LivesWithAHostThatFailsAtEveryStep) {
    UseFailingHosts(manager.files, [this](FakeManager& host) {
        const EffectOwner menu(CreateEffect(&host, "menu_common", GeneratorTable()));
        if (!menu) return;
        for (const auto& [name, value] : Everything()) menu->SetProperty(name.c_str(), value.c_str());
        for (int i = 0; i < 3; ++i) Next(*menu);
    });
}

}  // namespace
}  // namespace AVBased::Testing
