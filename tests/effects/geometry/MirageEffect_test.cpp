#include <gtest/gtest.h>

#include "tests/support/random_frames.h"

namespace AVBased::Testing {
namespace {

// Twice as large and equal weights.
const Settings doubled = {{"mirage_width", "200"}, {"mirage_alpha", "60"}};

TEST(Mirage, BlendsColoursAndTakesAlphaFromTheEnlargedCopy) {
    TestFrame frame(30, 4, 1);
    frame.SetSamples(0, {{0x10000000, 0x20404040, 0x30808080, 0x40C0C0C0}});
    Apply(*MakeEffect("mirage", doubled), frame);
    // The enlarged row is 1, 1, 2, 2.
    EXPECT_EQ(frame.Samples(), (Grid{{0x20202020, 0x20404040, 0x30808080, 0x30A0A0A0}}));
}

TEST(Mirage, BlendsSharedChromaOnceForEachLumaPosition) {
    TestFrame frame(0, 8, 2);
    frame.SetSamples(0, {{0, 10, 20, 30, 40, 50, 60, 70}, {100, 110, 120, 130, 140, 150, 160, 170}});
    frame.SetSamples(1, {{0, 100, 200, 40}});
    frame.SetSamples(2, {{100, 100, 100, 100}});
    Apply(*MakeEffect("mirage", doubled), frame);
    // Enlarged luma columns are 2, 2, 3, 3, 4, 4, 5, 5; enlarged chroma is 100, 100, 200, 200 before four blends.
    EXPECT_EQ(frame.Samples(0), (Grid{{10, 15, 25, 30, 40, 45, 55, 60}, {110, 115, 125, 130, 140, 145, 155, 160}}));
    EXPECT_EQ(frame.Samples(1), (Grid{{6, 100, 200, 50}}));
    EXPECT_EQ(frame.Samples(2), (Grid{{100, 100, 100, 100}}));
}

TEST(Mirage, StartsWithTen) {
    TestFrame fresh(60, 90, 60), set(60, 90, 60);
    std::mt19937 random(1);
    fresh.Randomise(random);
    for (unsigned p = 0; p < 4; ++p) set.SetSamples(p, fresh.Samples(p));
    Apply(*MakeEffect("mirage"), fresh);
    Apply(*MakeEffect("mirage", {{"mirage_width", "10"}, {"mirage_alpha", "10"}}), set);
    for (unsigned p = 0; p < 4; ++p) EXPECT_EQ(fresh.Samples(p), set.Samples(p));
}

TEST(Mirage, LeavesTheFrameForAnOpacityAboveAHundredOrNoFactor) {
    TestFrame frame(7, 9, 3);
    std::mt19937 random(1);
    frame.Randomise(random);
    const TestFrame before = frame;
    Apply(*MakeEffect("mirage", {{"mirage_alpha", "101"}}), frame);
    Apply(*MakeEffect("mirage", {{"mirage_alpha", "-1"}}), frame);
    Apply(*MakeEffect("mirage", {{"mirage_width", "-200"}}), frame);
    EXPECT_EQ(frame, before);
}

void BlendInto(Rgba32& p, Rgba32 own, unsigned t) {
    const auto mix = [t](unsigned a, unsigned b) { return std::uint8_t((a * (256 - t) + b * t) >> 8); };
    p = {mix(own.blue, p.blue), mix(own.green, p.green), mix(own.red, p.red), p.alpha};
}
void BlendAt(const PackedView& to, const PackedView& from, unsigned x, unsigned y, unsigned t) {
    BlendInto(to.Row(y)[x], from.Row(y)[x], t);
}
void BlendAt(const PlanarView& to, const PlanarView& from, unsigned x, unsigned y, unsigned t) {
    for (unsigned p = 0; p < 3; ++p)
        if (std::uint8_t* const sample = to.At(p, x, y))
            *sample = std::uint8_t((*from.At(p, x, y) * (256 - t) + *sample * t) >> 8);
}

TEST(Mirage, ZoomsThenBlendsEveryLumaPosition) {
    const auto settings = [](unsigned, unsigned, std::mt19937& random) {
        return Settings{{"mirage_width", Between(0, random() % 4 ? 60 : 30000, random)},
                        {"mirage_alpha", Between(0, 100, random)}};
    };
    CompareOnRandomFrames("mirage", 300, settings, [](const auto& to, const auto& from, const Settings& s) {
        const unsigned factor = Number(s, 0) + 200, zoom = (factor << 16) / 200, step = 0xC80000 / factor;
        const unsigned width = LumaOf(to).width, height = LumaOf(to).height, t = ((Number(s, 1) + 40) << 7) / 100;
        const auto place = PlacerOf(to, from);
        unsigned row = ((height * zoom >> 16) - height) * step >> 1;
        for (unsigned y = 0; y < height; ++y, row += step) {
            unsigned column = ((zoom * width >> 16) - width) * step >> 1;
            for (unsigned x = 0; x < width; ++x, column += step) place(x, y, {column >> 16, row >> 16});
        }
        for (unsigned y = 0; y < height; ++y)
            for (unsigned x = 0; x < width; ++x) BlendAt(to, from, x, y, t);
    });
}

}  // namespace
}  // namespace AVBased::Testing
