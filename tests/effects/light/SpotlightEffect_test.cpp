#include "effects/light/SpotlightEffect.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "tests/support/random_frames.h"

namespace AVBased::Testing {
namespace {

Settings Spot(const char* x, const char* y, const char* radius) {
    return {{"spotlight_x", x}, {"spotlight_y", y}, {"spotlight_r", radius}};
}

// A black frame with a spot of radius 8 about (8, 8): the core ends at distance 2, the ring at 8.
TEST(Spotlight, FadesFromTheCoreToTheRim) {
    TestFrame frame(30, 17, 17);
    frame.Fill(0, 0);
    Apply(*MakeEffect("spotlight", Spot("8", "8", "8")), frame);
    std::vector<unsigned> blue;
    for (unsigned x = 0; x < 17; ++x) blue.push_back(frame.Samples()[8][x] & 255);
    EXPECT_EQ(blue,
              (std::vector<unsigned>{0, 37, 75, 113, 152, 190, 229, 229, 229, 229, 229, 190, 152, 113, 75, 37, 0}));
    EXPECT_EQ(frame.Samples()[8][8], 0x00E5E5E5u);
    EXPECT_EQ(frame.Samples()[0][0], 0u);
}

TEST(Spotlight, TintsSharedChromaOnceForEachLumaPosition) {
    TestFrame frame(0, 17, 17);
    for (unsigned p = 0; p < 3; ++p) frame.Fill(p, 0);
    Apply(*MakeEffect("spotlight", Spot("8", "8", "8")), frame);
    EXPECT_EQ(frame.Samples(0)[8][8], (235u * 26214 >> 16) + 128);
    // 51, 81, 99, 110 after one to four times, without brightness.
    EXPECT_EQ(frame.Samples(1)[4][4], 110u);
}

TEST(Spotlight, ConvertsItsColourAndItsBrightness) {
    TestFrame frame(60, 5, 5);
    for (unsigned p = 0; p < 4; ++p) frame.Fill(p, 0);
    Settings settings = Spot("2", "2", "2");
    settings.insert(settings.end(),
                    {{"spotlight_color", "16711680"}, {"spotlight_density", "100"}, {"spotlight_brightness", "-1"}});
    Apply(*MakeEffect("spotlight", settings), frame);
    // -1 per cent is -2 in 256, added without a sign only where the sum stays at 0 or above.
    EXPECT_EQ(frame.Samples(0)[2][2], 81u - 2);
    EXPECT_EQ(frame.Samples(1)[2][2], 90u);
    EXPECT_EQ(frame.Samples(2)[2][2], 239u);
    EXPECT_EQ(frame.Samples(3)[2][2], 0u);
}

TEST(Spotlight, RowsAgreeWithPixelsByThemselves) {
    std::mt19937 random(12);
    for (unsigned format : {30u, 0u, 4u, 6u, 7u, 60u})
        for (int radius : {2, 9, 40, 700, 2047, 2048}) {
            const SpotlightSettings settings{
                .x = unsigned(random() % 70), .y = unsigned(random() % 24), .radius = unsigned(radius)};
            TestFrame rows(format, 67, 23, {{}, random() % 2 == 0});
            rows.Randomise(random);
            TestFrame pixels = rows;
            Apply(*MakeEffect("spotlight", Spot(std::to_string(settings.x).c_str(), std::to_string(settings.y).c_str(),
                                                std::to_string(radius).c_str())),
                  rows);
            ForFrame([&](const PackedView& view) { SpotlightRgba32Effect(settings, view); },
                     [&](const PlanarView& view) { SpotlightComponentEffect(settings, view); }, pixels);
            ASSERT_EQ(rows, pixels) << "format " << format << " radius " << radius;
        }
}

TEST(Spotlight, FadesADarkeningTowardsTheRimToo) {
    TestFrame frame(30, 17, 17);
    frame.Fill(0, 200);
    Settings settings = Spot("8", "8", "8");
    settings.insert(settings.end(), {{"spotlight_density", "0"}, {"spotlight_brightness", "-30"}});
    Apply(*MakeEffect("spotlight", settings), frame);
    // -30 per cent is -76 in the core and a sixth of that for each pixel inwards from the rim, rounded down.
    std::vector<unsigned> blue;
    for (unsigned x = 0; x < 9; ++x) blue.push_back(frame.Samples()[8][x] & 255);
    EXPECT_EQ(blue, (std::vector<unsigned>{200, 187, 174, 162, 149, 136, 124, 124, 124}));
}

TEST(Spotlight, TheRadiusDecidesWhetherThereIsLight) {
    TestFrame frame(30, 9, 9);
    std::mt19937 random(1);
    frame.Randomise(random);
    const TestFrame before = frame;
    for (const char* radius : {"0", "1", "1431655766"}) {
        Apply(*MakeEffect("spotlight", Spot("4", "4", radius)), frame);
        EXPECT_EQ(frame, before) << radius;
    }
    Apply(*MakeEffect("spotlight", Spot("10", "4", "5")), frame);
    EXPECT_EQ(frame, before);
    Apply(*MakeEffect("spotlight", Spot("9", "4", "5")), frame);
    EXPECT_NE(frame.Samples()[4][8], before.Samples()[4][8]);
}

std::uint8_t Lit(unsigned channel, unsigned colour, unsigned weight, unsigned added) {
    return std::uint8_t(std::min(((channel * (65536 - weight) + colour * weight) >> 16) + added, 255u));
}
void LightAt(const PackedView& to, unsigned x, unsigned y, unsigned weight, unsigned added) {
    Rgba32& p = to.Row(y)[x];
    p = {Lit(p.blue, 0x56, weight, added), Lit(p.green, 0x34, weight, added), Lit(p.red, 0x12, weight, added), p.alpha};
}
void LightAt(const PlanarView& to, unsigned x, unsigned y, unsigned weight, unsigned added) {
    static constexpr unsigned yuv[] = {55, 147, 110};  // of 0x123456
    for (unsigned p = 0; p < 3; ++p)
        if (std::uint8_t* const sample = to.At(p, x, y)) *sample = Lit(*sample, yuv[p], weight, p ? 0 : added);
}

TEST(Spotlight, LightsPositionByPosition) {
    const auto settings = [](unsigned width, unsigned height, std::mt19937& random) {
        Settings spot = Spot(Between(0, int(width), random).c_str(), Between(0, int(height), random).c_str(),
                             Between(2, random() % 8 ? 120 : 3000, random).c_str());
        spot.insert(spot.end(), {{"spotlight_color", std::to_string(0x123456)},
                                 {"spotlight_density", Between(0, random() % 4 ? 100 : 300, random)},
                                 {"spotlight_brightness", Between(random() % 4 ? 0 : -40, 150, random)}});
        return spot;
    };
    CompareOnRandomFrames("spotlight", 400, settings, [](const auto& to, const auto&, const Settings& s) {
        const unsigned cx = Number(s, 0), cy = Number(s, 1), r = Number(s, 2), ring = 3 * r / 4;
        const unsigned weight = Number(s, 4) * 65536 / 100;
        const int added = std::stoi(s[5].second) * 256 / 100, step = added * 256 / int(ring);
        for (unsigned y = cy > r ? cy - r : 0; y < std::min(LumaOf(to).height, cy + r); ++y)
            for (unsigned x = cx > r ? cx - r : 0; x < std::min(LumaOf(to).width, cx + r); ++x) {
                const unsigned square = (x - cx) * (x - cx) + (y - cy) * (y - cy);
                const unsigned toRim = r - unsigned(std::sqrt(double(square)));
                if (square > r * r) continue;
                if (square > (r - ring) * (r - ring))
                    LightAt(to, x, y, weight / ring * toRim, unsigned(int(toRim) * step >> 8));
                else
                    LightAt(to, x, y, weight, unsigned(added));
            }
    });
}

}  // namespace
}  // namespace AVBased::Testing
