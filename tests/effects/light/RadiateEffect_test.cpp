#include <gtest/gtest.h>

#include "tests/support/test_frames.h"

namespace AVBased::Testing {
namespace {

Settings Radiate(const char* x, const char* y, const char* level) {
    return {{"radiate_x", x}, {"radiate_y", y}, {"radiate_level", level}};
}

TEST(Radiate, WithoutLevelSamplesThePixelRightAndBelow) {
    TestFrame frame(30, 2, 2);
    frame.SetSamples(0, {{0xAA000010, 0xBB000020}, {0xCC00FF30, 0xDD00FF08}});
    Apply(*MakeEffect("radiate", Radiate("0", "0", "0")), frame);
    // Beyond the edge that is the nearest pixel inside; 17 values are divided by 16.
    EXPECT_EQ(frame.Samples(), (Grid{{0xAA00FF09, 0xBB00FF0A}, {0xCC00FF0B, 0xDD00FF08}}));
}

TEST(Radiate, StepsTowardsTheCentre) {
    // At this level the first step covers all of the way but a sixteenth of a pixel; chroma shows it without the bias.
    TestFrame frame(60, 4, 3);
    for (unsigned p = 0; p < 4; ++p) frame.SetSamples(p, {{0, 16, 32, 48}, {1, 2, 3, 4}, {160, 80, 10, 9}});
    Apply(*MakeEffect("radiate", Radiate("1", "0", "16384")), frame);
    EXPECT_EQ(frame.Samples(0), (Grid{{255, 255, 255, 255}, {255, 255, 255, 255}, {255, 255, 255, 255}}));
    EXPECT_EQ(frame.Samples(1), (Grid{{3, 4, 5, 6}, {3, 3, 3, 3}, {13, 8, 3, 3}}));
    EXPECT_EQ(frame.Samples(3), (Grid{{0, 16, 32, 48}, {1, 2, 3, 4}, {160, 80, 10, 9}}));
}

TEST(Radiate, WalksInSixteenSteps) {
    // 512 from the centre, 204 / 1024 of which goes with each step: 410, 329, 264 and on to 25, all rounded down and
    // moved by one: columns 2, 2, 2, 1 and twelve times 1.
    TestFrame frame(60, 3, 1);
    for (unsigned p = 0; p < 3; ++p) frame.SetSamples(p, {{0, 16, 160}});
    Apply(*MakeEffect("radiate", Radiate("0", "0", "3276")), frame);
    EXPECT_EQ(frame.Samples(1)[0][2], (160u + 3 * 160 + 13 * 16) / 16);
}

TEST(Radiate, SaturatesABiasBelowBlack) {
    TestFrame frame(60, 1, 1);
    for (auto [before, after] : {std::pair{0u, 255u}, {16u, 16u}}) {
        frame.Fill(0, before);
        Apply(*MakeEffect("radiate", Radiate("0", "0", "-8")), frame);
        EXPECT_EQ(frame.Samples(0), (Grid{{after}}));
    }
}

TEST(Radiate, StartsWithItsRegisteredDefaults) {
    TestFrame frame(60, 1, 1);
    for (unsigned p = 0; p < 4; ++p) frame.Fill(p, 0);
    Apply(*MakeEffect("radiate"), frame);
    EXPECT_EQ(frame.Samples(0), (Grid{{300 / 8}}));
    EXPECT_EQ(frame.Samples(1), (Grid{{0}}));
}

}  // namespace
}  // namespace AVBased::Testing
