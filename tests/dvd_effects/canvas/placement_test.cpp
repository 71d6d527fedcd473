#include "dvd_effects/canvas/placement.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "effects/base/row_loops.h"
#include "tests/dvd_effects/canvas/compositor_judge.h"

namespace AVBased::Testing {
namespace {

// Bilinear and smooth at the edges, pixel by pixel, in real numbers, before anything is rounded.
Rgba32 Projected(const Layer& layer, const Projection& projection, std::int64_t x, std::int64_t y, double opacity) {
    const double px = double(x) + 0.5, py = double(y) + 0.5;
    double shown = opacity;
    for (const EdgeDistance& edge : projection.edges) shown *= std::clamp(edge.At(px, py) + 0.5, 0.0, 1.0);
    if (shown <= 0) return {};
    const Spot at = projection.At(px, py);
    const double u = at.x - 0.5, v = at.y - 0.5;
    const auto pixel = [&](double column, double line) {
        return layer.View().Row(std::size_t(
            std::clamp(line, 0.0, layer.Height() - 1.0)))[std::size_t(std::clamp(column, 0.0, layer.Width() - 1.0))];
    };
    double sums[4] = {};
    for (int k = 0; k < 4; ++k) {
        const double column = std::floor(u) + k % 2, line = std::floor(v) + k / 2;
        const Rgba32 from = pixel(column, line);
        const double weight = (1 - std::abs(u - column)) * (1 - std::abs(v - line)) * from.alpha;
        sums[0] += weight * from.blue;
        sums[1] += weight * from.green;
        sums[2] += weight * from.red;
        sums[3] += weight;
    }
    const auto colour = [&](int c) { return std::uint8_t(sums[3] > 0 ? std::lround(sums[c] / sums[3]) : 0); };
    return {colour(0), colour(1), colour(2), std::uint8_t(std::lround(sums[3] * shown))};
}

// A layer whose colours rise and fall slowly, with a transparent hole.
Layer SmoothLayer(unsigned width, unsigned height) {
    Layer layer(width, height);
    for (unsigned y = 0; y < height; ++y)
        for (unsigned x = 0; x < width; ++x)
            layer.View().Row(y)[x] = {std::uint8_t(x * 255 / width), std::uint8_t(y * 255 / height),
                                      std::uint8_t(255 - x * 127 / width),
                                      std::uint8_t(255 - std::max(0, 200 - int(x * x + y * y)))};
    return layer;
}

void ExpectNear(const TestFrame& actual, const TestFrame& expected, int tolerance) {
    const Grid a = actual.Samples(), e = expected.Samples();
    for (unsigned y = 0; y < e.size(); ++y)
        for (unsigned x = 0; x < e[y].size(); ++x)
            for (unsigned shift = 0; shift < 32; shift += 8)
                ASSERT_NEAR(int(a[y][x] >> shift & 255), int(e[y][x] >> shift & 255), tolerance)
                    << x << "," << y << " byte " << shift / 8;
}

TEST(Placement, RunsBetweenTwoPlacesOrInADirection) {
    const auto corners = [](const Placement& p) {
        return std::vector<double>{p.topLeft.x,     p.topLeft.y,     p.topRight.x,   p.topRight.y,
                                   p.bottomRight.x, p.bottomRight.y, p.bottomLeft.x, p.bottomLeft.y};
    };
    EXPECT_EQ(corners(Placement::Along({10, 20}, {10, 0}, 4)), (std::vector<double>{8, 20, 12, 20, 12, 0, 8, 0}));
    EXPECT_EQ(corners(Placement::Along({10, 20}, {10, 20}, 4)), corners(Placement::Turned({10, 20}, 0, 0)));
    EXPECT_EQ(corners(Placement::Towards({10, 10}, {0, 3}, 4, 2)), (std::vector<double>{11, 8, 11, 12, 9, 12, 9, 8}));
    EXPECT_EQ(corners(Placement::Towards({10, 10}, {0, 0}, 4, 2)), std::vector<double>(8));
}

TEST(LayTransformed, IsBilinearWithSmoothEdges) {
    const Layer layer = SmoothLayer(60, 40);
    const Placement placements[] = {
        Placement::Turned({40, 30}, 60, 40, 30),
        Placement::Turned({40.3, 29.8}, 33, 51, 211.5),
        Placement::Turned({40, 30}, -70, 50, 5),
        Placement::Turned({300, 20}, 500, 300, 45),
        {{5, 8}, {70, 20.5}, {64, 50}, {9.25, 58}},
        {{20, 10}, {60, 10}, {78, 55}, {2, 55}},
        {{60, 5}, {10, 12}, {8, 50}, {70, 40}},
        // Upright: larger, smaller, moved by parts of a pixel, over all of the frame, thinner than a pixel.
        Placement::Turned({40.3, 29.7}, 93.6, 71.3),
        Placement::Turned({40.2, 29.9}, 33.3, 51.4),
        Placement::Turned({41.3, 30.8}, 60, 40),
        Placement::Turned({300, 20}, 900.5, 400),
        Placement::Turned({40.4, 30}, 0.6, 30),
        Placement::Turned({150, 30.1}, 290, 0.7),
    };
    for (const Placement& placement : placements)
        for (unsigned opacity : {255u, 90u}) {
            TestFrame expected(30, 300, 61);
            std::mt19937 random(4);
            expected.Randomise(random);
            ForFrame(
                [](const PackedView& view) {
                    for (unsigned y = 0; y < view.height; ++y)
                        for (unsigned x = 0; x < view.width; ++x) view.Row(y)[x].alpha = 255;
                },
                [](const PlanarView&) {}, expected);
            TestFrame actual = expected;
            SCOPED_TRACE(testing::Message() << "placement " << &placement - placements << " opacity " << opacity);
            const auto projection = Project(placement, layer.Width(), layer.Height());
            ASSERT_TRUE(projection);
            BlendJudge::Lay(expected,
                            [&](auto x, auto y) { return Projected(layer, *projection, x, y, opacity / 255.0); });
            Canvas(actual, BestInstructionSet()).LayTransformed(layer, placement, std::uint8_t(opacity));
            ExpectNear(actual, expected, 4);
            EXPECT_TRUE(actual.GuardsIntact());
            if (HasFatalFailure()) return;
        }
}

TEST(LayTransformed, UnturnedAtWholePixelsIsLay) {
    std::mt19937 random(8);
    for (unsigned i = 0; i < 90; ++i) {
        const TestFrame frame = RandomFrame(i, random);
        const Layer layer = RandomLayer(1 + random() % 40, 1 + random() % 9, random);
        const int x = int(random() % 30) - 10, y = int(random() % 20) - 6;
        TestFrame expected = frame;
        Canvas(expected, BestInstructionSet()).Lay(layer, x, y);
        for (InstructionSet set : allInstructionSets) {
            if (!IsUsable(set)) continue;
            TestFrame actual = frame;
            Canvas(actual, set)
                .LayTransformed(layer, Placement::Turned({x + layer.Width() / 2.0, y + layer.Height() / 2.0},
                                                         layer.Width(), layer.Height()));
            ASSERT_EQ(actual, expected) << "frame " << i << " set " << int(set);
        }
    }
}

TEST(LayTransformed, StaysWithinItsWindow) {
    std::mt19937 random(6);
    const Layer layer = RandomLayer(20, 20, random);
    for (const double degrees : {0.0, 20.0}) {
        TestFrame frame(30, 30, 30);
        frame.Randomise(random);
        const Placement placement = Placement::Turned({15, 15}, 25.5, 27, degrees);
        TestFrame whole = frame, part = frame;
        Canvas(whole, BestInstructionSet()).LayTransformed(layer, placement);
        Canvas(part, BestInstructionSet()).LayTransformed(layer, placement, 255, {0, 11, 8, 21});
        const Grid before = frame.Samples(), all = whole.Samples(), within = part.Samples();
        for (unsigned y = 0; y < 30; ++y)
            for (unsigned x = 0; x < 30; ++x) {
                const bool inside = x < 11 && y >= 8 && y < 21;
                ASSERT_EQ(within[y][x], inside ? all[y][x] : before[y][x]) << x << "," << y;
            }
        Canvas(part, BestInstructionSet()).LayTransformed(layer, placement, 255, {12, 12, 5, 4});
        EXPECT_EQ(part.Samples(), within);
    }
}

TEST(LayTransformed, GivesTheSameBytesOnEveryProcessor) {
    std::mt19937 random(6);
    const auto between = [&](double least, double most) {
        return std::uniform_real_distribution<double>(least, most)(random);
    };
    for (unsigned i = 0; i < 180; ++i) {
        const TestFrame frame = RandomFrame(i, random);
        const bool single = i % 7 == 0, upright = i % 5 < 2;
        Layer layer = single ? RandomLayer(1, 1, random) : RandomLayer(1 + random() % 60, 1 + random() % 30, random);
        if (i % 4 == 0) ForEachPixel(layer.View(), [](std::uint32_t pixel) { return pixel | alphaMask; });
        auto placement = Placement::Turned({between(-9, 40), between(-9, 20)}, between(1, 300), between(1, 50),
                                           upright ? 0 : between(-180, 180));
        if (i % 3 == 0 && !upright) placement.topLeft.x += between(-1, 1);
        const auto opacity = std::uint8_t(i % 2 ? 255 : random() % 256);
        TestFrame plain = frame;
        Canvas(plain, InstructionSet::Baseline).LayTransformed(layer, placement, opacity);
        TestFrame actual = frame;
        Canvas(actual, BestInstructionSet()).LayTransformed(layer, placement, opacity);
        ASSERT_EQ(actual, plain) << "frame " << i;
    }
}

TEST(LayTransformed, ShowsNothingWhereNothingIsToShow) {
    constexpr double infinite = std::numeric_limits<double>::infinity(), nan = std::numeric_limits<double>::quiet_NaN();
    std::mt19937 random(2);
    const Layer layer = RandomLayer(9, 9, random);
    const Placement bad[] = {
        {{0, 0}, {9, 0}, {9, 0}, {0, 0}},          {{0, 0}, {9, 0}, {1, 1}, {0, 9}},
        {{0, 0}, {9, 9}, {9, 0}, {0, 9}},          {{nan, 0}, {9, 0}, {9, 9}, {0, 9}},
        {{0, 0}, {infinite, 0}, {9, 9}, {0, 9}},   Placement::Turned({5, 5}, 1e30, 1e30, 3),
        Placement::Turned({-4000, 5}, 90, 90, 45), Placement::Turned({5, 5}, 0, 9),
    };
    for (unsigned format : {30u, 0u, 35u}) {
        TestFrame frame(format, 20, 20);
        frame.Randomise(random);
        const TestFrame before = frame;
        for (const Placement& placement : bad) Canvas(frame, BestInstructionSet()).LayTransformed(layer, placement);
        Canvas(frame, BestInstructionSet()).LayTransformed(Layer(), Placement::Turned({5, 5}, 9, 9));
        EXPECT_EQ(frame, before);
        // Larger than anything: the whole frame is covered, and nothing beside it.
        Canvas(frame, BestInstructionSet()).LayTransformed(layer, Placement::Turned({5, 5}, 4e6, 1e6, 77));
        EXPECT_TRUE(frame.GuardsIntact());
    }
}

}  // namespace
}  // namespace AVBased::Testing
