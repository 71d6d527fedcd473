#include <gtest/gtest.h>

#include <array>
#include <cmath>

#include "tests/support/test_frames.h"

namespace AVBased::Testing {
namespace {

Settings Glass(const char* colour, const char* density) {
    return {{"colorfilter_color", colour}, {"colorfilter_density", density}};
}

TEST(ColorFilter, AbsorbsLightByDensity) {
    // 0x804000 lets 129, 65 and 0 parts of 256 through at 100; at 50 it is 193, 161 and 128.
    const std::pair<const char*, std::vector<unsigned>> densities[] = {
        {"100", {0x7F804000, 0x20320000, 0x00000000}},        {"50", {0x7FC0A07F, 0x204B007F, 0x00000000}},
        {"0", {0x7FFFFFFF, 0x206400FF, 0x00000000}},          {"-7", {0x7FFFFFFF, 0x206400FF, 0x00000000}},
        {"2147483647", {0x7F804000, 0x20320000, 0x00000000}},
    };
    for (const auto& [density, expected] : densities) {
        TestFrame frame(30, 3, 1);
        frame.SetSamples(0, {{0x7FFFFFFF, 0x206400FF, 0x00000000}});
        Apply(*MakeEffect("colorfilter", Glass("8404992", density)), frame);
        EXPECT_EQ(frame.Samples(), Grid{expected}) << density;
    }
}

using Colour = std::array<double, 3>;

Colour ToYuv(const Colour& rgb) {
    const double y = 0.299 * rgb[0] + 0.587 * rgb[1] + 0.114 * rgb[2];
    return {16 + y * 219 / 255, 128 + (rgb[2] - y) / 1.772 * 224 / 255, 128 + (rgb[0] - y) / 1.402 * 224 / 255};
}

Colour ToRgb(const Colour& yuv) {
    const double y = (yuv[0] - 16) * 255 / 219, u = (yuv[1] - 128) * 255 / 224, v = (yuv[2] - 128) * 255 / 224;
    const double red = y + 1.402 * v, blue = y + 1.772 * u;
    return {red, (y - 0.299 * red - 0.114 * blue) / 0.587, blue};
}

// Each sample by itself: to real colours, through the glass and back.
std::array<Grid, 3> ThroughGlass(const TestFrame& frame, unsigned columnShift, unsigned rowShift, const Colour& glass) {
    const std::array<Grid, 3> before{frame.Samples(0), frame.Samples(1), frame.Samples(2)};
    const auto near = [](const Grid& grid, std::size_t x, std::size_t y) {
        const auto& row = grid[std::min(y, grid.size() - 1)];
        return double(row[std::min(x, row.size() - 1)]);
    };
    std::array<Grid, 3> after = before;
    for (unsigned p = 0; p < 3; ++p)
        for (std::size_t y = 0; y < after[p].size(); ++y)
            for (std::size_t x = 0; x < after[p][y].size(); ++x) {
                Colour yuv{near(before[0], x, y), near(before[1], x >> columnShift, y >> rowShift),
                           near(before[2], x >> columnShift, y >> rowShift)};
                if (p > 0) {
                    double sum = 0;
                    for (std::size_t i = 0; i < 1u << rowShift; ++i)
                        for (std::size_t j = 0; j < 1u << columnShift; ++j)
                            sum += near(before[0], (x << columnShift) + j, (y << rowShift) + i);
                    yuv = {sum / double(1u << (columnShift + rowShift)), near(before[1], x, y), near(before[2], x, y)};
                }
                Colour rgb = ToRgb(yuv);
                for (unsigned c = 0; c < 3; ++c) rgb[c] *= glass[c];
                after[p][y][x] = unsigned(std::lround(std::clamp(ToYuv(rgb)[p], 0.0, 255.0)));
            }
    return after;
}

TEST(ColorFilter, PlanarPicturesLookThroughTheSameGlass) {
    struct Case {
        unsigned format, columnShift, rowShift;
    };
    std::mt19937 random(8);
    for (const auto& [format, columnShift, rowShift] :
         {Case{0, 1, 1}, {4, 1, 0}, {6, 2, 2}, {7, 2, 0}, {35, 1, 1}, {60, 0, 0}})
        for (auto [width, height] : {std::pair{70u, 5u}, {71u, 6u}, {8u, 8u}})
            for (bool roundUp : {false, true}) {
                TestFrame frame(format, width, height, {{7, 3, 2, 5}, roundUp});
                frame.Randomise(random);
                const auto expected = ThroughGlass(frame, columnShift, rowShift, {129 / 256.0, 65 / 256.0, 0});
                Apply(*MakeEffect("colorfilter", Glass("8404992", "100")), frame);
                for (unsigned p = 0; p < 3; ++p) {
                    const Grid actual = frame.Samples(p);
                    for (std::size_t y = 0; y < actual.size(); ++y)
                        for (std::size_t x = 0; x < actual[y].size(); ++x)
                            ASSERT_NEAR(actual[y][x], expected[p][y][x], 1)
                                << "format " << format << " plane " << p << " " << x << "," << y;
                }
            }
}

TEST(ColorFilter, ClearGlassKeepsEveryPlanarByte) {
    std::mt19937 random(9);
    for (const Settings& clear : {Glass("16777215", "100"), Glass("0", "0")}) {
        TestFrame frame(0, 35, 7);
        frame.Randomise(random);
        const TestFrame before = frame;
        Apply(*MakeEffect("colorfilter", clear), frame);
        EXPECT_EQ(frame, before);
    }
}

}  // namespace
}  // namespace AVBased::Testing
