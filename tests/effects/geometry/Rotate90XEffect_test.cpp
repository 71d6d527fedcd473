#include <gtest/gtest.h>

#include <cmath>

#include "tests/support/test_frames.h"

namespace AVBased::Testing {
namespace {

EffectOwner Turning(int turns) {
    return MakeEffect("EffectNameRotate90X", {{"EffectNameRotate90X_turns", std::to_string(turns)}});
}

TEST(Rotate90X, TurnsSquarePicturesExactly) {
    const Grid upright = {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}, right = {{7, 4, 1}, {8, 5, 2}, {9, 6, 3}},
               down = {{9, 8, 7}, {6, 5, 4}, {3, 2, 1}}, left = {{3, 6, 9}, {2, 5, 8}, {1, 4, 7}};
    for (const auto& [turns, expected] : {std::pair{0, upright},
                                          {1, right},
                                          {2, down},
                                          {3, left},
                                          {-1, left},
                                          {5, right},
                                          {-2147483647 - 1, upright}}) {
        TestFrame packed(30, 3, 3), planar(60, 3, 3);
        packed.SetSamples(0, upright);
        for (unsigned p = 0; p < 4; ++p) planar.SetSamples(p, upright);
        Apply(*Turning(turns), packed);
        Apply(*Turning(turns), planar);
        EXPECT_EQ(packed.Samples(), expected) << turns;
        for (unsigned p = 0; p < 4; ++p) EXPECT_EQ(planar.Samples(p), expected) << turns << " plane " << p;
    }
}

TEST(Rotate90X, FourQuartersRestoreALargeSquare) {
    std::mt19937 random(4);
    for (unsigned format : {30u, 35u}) {
        TestFrame frame(format, 70, 70);
        frame.Randomise(random);
        const TestFrame before = frame;
        const EffectOwner effect = Turning(1);
        for (int i = 0; i < 4; ++i) Apply(*effect, frame);
        EXPECT_EQ(frame, before);
    }
}

TEST(Rotate90X, ScalesOtherShapesToFitBesideBlack) {
    // Rows become their rounded mean, 10 100 220 50; of these, 110 109 37 and 37 109 110 parts of 256.
    for (const auto& [turns, first, second] : {std::tuple{1, 79u, 130u}, {3, 130u, 79u}}) {
        TestFrame planar(60, 4, 2);
        for (unsigned p = 0; p < 4; ++p) planar.SetSamples(p, {{0, 100, 200, 40}, {20, 100, 240, 60}});
        Apply(*Turning(turns), planar);
        const unsigned black[] = {16, 128, 128, 255};
        for (unsigned p = 0; p < 4; ++p) {
            const unsigned b = black[p];
            EXPECT_EQ(planar.Samples(p), (Grid{{b, first, b, b}, {b, second, b, b}})) << turns << " plane " << p;
        }
        TestFrame packed(30, 1, 3);
        packed.SetSamples(0, {{0x40000000}, {0x40303030}, {0x40606060}});
        Apply(*Turning(turns), packed);
        EXPECT_EQ(packed.Samples(), (Grid{{0xFF000000}, {0x40303030}, {0xFF000000}})) << turns;
    }
}

// The shares of the source samples in each sample of an axis scaled from `from` samples to `to`.
std::vector<std::vector<double>> Shares(int from, int to) {
    const double scale = double(from) / to;
    std::vector<std::vector<double>> shares;
    for (int i = 0; i < to; ++i) {
        std::vector<double>& row = shares.emplace_back();
        double all = 0;
        for (int j = 0; j < from; ++j) {
            const double distance = std::abs((i + 0.5) * scale - (j + 0.5));
            row.push_back(std::max(0.0, 1 - distance / std::max(scale, 1.0)));
            all += row.back();
        }
        for (double& share : row) share /= all;
    }
    return shares;
}

// The part of an axis that the turned picture fills, in whole groups of positions.
std::pair<int, int> Fitted(int longer, int shorter, int group) {
    const int groups = std::max(1, int(double(shorter) * shorter / longer / group + 0.5));
    const int size = std::min(groups * group, longer);
    return {(longer - size) / 2 / group * group, size};
}

TEST(Rotate90X, ResamplesEachPlaneOnItsOwnGrid) {
    struct Case {
        unsigned format;
        int columns, rows;
    };
    std::mt19937 random(6);
    for (const auto& [format, columns, rows] : {Case{0, 2, 2}, {4, 2, 1}, {6, 4, 4}, {7, 4, 1}, {35, 2, 2}, {60, 1, 1}})
        for (auto [width, height] : {std::pair{40, 24}, {24, 40}, {32, 32}, {80, 20}, {41, 27}}) {
            TestFrame frame(format, unsigned(width), unsigned(height));
            frame.Randomise(random);
            const TestFrame before = frame;
            Apply(*Turning(1), frame);
            for (unsigned p = 0; p < frame.GetBufferCount(); ++p) {
                SCOPED_TRACE(testing::Message()
                             << "format " << format << " " << width << "x" << height << " plane " << p);
                const Grid source = before.Samples(p), actual = frame.Samples(p);
                const int fullWidth = int(source[0].size()), fullHeight = int(source.size());
                const bool chroma = p == 1 || p == 2;
                int left = 0, top = 0, w = fullWidth, h = fullHeight;
                if (width > height) std::tie(left, w) = Fitted(width, height, columns);
                if (height > width) std::tie(top, h) = Fitted(height, width, rows);
                if (chroma && width > height) left /= columns, w /= columns;
                if (chroma && height > width) top /= rows, h /= rows;
                const auto across = Shares(fullHeight, w), down = Shares(fullWidth, h);
                const unsigned black = p == 0 ? 16 : chroma ? 128 : 255;
                for (int y = 0; y < fullHeight; ++y)
                    for (int x = 0; x < fullWidth; ++x) {
                        if (x < left || x >= left + w || y < top || y >= top + h) {
                            ASSERT_EQ(actual[std::size_t(y)][std::size_t(x)], black) << x << "," << y;
                            continue;
                        }
                        const auto &rowShares = across[std::size_t(w - 1 - (x - left))],
                                   &columnShares = down[std::size_t(y - top)];
                        double sum = 0;
                        for (std::size_t j = 0; j < source.size(); ++j)
                            for (std::size_t i = 0; rowShares[j] > 0 && i < source[j].size(); ++i)
                                sum += rowShares[j] * columnShares[i] * source[j][i];
                        ASSERT_NEAR(actual[std::size_t(y)][std::size_t(x)], sum, 3) << x << "," << y;
                    }
            }
        }
}

}  // namespace
}  // namespace AVBased::Testing
