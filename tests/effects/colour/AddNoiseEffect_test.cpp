#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/support/grids.h"

namespace AVBased::Testing {
namespace {

Settings Grain(int strength, int colour, unsigned seed) {
    return {{"addnoise_strength", std::to_string(strength)},
            {"addnoise_color", std::to_string(colour)},
            {"addnoise_seed", std::to_string(seed)}};
}

TestFrame Grained(TestFrame frame, const Settings& settings, int position = 0) {
    Apply(*MakeEffect("addnoise", settings), frame, position);
    return frame;
}

struct Moments {
    double mean = 0, deviation = 0;

    explicit Moments(const Grid& grid, unsigned channel = 0) {
        double count = 0, squares = 0;
        for (const auto& row : grid)
            for (const unsigned sample : row) {
                const int value = Byte(sample, channel);
                mean += value;
                squares += value * value;
                ++count;
            }
        mean /= count;
        deviation = std::sqrt(squares / count - mean * mean);
    }
};

TEST(AddNoise, GrainIsThatOfTheSeedThePositionAndThePlace) {
    TestFrame frame(0, 6, 2);
    frame.SetSamples(0, {{255, 255, 255, 255, 255, 255}, {128, 128, 128, 128, 128, 128}});
    frame.SetSamples(1, {{128, 128, 128}});
    frame.SetSamples(2, {{128, 128, 128}});
    const TestFrame grained = Grained(frame, Grain(40, 0, 7), 3);
    EXPECT_EQ(grained.Samples(0), (Grid{{255, 255, 251, 255, 254, 255}, {194, 152, 103, 162, 184, 95}}));
    EXPECT_EQ(grained.Samples(1), frame.Samples(1));
    // Chroma of 2 x 2 pixels, weighed by the first of them.
    frame.SetSamples(0, {{0, 9, 128, 9, 255, 9}, {9, 9, 9, 9, 9, 9}});
    EXPECT_EQ(Grained(frame, Grain(40, 1, 7), 3).Samples(1), (Grid{{126, 124, 135}}));

    TestFrame packed(30, 2, 1);
    packed.SetSamples(0, {{0x77FA800A, 0x33FA800A}});
    EXPECT_EQ(Grained(packed, Grain(40, 1, 0), -1).Samples(), (Grid{{0x77FF651D, 0x33F76B00}}));
}

TEST(AddNoise, DeviatesByTheStrengthInMiddleTonesAndHalfOfItInWhite) {
    TestFrame frame(30, 256, 200);
    for (const int strength : {4, 30}) {
        frame.Fill(0, 128);
        const Moments middle(Grained(frame, Grain(strength, 0, 1)).Samples(), 2);
        EXPECT_NEAR(middle.mean, 128, 0.02 * strength);
        EXPECT_NEAR(middle.deviation, strength, 0.03 * strength);
        frame.Fill(0, 255);
        // Half of the grain is cut off, which leaves a mean of 0.399 and a deviation of 0.584 of the uncut one.
        const Moments white(Grained(frame, Grain(strength, 0, 1)).Samples(), 1);
        EXPECT_NEAR(white.mean, 255 - 0.399 * strength / 2, 0.05 * strength);
        EXPECT_NEAR(white.deviation, 0.584 * strength / 2, 0.05 * strength);
    }
}

TEST(AddNoise, ColoursAndFramesHaveGrainOfTheirOwn) {
    const auto difference = [](const Grid& a, unsigned channelA, const Grid& b, unsigned channelB) {
        Grid distances = a;
        for (unsigned y = 0; y < a.size(); ++y)
            for (unsigned x = 0; x < a[y].size(); ++x)
                distances[y][x] = unsigned(128 + Byte(a[y][x], channelA) - Byte(b[y][x], channelB));
        return Moments(distances).deviation;
    };
    TestFrame frame(30, 256, 100);
    frame.Fill(0, 128);
    const Grid plain = Grained(frame, Grain(20, 0, 5), 1).Samples();
    EXPECT_EQ(difference(plain, 0, plain, 2), 0);
    EXPECT_NEAR(difference(plain, 0, Grained(frame, Grain(20, 0, 5), 2).Samples(), 0), 28.3, 1);
    EXPECT_NEAR(difference(plain, 0, Grained(frame, Grain(20, 0, 6), 1).Samples(), 0), 28.3, 1);
    const Grid coloured = Grained(frame, Grain(20, 1, 5), 1).Samples();
    EXPECT_NEAR(difference(coloured, 0, coloured, 1), 28.3, 1);
    EXPECT_NEAR(difference(coloured, 1, coloured, 2), 28.3, 1);

    frame.SetTimeStamp(2);
    EXPECT_EQ(Grained(frame, Grain(20, 0, 5), std::numeric_limits<int>::min()), Grained(frame, Grain(20, 0, 5), 2));
}

}  // namespace
}  // namespace AVBased::Testing
