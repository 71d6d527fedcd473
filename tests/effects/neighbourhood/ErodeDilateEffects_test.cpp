#include "effects/neighbourhood/ErodeDilateEffects.h"

#include "tests/support/grids.h"

namespace AVBased::Testing {
namespace {

Grid Filtered(const char* effect, const Grid& samples) {
    TestFrame frame(60, unsigned(samples[0].size()), unsigned(samples.size()));
    frame.SetSamples(1, samples);
    Apply(*MakeEffect(effect), frame);
    return frame.Samples(1);
}

TEST(ErodeDilate, OneDarkSampleGrowsUpAndToTheLeft) {
    EXPECT_EQ(
        Filtered("erode",
                 {{7, 7, 7, 7, 7, 8}, {7, 7, 7, 7, 7, 7}, {7, 7, 7, 1, 7, 7}, {7, 7, 7, 7, 7, 7}, {9, 9, 9, 9, 9, 9}}),
        (Grid{{7, 1, 1, 1, 7, 8}, {7, 1, 1, 1, 7, 7}, {7, 1, 1, 1, 7, 7}, {7, 7, 7, 7, 7, 7}, {9, 9, 9, 9, 9, 9}}));
}

TEST(ErodeDilate, OneBrightSampleGrowsDownAndToTheLeft) {
    EXPECT_EQ(
        Filtered("dilate",
                 {{2, 2, 2, 2, 2, 1}, {0, 0, 0, 0, 0, 0}, {0, 0, 0, 9, 0, 0}, {0, 0, 0, 0, 0, 0}, {0, 0, 0, 0, 0, 0}}),
        (Grid{{2, 2, 2, 2, 2, 1}, {0, 0, 0, 0, 0, 0}, {2, 9, 9, 9, 0, 0}, {0, 9, 9, 9, 0, 0}, {0, 9, 9, 9, 0, 0}}));
}

// The extreme, by `better`, over three columns from x and three rows from `top`, of each colour.
template <class Better>
Grid Extremes(const Grid& in, bool packed, unsigned firstRow, int top, Better better) {
    Grid out = in;
    if (in.size() < 3 || in[0].size() < 3) return out;
    for (unsigned y = firstRow; y < firstRow + in.size() - 2; ++y)
        for (unsigned x = 0; x + 2 < in[y].size(); ++x) {
            out[y][x] = packed ? in[y][x] & 0xFF000000 : 0;
            for (unsigned c = 0; c < (packed ? 3u : 1u); ++c) {
                int best = Byte(in[y][x], c);
                for (unsigned i = 0; i < 9; ++i)
                    best = better(best, Byte(in[unsigned(int(y) + top) + i / 3][x + i % 3], c));
                out[y][x] |= unsigned(best) << 8 * c;
            }
        }
    return out;
}

TEST(ErodeDilate, IsTheExtremeOfTheBlockOnEveryPlane) {
    ExpectOnRandomFrames("erode", {}, [](const Grid& in, unsigned, TestFrame frame) {
        return Extremes(in, frame.IsPacked(), 0, 0, [](int a, int b) { return std::min(a, b); });
    });
    ExpectOnRandomFrames("dilate", {}, [](const Grid& in, unsigned, TestFrame frame) {
        return Extremes(in, frame.IsPacked(), 2, -2, [](int a, int b) { return std::max(a, b); });
    });
}

}  // namespace
}  // namespace AVBased::Testing
