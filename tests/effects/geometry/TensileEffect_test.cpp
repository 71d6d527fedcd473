#include "effects/geometry/TensileEffect.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/support/random_frames.h"

namespace AVBased::Testing {
namespace {

using Map = std::vector<unsigned>;

TEST(Tensile, GrowsColumnsAboutTheMiddleOfTheBand) {
    EXPECT_EQ(TensileColumns({4, 8, 2.0}, 16), (Map{0, 2, 4, 4, 5, 5, 6, 6, 7, 7, 8, 9, 10, 11, 13, 14}));
}

TEST(Tensile, OddGrowthNeverPassesTheLastColumn) {
    EXPECT_EQ(TensileColumns({4, 8, 1.75}, 16), (Map{0, 1, 2, 4, 4, 5, 5, 6, 6, 7, 8, 9, 10, 11, 12, 13}));
}

TEST(Tensile, BandsThatReachAnEdgeHideColumns) {
    EXPECT_EQ(TensileColumns({1, 5, 3.0}, 16), (Map{1, 1, 1, 1, 2, 2, 2, 3, 3, 5, 6, 8, 9, 11, 12, 14}));
    EXPECT_EQ(TensileColumns({10, 14, 2.0}, 16), (Map{0, 1, 2, 3, 5, 6, 7, 8, 10, 10, 11, 11, 12, 12, 13, 13}));
}

TEST(Tensile, GrowsRowsUpwardsOnly) {
    EXPECT_EQ(TensileRows({4, 8, 1.5}, 12), (Map{0, 2, 4, 4, 5, 5, 6, 7}));
    EXPECT_EQ(TensileRows({2, 6, 2.0}, 8), (Map{3, 3, 4, 4, 5, 5}));
}

TEST(Tensile, GivesUpSilently) {
    for (const TensileBand& band : {TensileBand{2, 9, 2}, TensileBand{4, 4, 2}, TensileBand{5, 4, 2},
                                    TensileBand{2, 6, 0.99}, TensileBand{2, 6, -INFINITY}}) {
        EXPECT_TRUE(TensileColumns(band, 8).empty()) << band.begin << " " << band.end << " " << band.scale;
        EXPECT_TRUE(TensileRows(band, 8).empty()) << band.begin << " " << band.end << " " << band.scale;
    }
    for (double scale : {double(NAN), double(INFINITY), 1e300, 255.9})
        EXPECT_EQ(TensileColumns({2, 6, scale}, 8).size(), 8u) << scale;
}

Settings Vertical(const char* flag = "1") {
    return {{"tensile_vertical", flag},
            {"tensile_vertical_y1", "1"},
            {"tensile_vertical_y2", "3"},
            {"tensile_vertical_scale", "1.5"}};
}
Settings Horizontal(const char* flag = "1") {
    return {{"tensile_horizontal", flag},
            {"tensile_horizontal_x1", "1"},
            {"tensile_horizontal_x2", "3"},
            {"tensile_horizontal_scale", "2"}};
}
Settings Both() {
    Settings both = Vertical();
    for (const auto& setting : Horizontal()) both.push_back(setting);
    return both;
}

class TensileOnAFrame : public testing::Test {
 protected:
    TestFrame frame{0, 4, 5};
    void SetUp() override {
        frame.SetSamples(0, {{0, 1, 2, 3}, {10, 11, 12, 13}, {20, 21, 22, 23}, {30, 31, 32, 33}, {40, 41, 42, 43}});
        frame.SetSamples(1, {{100, 101}, {110, 111}});
        frame.SetSamples(2, {{200, 201}, {210, 211}});
    }
};

TEST_F(TensileOnAFrame, VerticalCopiesWholeRowsAboveTheBandsEnd) {
    const std::vector<unsigned char> paddingBefore = frame.Padding(0);
    frame.Fill(0, 0);
    SetUp();
    std::mt19937 random(1);
    TestFrame packed(30, 2, 5);
    packed.Randomise(random);
    const TestFrame before = packed;
    // Rows 0 to 2 show 1, 1 and 2.
    Apply(*MakeEffect("tensile", Vertical()), frame);
    Apply(*MakeEffect("tensile", Vertical()), packed);
    EXPECT_EQ(frame.Samples(0),
              (Grid{{10, 11, 12, 13}, {10, 11, 12, 13}, {20, 21, 22, 23}, {30, 31, 32, 33}, {40, 41, 42, 43}}));
    EXPECT_EQ(frame.Samples(1), (Grid{{100, 101}, {110, 111}}));
    // The padding travels with its row.
    const auto padding = packed.Padding(0), was = before.Padding(0);
    EXPECT_TRUE(std::equal(padding.begin(), padding.begin() + 7, was.begin() + 7));
}

TEST_F(TensileOnAFrame, TheLastOfSeveralLumaPositionsDecidesChroma) {
    // Columns show 1, 1, 2 and 2: the second chroma column shows luma column 2, the first luma column 1.
    Apply(*MakeEffect("tensile", Horizontal()), frame);
    EXPECT_EQ(frame.Samples(0),
              (Grid{{1, 1, 2, 2}, {11, 11, 12, 12}, {21, 21, 22, 22}, {31, 31, 32, 32}, {41, 41, 42, 42}}));
    EXPECT_EQ(frame.Samples(1), (Grid{{100, 101}, {110, 111}}));
}

TEST_F(TensileOnAFrame, BothWaysStretchTheRowsBelowTheBandAsWell) {
    Apply(*MakeEffect("tensile", Both()), frame);
    EXPECT_EQ(frame.Samples(0),
              (Grid{{11, 11, 12, 12}, {11, 11, 12, 12}, {21, 21, 22, 22}, {31, 31, 32, 32}, {41, 41, 42, 42}}));
}

TEST_F(TensileOnAFrame, FlagsOtherThanOneAreOff) {
    const TestFrame before = frame;
    Apply(*MakeEffect("tensile", Vertical("2")), frame);
    Apply(*MakeEffect("tensile", Horizontal("-1")), frame);
    EXPECT_EQ(frame, before);
}

TEST(Tensile, GivesEveryPixelWhatTheMapsSay) {
    const auto settings = [](unsigned width, unsigned height, std::mt19937& random) {
        const unsigned x1 = random() % width, x2 = x1 + 1 + random() % (width - x1);
        const unsigned y1 = random() % height, y2 = y1 + 1 + random() % (height - y1);
        return Settings{{"tensile_horizontal_x1", std::to_string(x1)},
                        {"tensile_horizontal_x2", std::to_string(x2)},
                        {"tensile_vertical_y1", std::to_string(y1)},
                        {"tensile_vertical_y2", std::to_string(y2)},
                        {"tensile_horizontal_scale", RealBetween(1, 4, random)},
                        {"tensile_vertical_scale", RealBetween(1, 4, random)},
                        {"tensile_horizontal", "1"},
                        {"tensile_vertical", Between(0, 1, random)}};
    };
    CompareOnRandomFrames("tensile", 300, settings, [](const auto& to, const auto& from, const Settings& s) {
        const Map columns = TensileColumns({Number(s, 0), Number(s, 1), std::stod(s[4].second)}, LumaOf(to).width);
        Map rows;
        if (s[7].second == "1")
            rows = TensileRows({Number(s, 2), Number(s, 3), std::stod(s[5].second)}, LumaOf(to).height);
        const auto place = PlacerOf(to, from);
        for (unsigned y = 0; y < LumaOf(to).height; ++y)
            for (unsigned x = 0; x < columns.size(); ++x) place(x, y, {columns[x], y < rows.size() ? rows[y] : y});
    });
}

}  // namespace
}  // namespace AVBased::Testing
