// Where each template shows each of its pictures.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string_view>

#include "dvd_effects/generator_table.h"
#include "tests/support/fake_manager.h"
#include "tests/support/test_frames.h"

namespace AVBased::Testing {
namespace {

constexpr unsigned pictures = 3, loop = 8, cellWidth = 12, cellHeight = 14, columns = 8, rows = 4;

// Frames 2, 4, 6 and 8 of a loop of 8 with three pictures, of which the one numbered `white` is white, the others
// black.
std::vector<Grid> Play(const char* name, unsigned white) {
    FakeManager manager;
    manager.files["black"] = FakeManager::Plain(32, 18, 0xFF000000);
    manager.files["white"] = FakeManager::Plain(32, 18, 0xFFFFFFFF);
    const EffectOwner menu(CreateEffect(&manager, name, GeneratorTable()));
    std::string paths;
    for (unsigned i = 0; i < pictures; ++i) paths += std::string(i ? ";" : "") + (i == white ? "white" : "black");
    Settings settings = {{"duration", std::to_string(loop)},
                         {"additionSourceNumber", std::to_string(pictures)},
                         {"isAdditionSourceImages", "true;true;true"},
                         {"additionSourcePaths", paths}};
    // It knows no places of its own.
    if (std::string_view(name) == "menu_common")
        settings.insert(settings.end(), {{"startPositions", "0;0;30;40;60;28"},
                                         {"endPositions", "99;0;30;0;0;28"},
                                         {"moveSpeeds", "8;0;-4"},
                                         {"moveFormulas", "0;0;0;-1;0;0"},
                                         {"startTrans", "255;255;0"},
                                         {"endTrans", "255;255;255"},
                                         {"fadeSpeeds", "0;0;30"}});
    for (const auto& [property, value] : settings)
        EXPECT_TRUE(menu->SetProperty(property.c_str(), value.c_str())) << property;
    std::vector<Grid> frames;
    for (unsigned i = 0; i < loop; ++i) {
        TestFrame frame(30, columns * cellWidth, rows * cellHeight);
        Apply(*menu, frame);
        if (i % 2) frames.push_back(frame.Samples());
    }
    return frames;
}

// How far two frames differ in a cell: 255 for black and white.
unsigned Difference(const Grid& a, const Grid& b, unsigned column, unsigned row) {
    unsigned sum = 0;
    for (unsigned y = row * cellHeight; y < (row + 1) * cellHeight; ++y)
        for (unsigned x = column * cellWidth; x < (column + 1) * cellWidth; ++x)
            sum += unsigned(std::abs(int(a[y][x] >> 8 & 255) - int(b[y][x] >> 8 & 255)));
    return sum / (cellWidth * cellHeight);
}

// What shows most in each cell of four frames: the letter of a picture, a small one where it is less than half of what
// is seen there, or a dot where none shows. Rows are separated by a slash, frames by a blank.
std::string MapOf(const char* name) {
    const std::vector<Grid> none = Play(name, pictures);
    const std::vector<Grid> each[pictures] = {Play(name, 0), Play(name, 1), Play(name, 2)};
    std::string map;
    for (std::size_t i = 0; i < none.size(); ++i)
        for (unsigned row = 0; row < rows; ++row) {
            if (row || i) map += row ? '/' : ' ';
            for (unsigned column = 0; column < columns; ++column) {
                unsigned most = 24;
                char shown = '.';
                for (unsigned k = 0; k < pictures; ++k) {
                    const unsigned difference = Difference(none[i], each[k][i], column, row);
                    if (difference <= most) continue;
                    most = difference;
                    shown = char((difference < 128 ? 'a' : 'A') + k);
                }
                map += shown;
            }
        }
    return map;
}

struct Scene {
    const char *name, *map;
};

constexpr Scene scenes[] = {
    {"menu_fullscreen",
     "AAAAAAAA/AAAAAAAA/AAAAAAAA/aAAAAAAA BBBBBBBB/BBBBBBBB/BBBBBBBB/bBBBBBBB "
     "CCCCCCCC/CCCCCCCC/CCCCCCCC/cccccccc CCCCCCCC/CCCCCCCC/CCCCCCCC/cCCCCCCc"},
    {"menu_layeredtitles",
     "AAAAAAAA/AAAAAAAA/aaAAAAAA/AAAAAAAA BBBBBBBB/BBBBBBBB/bbbbbbbb/bbbbbbbB "
     "CCCCCCCC/CCCCCCCC/cccccccc/cccccccC CCCCCCCC/CCCCCCCC/cccccccc/cccccccc"},
    {"menu_memories",
     "..AAAa../..AAAA../..aaa.../........ ..AAAa../.BBAAA../bBBBB.../.bbBb... "
     "..AAAa../.BBAAcCc/bBBcCCCc/.bbbCcc. ..AAAa../bBBbAA../bBBBba../..bbb..."},
    {"menu_oldage",
     "..aaaa../..aAAa../.bBbcCc./.bb.ccc. ...aa.../..aAAa../.bBbcCc./.bbb.cc. "
     "...aa.../...AA.../bBBbcCc./.bbb.cc. ...aa.../...AA.../.bBbcCCc/.bbbcCc."},
    {"menu_resizingpanels",
     "AAAAAAAA/AAAAAAAA/AAAAAAAA/bbbbcccc aaaaaaaa/BBBBBbcc/BBBBBBcc/BBBBBBcc "
     "aaaaaaaa/bbbCCCCC/BBbCCCCC/BBbCCCCC AAAAAAAA/aaaccccc/bbcCCCCC/bbcCCCCC"},
    {"menu_performance",
     "......../bBaAAaCc/bbaAAacc/........ ......../bBbBBbAa/bbbBBbaa/........ "
     "......../cCbBBbbb/ccbBBbaa/........ ......../aAcCCcBb/aacCCcbb/........"},
    {"menu_babygirl",
     "......../aAaBBcCc/.Aabbcc./........ ......../aAaBBcCc/aAabbcC./........ "
     "......../aAaBBcC./.aabBcC./........ ......../.AaBbCCc/.aabbcC./........"},
    {"menu_babyboy",
     "......../aAABBcCc/aAabbccc/........ ......../aAaBBcCc/aAabbcCc/........ "
     "......../aAaBBcCc/aaaBBcCc/........ ......../aAABBCCc/aaaBBcCc/........"},
    {"menu_rectangles",
     "..cCc..c/aaaccaaa/AAA..AAA/.bb...bb ..cCc..c/aaaccaaa/AAA..AAA/...bB... "
     "..cCc..c/aaaccaaa/AAA..AAA/.bb...bb ..cCc..c/aaaccaaa/AAA..AAA/...bB..."},
    {"menu_push",
     "AAAAAAAA/AAAAAAAA/AAAAAAAA/AAAAAAAA BBBBBBBB/BBBBBBBB/BBBBBBBB/BBBBBBBB "
     "CCCCCCCB/CCCCCCCB/CCCCCCCB/CCCCCCCB CCCCCCaA/CCCCCCAA/CCCCCCAA/CCCCCCaA"},
    {"menu_travel",
     "ccc..bb./.cc..bb./..aAAa../..aAaa.. .bb..aa./.bb..aa./..cCCc../..cCcc.. "
     ".aA..cc./.aa..cCc/..BBB.../..bbb... ...cC.../.a.cc.../aAa.bBB./........"},
    {"menu_pets",
     "..aAAa../..aAAa../......../........ ..aAAa../..aAAa../.BBBcCCc/.BBbccc. "
     "..aAAa../.bbAAa../.BBBcCCc/.bbbcCCc ..aaAa../..aAAa../.BBBcCCc/.BBbcCCc"},
    {"menu_stacking",
     "......../..AAAA../..AAAA../........ ....bbb./..AABBBB/..AAbBBB/.......b "
     "...b..../..BBBBb./..bBBBb./........ ......../..cCCCc./..aCCCc./...c.b.."},
    {"menu_specialoccasion",
     "......../.AaBBCCc/.aabbcc./........ ......../.AaBBcCc/.Aabbccc/........ "
     "......../aAA..cCc/.aa..cc./...BB... .....cc./aAABBCCc/.aabb.../........"},
    {"menu_vignette",
     "......../.aaAAa../..aAAa../........ ......../..bBBb../.bbBBb../........ "
     "......../..cCCc../.bcCCc../........ ......../..cCCcc./..cCCcc./........"},
    {"menu_videowall",
     ".aabbacc/aAAAAAAc/aAAAAAAc/aaabbacc AAABBCCC/AAaBBcCC/AAaBBcCC/AAABBCCC "
     "AAABBCCC/AAABBCCC/AAaBBcCC/AAaBBbCC aaccccc./aCCCCCCc/aCCCCCCc/aacccccc"},
    {"menu_festival",
     "......../aAaBBcCc/aaabbccc/........ ......../aAaBBcCc/aaabbccc/........ "
     "......../aAaBBcCc/aaabbccc/........ ......../aAaBBcCc/aaabbccc/........"},
    {"submenu_festival",
     "......../aAAbbccc/AAAbBcCc/........ ......../aAabbccc/aAABBcCc/........ "
     "......../aabBBbcc/aAbBBbCc/........ ......../aaabbCCc/aAaBbCCC/........"},
    {"instructionmenu_festival",
     "......../aAA...../aAa...../........ ......../bbb...../bbb...../........ "
     "......../bBB...../bBb...../........ ......../cCC...../cCc...../........"},
    {"submenu_common",
     "......../aAABBcCc/aaabbccc/........ ......../aAABBcCc/aaabbccc/........ "
     "......../aAaBBcCc/aaabbccc/........ ......../aAaBBCCc/aaabbccc/........"},
    {"instructionmenu_common",
     "......../.....AAa/.....AAa/........ ......../.....abb/.....bbb/........ "
     "......../.....BBb/.....BBb/........ ......../.....CCc/.....CCc/........"},
    {"menu_common",
     ".AAA..../.aaa..../..bbcCC./..bBBcc. ..aAAa../...aa.../..bbCCc./..bBBc.. "
     "....AAA./....aaa./..bCCC../..bBBc.. .....AAA/.....aaa/..CCCb../..bbb..."},
    {"menu_memories2",
     "......../..aAAa../bBaAAaCc/.BBBcCCc ..aAAa../.baAAa../.BBBcCCc/.bbbcCCc "
     "..aAAa../..bAAa../.bBBBCCc/...bcCCc ..aAAa../..cCCc../bBcCCc../.BBB...."},
};

class Scenes : public testing::TestWithParam<Scene> {};

TEST_P(Scenes, ShowEachPictureAtItsPlace) {
    // A frame a line, so that a failure shows which ones differ.
    std::string expected = GetParam().map, actual = MapOf(GetParam().name);
    std::replace(expected.begin(), expected.end(), ' ', '\n');
    std::replace(actual.begin(), actual.end(), ' ', '\n');
    EXPECT_EQ(actual, expected);
}

INSTANTIATE_TEST_SUITE_P(All, Scenes, testing::ValuesIn(scenes),
                         [](const auto& scene) { return std::string(scene.param.name); });

TEST(SceneTable, HoldsEveryMenu) {
    for (const EffectEntry& entry : GeneratorTable()) {
        const std::string_view name = entry.name;
        const bool isMenu = name.find("menu_") != std::string_view::npos;
        EXPECT_EQ(isMenu, std::any_of(std::begin(scenes), std::end(scenes),
                                      [&](const Scene& scene) { return name == scene.name; }))
            << name;
    }
}

}  // namespace
}  // namespace AVBased::Testing
