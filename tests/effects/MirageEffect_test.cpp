#include <gtest/gtest.h>

#include "tests/support/test_frames.h"

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

}  // namespace
}  // namespace AVBased::Testing
