#include <cmath>

#include "tests/support/sweep.h"

namespace AVBased::Testing {
namespace {

TEST(EdgeLight, LumaWrapsAroundChromaIsBiasedAndTheLastRowStays) {
    TestFrame frame(60, 3, 2, {{1, 1, 0, 0}, false});
    for (unsigned plane : {0u, 1u, 2u}) {
        frame.Fill(plane, 5);
        frame.SetSamples(plane, {{0, 0, 100}, {0, 4, 100}});
    }
    Apply(*MakeEffect("edgelight"), frame);
    // 3 * |(100, 4)| is 300.2; after the row comes 5, or without padding the next row's 0.
    EXPECT_EQ(frame.Samples(0), (Grid{{0, 44, 29}, {0, 4, 100}}));
    EXPECT_EQ(frame.Samples(1), (Grid{{128, 172, 157}, {0, 4, 100}}));
    EXPECT_EQ(frame.Samples(2), (Grid{{128, 172, 172}, {0, 4, 100}}));
}

int Gradient(int here, int right, int below, unsigned level) {
    const double length = std::sqrt(std::pow(here - right, 2) + std::pow(here - below, 2)) * level;
    return int(std::uint64_t(std::min(length, 4294967295.0)) % 256);
}

void Expect(TestFrame& frame, unsigned level) {
    Picture picture(frame);
    for (unsigned p = 0; p < 3; ++p) {
        const Plane in = picture.planes[p];
        unsigned pitch = 0;
        const unsigned char* const data = frame.GetBuffer(p, nullptr, &pitch, nullptr);
        const auto behind = [&](int y) {
            return picture.packed ? 0 : data[std::size_t(y) * pitch + unsigned(in.width)];
        };
        picture.planes[p] = in.Like([&](int x, int y) {
            if (y + 1 == in.height || (picture.packed && x + 1 == in.width)) return in(x, y);
            const int right = x + 1 < in.width ? in(x + 1, y) : behind(y);
            return (Gradient(in(x, y), right, in(x, y + 1), level) + (picture.IsChroma(p) ? 128 : 0)) % 256;
        });
    }
    ExpectEffect("edgelight", Numbers("edgelight_", {{"level", int(level)}}), frame, picture);
}

TEST(EdgeLight, IsTheGradientTimesTheLevelOnEveryPlane) {
    static constexpr unsigned levels[] = {0, 1, 3, 11, 12, 255, 100000, 11904000, 2147483647, 4294967295};
    SweepFrames(693,
                [](TestFrame& frame, std::mt19937& random) { Expect(frame, levels[random() % std::size(levels)]); });
}

TEST(EdgeLight, RootsAreExactForEveryPairOfDifferences) {
    // Every second sample is 0, between neighbours of every value.
    TestFrame frame(6, 512, 512);
    Grid pairs(512, std::vector<unsigned>(512));
    for (unsigned y = 0; y < 512; ++y)
        for (unsigned x = 0; x < 512; ++x) pairs[y][x] = y % 2 ? y / 2 : x % 2 * (x / 2);
    frame.SetSamples(0, pairs);
    for (const unsigned level : {1u, 2u, 3u, 4u, 5u, 6u, 7u, 8u, 9u, 10u, 11u, 12u, 100u, 8192u, 8193u, 1u << 31})
        Expect(frame, level);
}

}  // namespace
}  // namespace AVBased::Testing
