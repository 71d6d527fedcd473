#include "dvd_effects/canvas/compositor.h"

#include <gtest/gtest.h>

#include "tests/dvd_effects/canvas/compositor_judge.h"

namespace AVBased::Testing {
namespace {

TEST(Canvas, LaysAsTheRuleSaysOnEveryFormat) {
    std::mt19937 random(11);
    for (unsigned i = 0; i < 270; ++i) {
        const TestFrame frame = RandomFrame(i, random);
        const Layer layer = RandomLayer(1 + random() % 40, 1 + random() % 12, random);
        const int x = int(random() % 60) - 30, y = int(random() % 30) - 12;
        const unsigned opacity = random() % 2 ? 255 : random() % 256;
        SCOPED_TRACE(testing::Message() << "frame " << i << " at " << x << "," << y << " opacity " << opacity);
        CompareWithJudge(
            frame, [&](auto px, auto py) { return WithOpacity(PixelOf(layer, px - x, py - y), opacity); },
            [&](Canvas& canvas) { canvas.Lay(layer, x, y, std::uint8_t(opacity)); });
        if (HasFatalFailure()) return;
    }
}

TEST(Canvas, IsNotReachedFromFarOutside) {
    constexpr int far[] = {2147483647, -2147483647 - 1, 40, -40};
    std::mt19937 random(3);
    const Layer layer = RandomLayer(40, 40, random), none;
    for (unsigned format : {30u, 0u, 60u})
        for (int place : far) {
            TestFrame frame(format, 40, 40);
            frame.Randomise(random);
            const TestFrame before = frame;
            Canvas canvas(frame, BestInstructionSet());
            canvas.Lay(layer, place, 3);
            canvas.Lay(layer, 3, place);
            canvas.Lay(none, 0, 0);
            EXPECT_EQ(frame, before);
        }
}

TEST(Canvas, LaysThroughAMap) {
    std::mt19937 random(5);
    for (unsigned i = 0; i < 90; ++i) {
        const TestFrame frame = RandomFrame(i, random);
        const unsigned width = 1 + random() % 12, height = 1 + random() % 9;
        const Layer layer = RandomLayer(width, height, random);
        std::vector<unsigned char> coverage(width * height);
        std::vector<int> columns(width * height), rows(width * height);
        for (unsigned k = 0; k < width * height; ++k) {
            coverage[k] = static_cast<unsigned char>(random() % 11);
            columns[k] = int(random() % (width + 2)) - 1;
            rows[k] = int(random() % (height + 2)) - 1;
        }
        const int x = int(random() % 20) - 5, y = int(random() % 10) - 5;
        SCOPED_TRACE(testing::Message() << "frame " << i);
        CompareWithJudge(
            frame,
            [&](std::int64_t px, std::int64_t py) {
                if (px < x || py < y || px >= x + int(width) || py >= y + int(height)) return Rgba32{};
                const std::size_t at = std::size_t(py - y) * width + std::size_t(px - x);
                return WithOpacity(PixelOf(layer, columns[at], rows[at]), coverage[at] * 255u / 10);
            },
            [&](Canvas& canvas) {
                canvas.LayWarped(layer, {coverage.data(), columns.data(), rows.data(), width, height}, x, y);
            });
        if (HasFatalFailure()) return;
    }
}

TEST(Canvas, KeepsALayersColoursOnATransparentFrame) {
    std::mt19937 random(1);
    Layer layer = RandomLayer(3, 2, random);
    layer.View().Row(0)[0] = {10, 20, 30, 100};
    TestFrame frame(30, 3, 2);
    Canvas canvas(frame, BestInstructionSet());
    canvas.Clear();
    canvas.Lay(layer, 0, 0);
    EXPECT_EQ(frame.Samples()[0][0], 100u << 24 | 30 << 16 | 20 << 8 | 10);
}

TEST(Canvas, ClearsToTransparentBlackAndKeepsPadding) {
    std::mt19937 random(9);
    TestFrame frame(35, 5, 3, {{4, 2, 2, 4}, true});
    frame.Randomise(random);
    const TestFrame before = frame;
    Canvas(frame, BestInstructionSet()).Clear();
    for (unsigned p = 0; p < 4; ++p) {
        static constexpr unsigned black[] = {16, 128, 128, 0};
        for (const auto& row : frame.Samples(p)) EXPECT_EQ(row, std::vector<unsigned>(row.size(), black[p]));
        EXPECT_EQ(frame.Padding(p), before.Padding(p));
    }
}

TEST(Canvas, CopiesAPictureAndFillsTheChromaOfAnOddEdge) {
    TestFrame frame(0, 7, 4, {{1, 1, 1, 0}, true}), picture(0, 3, 3);
    picture.SetSamples(0, {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}});
    picture.SetSamples(1, {{50}});
    picture.SetSamples(2, {{60}});
    Canvas canvas(frame, BestInstructionSet());
    canvas.Clear();
    canvas.Copy(picture, 5, 1);
    EXPECT_EQ(frame.Samples(0)[2], (std::vector<unsigned>{16, 16, 16, 16, 7, 8, 9}));
    EXPECT_EQ(frame.Samples(1), (Grid{{128, 128, 50, 50}, {128, 128, 50, 50}}));
    canvas.Copy(picture, 90, 0);
    EXPECT_TRUE(frame.GuardsIntact());
}

TEST(Mask, LeavesWhatItCoversTimesItsBrightness) {
    Layer layer(2, 1), mask(3, 1);
    layer.View().Row(0)[0] = {1, 2, 3, 200};
    layer.View().Row(0)[1] = {4, 5, 6, 255};
    mask.View().Row(0)[0] = {255, 255, 255, 255};
    mask.View().Row(0)[1] = {100, 101, 102, 128};
    BrightnessToCoverage(mask);
    MultiplyCoverage(layer, mask);
    EXPECT_EQ(layer.View().Row(0)[0], (Rgba32{1, 2, 3, 200}));
    EXPECT_EQ(layer.View().Row(0)[1], (Rgba32{4, 5, 6, 51}));  // 101 * 128 / 255 = 50.7
    MultiplyCoverage(layer, mask, -1);
    EXPECT_EQ(layer.View().Row(0)[0].alpha, 0);
    EXPECT_EQ(layer.View().Row(0)[1].alpha, 51);
}

}  // namespace
}  // namespace AVBased::Testing
