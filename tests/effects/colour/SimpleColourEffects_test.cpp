#include <gtest/gtest.h>

#include "tests/support/test_frames.h"

namespace AVBased::Testing {
namespace {

// The result of an effect on one row of packed pixels, 0xAARRGGBB.
std::vector<unsigned> OnPixels(const char* effect, std::vector<unsigned> pixels) {
    TestFrame frame(30, unsigned(pixels.size()), 1);
    frame.SetSamples(0, {std::move(pixels)});
    Apply(*MakeEffect(effect), frame);
    return frame.Samples().front();
}

// A 4 x 2 picture, so that chroma has one row of two samples.
TestFrame PlanarPicture() {
    TestFrame frame(35, 4, 2);
    for (unsigned p = 0; p < 4; ++p) frame.Fill(p, 99);
    frame.SetSamples(0, {{0, 16, 128, 255}, {1, 2, 3, 4}});
    frame.SetSamples(1, {{10, 20}});
    frame.SetSamples(2, {{30, 240}});
    return frame;
}

TEST(SimpleColourEffects, GrayTakesTheTruncatedMeanOfEachPixel) {
    EXPECT_EQ(OnPixels("gray", {0xC81F140A, 0x00FFFFFF, 0xFF000002, 0x01FF0000}),
              (std::vector<unsigned>{0xC8141414, 0x00FFFFFF, 0xFF000000, 0x01555555}));
}

TEST(SimpleColourEffects, GrayMeanIsExactForEverySum) {
    for (unsigned sum = 0; sum <= 765; ++sum) {
        const unsigned blue = std::min(sum, 255u), green = std::min(sum - blue, 255u), red = sum - blue - green;
        const unsigned mean = sum / 3;
        ASSERT_EQ(OnPixels("gray", {red << 16 | green << 8 | blue}).front(), mean * 0x010101) << sum;
    }
}

TEST(SimpleColourEffects, InvertAndFlipColorKeepAlpha) {
    EXPECT_EQ(OnPixels("invert", {0x40102030, 0xFFFF0080}), (std::vector<unsigned>{0x40EFDFCF, 0xFF00FF7F}));
    EXPECT_EQ(OnPixels("flip_color", {0x40102030, 0xFFFF0080}), (std::vector<unsigned>{0x40302010, 0xFF8000FF}));
}

TEST(SimpleColourEffects, AgedFilmNeverGoesBelowItsDarkestTone) {
    // Means 0, 34, 35, 36 and 255.
    EXPECT_EQ(OnPixels("aged_film", {0x07000000, 0x07222222, 0x07232323, 0x07242424, 0x07FFFFFF}),
              (std::vector<unsigned>{0x07231400, 0x07231400, 0x07231400, 0x07241501, 0x07FFF0DC}));
}

TEST(SimpleColourEffects, PlanarToneEffectsFillWholeChromaPlanesPaddingIncluded) {
    for (auto [effect, u, v] : {std::tuple{"gray", 127u, 127u}, {"aged_film", 117u, 136u}}) {
        TestFrame frame = PlanarPicture(), expected = PlanarPicture();
        expected.Fill(1, u);
        expected.Fill(2, v);
        Apply(*MakeEffect(effect), frame);
        EXPECT_EQ(frame, expected) << effect;
    }
}

TEST(SimpleColourEffects, GrayFillsPlanesTooLargeForTheCacheToTheLastByte) {
    for (unsigned padding : {0u, 1u, 63u}) {
        TestFrame frame(60, 517, 521, {{0, padding, padding, 0}}), expected = frame;
        expected.Fill(1, 127);
        expected.Fill(2, 127);
        Apply(*MakeEffect("gray"), frame);
        EXPECT_EQ(frame, expected) << padding;
    }
}

TEST(SimpleColourEffects, PlanarInvertNegatesLumaAndChromaRows) {
    TestFrame frame = PlanarPicture(), expected = PlanarPicture();
    expected.SetSamples(0, {{255, 239, 127, 0}, {254, 253, 252, 251}});
    expected.SetSamples(1, {{245, 235}});
    expected.SetSamples(2, {{225, 15}});
    Apply(*MakeEffect("invert"), frame);
    EXPECT_EQ(frame, expected);
}

TEST(SimpleColourEffects, PlanarFlipColorExchangesChromaRowsOfDifferentPitches) {
    TestFrame frame(4, 18, 3, {{1, 2, 11, 0}});
    std::mt19937 random(11);
    frame.Randomise(random);
    TestFrame expected = frame;
    expected.SetSamples(1, frame.Samples(2));
    expected.SetSamples(2, frame.Samples(1));
    Apply(*MakeEffect("flip_color"), frame);
    EXPECT_EQ(frame, expected);
}

}  // namespace
}  // namespace AVBased::Testing
