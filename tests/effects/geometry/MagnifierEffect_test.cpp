#include "effects/geometry/MagnifierEffect.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <type_traits>

#include "tests/support/random_frames.h"

namespace AVBased::Testing {
namespace {

Settings Glass(const char* radius, const char* x, const char* y, const char* scale) {
    return {{"magnifier_r", radius}, {"magnifier_x", x}, {"magnifier_y", y}, {"magnifier_scale", scale}};
}
EffectOwner MakeMagnifier(unsigned cpuFeatures, const Settings& settings) {
    EffectOwner effect(new CMagnifierVideoImageEffect(cpuFeatures));
    for (const auto& [name, value] : settings) effect->SetProperty(name.c_str(), value.c_str());
    return effect;
}

// Sample (x, y) is 16 y + x.
TestFrame Numbered(unsigned format, unsigned size) {
    TestFrame frame(format, size, size);
    Grid grid(size, std::vector<unsigned>(size));
    for (unsigned y = 0; y < size; ++y)
        for (unsigned x = 0; x < size; ++x) grid[y][x] = 16 * y + x;
    frame.SetSamples(0, grid);
    return frame;
}

TEST(Magnifier, TakesTheNearestPixelUpToFactorTwo) {
    TestFrame frame = Numbered(30, 16);
    Apply(*MakeEffect("magnifier", Glass("4", "8", "8", "2")), frame);
    std::vector<unsigned> row = {128, 129, 130, 131, 132, 134, 135, 135, 136, 136, 137, 137, 140, 141, 142, 143};
    // Columns 4 and 12 lie on the rim, which is not changed.
    EXPECT_EQ(frame.Samples()[8], row);
}

TEST(Magnifier, MixesNeighboursBeyondFactorTwo) {
    // A glass of radius 2 shows 3.75, 4 and 4.25 at 3, 4 and 5.
    TestFrame frame(30, 8, 8);
    frame.Fill(0, 0);
    Grid grid = frame.Samples();
    grid[3][3] = 10, grid[3][4] = 20, grid[4][3] = 30, grid[4][4] = 41, grid[4][5] = 0xFF000001;
    frame.SetSamples(0, grid);
    TestFrame twice = frame;
    const Settings glass = Glass("2", "4", "4", "4");
    Apply(*MakeMagnifier(0, glass), frame);
    EXPECT_EQ(frame.Samples()[4][5], 0x3F00001Fu);
    EXPECT_EQ(frame.Samples()[3][3], 33u);
    // With a vector unit each of the two steps truncates.
    for (unsigned features : {1u, 4u}) {
        TestFrame result = twice;
        Apply(*MakeMagnifier(features, glass), result);
        EXPECT_EQ(result.Samples()[3][3], 32u);
        EXPECT_EQ(result.Samples()[4][5], 0x3F00001Fu);
    }
}

TEST(Magnifier, ExchangesTheFractionsOfPlanarPictures) {
    TestFrame frame(0, 8, 8);
    for (unsigned p = 0; p < 3; ++p) frame.Fill(p, 0);
    Grid luma = frame.Samples(0), chroma = frame.Samples(1);
    luma[4][3] = 100, luma[5][3] = 200, luma[4][4] = 255;
    chroma[1][1] = 64, chroma[2][1] = 128;
    frame.SetSamples(0, luma);
    frame.SetSamples(1, chroma);
    Apply(*MakeEffect("magnifier", Glass("2", "4", "4", "4")), frame);
    // (3, 4) shows (3.75, 4): three quarters come from the sample below, not from the one to the right.
    EXPECT_EQ(frame.Samples(0)[4][3], 175u);
    // Chroma (1, 2) is written by (3, 4) and then by (3, 5), which shows (3.75, 4.25): 37 in 256 of the right one's.
    EXPECT_EQ(frame.Samples(1)[2][1], (128u * (256 - 64 - 144)) >> 8);
}

TEST(Magnifier, AGlassCutByTheEdgeKeepsTheFirstPixelsOnlyWhenPackedAndMixed) {
    for (auto [format, scale, keeps] :
         {std::tuple{30u, "3", true}, {30u, "2", false}, {60u, "3", false}, {60u, "2", false}}) {
        TestFrame frame = Numbered(format, 16);
        const Grid before = frame.Samples();
        Apply(*MakeEffect("magnifier", Glass("4", "2", "8", scale)), frame);
        EXPECT_EQ(frame.Samples()[8][0] == before[8][0], keeps) << format << " " << scale;
        EXPECT_NE(frame.Samples()[8][4], before[8][4]);
    }
}

TEST(Magnifier, LeavesTheFrameWithoutAGlass) {
    TestFrame frame = Numbered(30, 15);
    const TestFrame before = frame;
    for (const Settings& settings : {Glass("8", "7", "7", "2"), Glass("4", "16", "7", "2"), Glass("4", "7", "16", "2"),
                                     Glass("4", "7", "7", "1"), Glass("4", "7", "7", "-3"), Settings{}}) {
        Apply(*MakeEffect("magnifier", settings), frame);
        EXPECT_EQ(frame, before);
    }
    Apply(*MakeEffect("magnifier", Glass("7", "15", "15", "2.0001")), frame);
    EXPECT_FALSE(frame == before);
}

// A plane's sample and its right, lower and lower right neighbours, inside the plane.
template <class Sample>
std::array<Sample, 4> Around(const PlaneView<Sample>& plane, unsigned x, unsigned y) {
    const unsigned x0 = std::min(x, plane.width - 1), x1 = std::min(x + 1, plane.width - 1);
    const unsigned y0 = std::min(y, plane.height - 1), y1 = std::min(y + 1, plane.height - 1);
    return {plane.Row(y0)[x0], plane.Row(y0)[x1], plane.Row(y1)[x0], plane.Row(y1)[x1]};
}
int Mixed(int a, int b, unsigned share) { return a + ((b - a) * int(share) >> 8); }

void MixAt(const PackedView& to, const PackedView& from, unsigned x, unsigned y, unsigned sx, unsigned sy) {
    const auto [own, right, below, belowRight] = Around(from, sx >> 16, sy >> 16);
    const auto mix = [&](std::uint8_t Rgba32::*channel) {
        const unsigned fx = sx >> 8 & 255, fy = sy >> 8 & 255;
        return std::uint8_t(
            Mixed(Mixed(own.*channel, right.*channel, fx), Mixed(below.*channel, belowRight.*channel, fx), fy));
    };
    to.Row(y)[x] = {mix(&Rgba32::blue), mix(&Rgba32::green), mix(&Rgba32::red), mix(&Rgba32::alpha)};
}
void MixAt(const PlanarView& to, const PlanarView& from, unsigned x, unsigned y, unsigned sx, unsigned sy) {
    const unsigned fx = sx >> 8 & 255, fy = sy >> 8 & 255, both = fx * fy >> 8, right = fy - both, below = fx - both;
    for (unsigned p = 0; p < 3; ++p)
        if (std::uint8_t* const sample = to.At(p, x, y)) {
            const auto n =
                Around(from.plane[p], sx >> 16 >> (p ? from.columnShift : 0), sy >> 16 >> (p ? from.rowShift : 0));
            *sample = std::uint8_t((n[0] * (256 - fy - below) + n[1] * right + n[2] * below + n[3] * both) >> 8);
        }
}

TEST(Magnifier, TakesWhatTheStepsSayInsideTheCircle) {
    const auto settings = [](unsigned width, unsigned height, std::mt19937& random) {
        return Settings{{"magnifier_r", Between(0, int(std::min(width, height) / 2), random)},
                        {"magnifier_x", Between(0, int(width), random)},
                        {"magnifier_y", Between(0, int(height), random)},
                        {"magnifier_scale", RealBetween(1, random() % 2 ? 2 : 7, random)}};
    };
    CompareOnRandomFrames("magnifier", 400, settings, [](const auto& to, const auto& from, const Settings& s) {
        const unsigned r = Number(s, 0), cx = Number(s, 1), cy = Number(s, 2);
        const double scale = std::stod(s[3].second);
        const bool nearest = scale <= 2;
        const unsigned edge = !nearest && std::is_same_v<decltype(to), const PackedView&>;
        const unsigned left = cx < r ? edge : cx - r, top = cy < r ? edge : cy - r;
        const unsigned width = cx < r ? cx + r : std::min(2 * r, LumaOf(to).width - left);
        const unsigned height = cy < r ? cy + r : std::min(2 * r, LumaOf(to).height - top);
        const unsigned step = unsigned((nearest ? 256 : 65536) / scale);
        const unsigned xSurplus = (unsigned(width * scale) - width) * step,
                       ySurplus = (unsigned(height * scale) - height) * step;
        for (unsigned j = 0; j < height; ++j)
            for (unsigned i = 0; i < width; ++i) {
                const unsigned x = left + i, y = top + j;
                if ((x - cx) * (x - cx) + (y - cy) * (y - cy) >= r * r) continue;
                if (nearest)
                    PlacerOf(to, from)(
                        x, y, {(i * step >> 8) + (xSurplus >> 9) + left, (j * step >> 8) + (ySurplus >> 9) + top});
                else
                    MixAt(to, from, x, y, i * step + (xSurplus >> 1) + (left << 16),
                          j * step + (ySurplus >> 1) + (top << 16));
            }
    });
}

}  // namespace
}  // namespace AVBased::Testing
