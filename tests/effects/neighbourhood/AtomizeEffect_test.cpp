#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "effects/base/place_hash.h"
#include "tests/support/grids.h"

namespace AVBased::Testing {
namespace {

Settings Spray(int radius, int seed) {
    return {{"atomize_radius", std::to_string(radius)}, {"atomize_seed", std::to_string(seed)}};
}

TEST(Atomize, TakesEachPixelFromItsOwnPlaceNearby) {
    for (const int radius : {1, 3, 300})
        for (const unsigned format : {30u, 0u, 6u, 7u, 35u, 60u})
            for (const auto& [width, height] : {std::pair{1u, 1u}, {5u, 3u}, {67u, 31u}}) {
                std::mt19937 random(format + width);
                TestFrame frame(format, width, height, {{3, 1, 0, 2}, radius == 3});
                frame.Randomise(random);
                const TestFrame before = frame;
                const FormatInfo& info = *FindFormat(format);
                Apply(*MakeEffect("atomize", Spray(radius, -5)), frame, 12);
                for (unsigned p = 0; p < info.PlaneCount(); ++p) {
                    const bool chroma = p == 1 || p == 2;
                    const int across = chroma ? 1 << info.ColumnShift() : 1, down = chroma ? 1 << info.RowShift() : 1;
                    const Grid from = before.Samples(p);
                    Grid expected = from;
                    for (int y = 0; y < int(from.size()); ++y)
                        for (int x = 0; x < int(from[0].size()); ++x) {
                            const std::uint32_t hash =
                                FrameHash(std::uint32_t(-5), 12).Row(0, unsigned(y * down))(unsigned(x * across));
                            const auto step = [&](unsigned byte) {
                                const int side = 2 * std::min(radius, 255) + 1;
                                const int sum = Byte(hash, byte) + Byte(hash, byte + 1) - 255;
                                return int(std::floor((sum * side + 256) / 512.0));
                            };
                            const auto place = [](int luma, int group, std::size_t size) {
                                const int sample = int(std::floor(double(luma) / group));
                                return std::size_t(std::clamp(sample, 0, int(size) - 1));
                            };
                            expected[unsigned(y)][unsigned(x)] =
                                from[place(y * down + step(2), down, from.size())]
                                    [place(x * across + step(0), across, from[0].size())];
                        }
                    ASSERT_EQ(frame.Samples(p), expected) << "format " << format << " radius " << radius;
                }
            }
}

TEST(Atomize, ReachesTheRadiusInEveryDirectionAndNoFurther) {
    constexpr int size = 201, radius = 4;
    TestFrame columns(30, size, size), rows(30, size, size);
    Grid x(size, std::vector<unsigned>(size)), y = x;
    for (unsigned v = 0; v < size; ++v)
        for (unsigned u = 0; u < size; ++u) x[v][u] = u, y[v][u] = v;
    columns.SetSamples(0, x);
    rows.SetSamples(0, y);
    for (TestFrame* frame : {&columns, &rows}) Apply(*MakeEffect("atomize", Spray(radius, 1)), *frame);
    const Grid fromX = columns.Samples(), fromY = rows.Samples();
    Grid hits(2 * radius + 1, std::vector<unsigned>(2 * radius + 1));
    for (int v = radius; v < size - radius; ++v)
        for (int u = radius; u < size - radius; ++u)
            ++hits.at(fromY[unsigned(v)][unsigned(u)] - unsigned(v - radius))
                  .at(fromX[unsigned(v)][unsigned(u)] - unsigned(u - radius));
    // Both sums of two bytes are spread like a tent: a ninth of it lies in the middle, a hundredth at each end.
    const double places = (size - 2.0 * radius) * (size - 2.0 * radius);
    EXPECT_NEAR(hits[radius][radius] / places, 0.21 * 0.21, 0.004);
    for (const unsigned end : {0u, 2u * radius}) {
        EXPECT_NEAR(hits[end][radius] / places, 0.0247 * 0.21, 0.002);
        EXPECT_NEAR(hits[radius][end] / places, 0.0247 * 0.21, 0.002);
    }
}

TEST(Atomize, SpraysEachFrameAndSeedAnew) {
    std::mt19937 random(3);
    TestFrame frame(30, 40, 20);
    frame.Randomise(random);
    frame.SetTimeStamp(9);
    const auto sprayed = [&](int seed, int position) {
        TestFrame result = frame;
        Apply(*MakeEffect("atomize", Spray(3, seed)), result, position);
        return result.Samples();
    };
    EXPECT_NE(sprayed(0, 9), sprayed(0, 10));
    EXPECT_NE(sprayed(0, 9), sprayed(1, 9));
    TestFrame unplaced = frame;
    Apply(*MakeEffect("atomize", Spray(3, 1)), unplaced, std::numeric_limits<int>::min());
    EXPECT_EQ(unplaced.Samples(), sprayed(1, 9));
}

}  // namespace
}  // namespace AVBased::Testing
