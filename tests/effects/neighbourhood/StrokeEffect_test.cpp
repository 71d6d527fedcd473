#include "effects/neighbourhood/StrokeEffect.h"

#include <gtest/gtest.h>

#include <tuple>

#include "tests/support/grids.h"

namespace AVBased::Testing {
namespace {

Settings Pencil(int strength, int colour) {
    return {{"stroke_strength", std::to_string(strength)}, {"stroke_color", std::to_string(colour)}};
}

int Limited(int value) { return std::clamp(value, 0, 255); }

// The tones drawn, each from its own 49.
Grid Drawn(const StrokePaper& paper, const Grid& tones, int strength) {
    Grid drawn = tones;
    const int height = int(tones.size()), width = int(tones[0].size());
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            int sum = 0;
            for (int v = y - 3; v <= y + 3; ++v)
                for (int u = x - 3; u <= x + 3; ++u)
                    sum += int(tones[unsigned(std::clamp(v, 0, height - 1))][unsigned(std::clamp(u, 0, width - 1))]);
            const int mean = sum * 1338 / 65536, tone = int(tones[unsigned(y)][unsigned(x)]);
            const int line = std::max(0, mean - tone - 4) * strength / 8;
            const int hatched = std::max(0, 255 - mean - paper.Strokes(unsigned(y))[x % 256]) +
                                std::max(0, 143 - mean - paper.CrossStrokes(unsigned(y))[x % 256]);
            drawn[unsigned(y)][unsigned(x)] = unsigned(255 - std::min(225, line + hatched * strength / 64));
        }
    return drawn;
}

template <class F>
Grid Each(Grid grid, F f) {
    for (auto& row : grid)
        for (unsigned& sample : row) sample = unsigned(f(sample));
    return grid;
}

TEST(Stroke, AgreesWithTheSlowRoutine) {
    const StrokePaper paper;
    for (const auto& [strength, colour, kept] : {std::tuple{50, 0, 0}, {100, 70, 179}})
        ExpectOnRandomFrames(
            "stroke", Pencil(strength, colour), [&](const Grid& from, unsigned plane, const TestFrame& frame) {
                if (plane > 0) return Each(from, [&](unsigned c) { return 128 + ((int(c) - 128) * kept >> 8); });
                if (!TestFrame(frame).IsPacked())
                    return Each(Drawn(paper, Each(from, [](unsigned y) { return Limited((int(y) - 16) * 298 >> 8); }),
                                      strength),
                                [](unsigned drawn) { return 16 + drawn * 220 / 256; });
                const Grid tones =
                    Each(from, [](unsigned p) { return (29 * Byte(p, 0) + 150 * Byte(p, 1) + 77 * Byte(p, 2)) / 256; });
                const Grid drawn = Drawn(paper, tones, strength);
                Grid expected = from;
                for (unsigned y = 0; y < from.size(); ++y)
                    for (unsigned x = 0; x < from[0].size(); ++x) {
                        expected[y][x] &= 0xFF000000;
                        for (unsigned c = 0; c < 3; ++c) {
                            const int apart = Byte(from[y][x], c) - int(tones[y][x]);
                            expected[y][x] |= unsigned(Limited(int(drawn[y][x]) + (apart * kept >> 8))) << 8 * c;
                        }
                    }
                return expected;
            });
}

TEST(Stroke, DrawsContoursAndHatchesTheDarkAndLeavesTheLightWhite) {
    // 600 columns: the paper repeats. White, then a dark area.
    TestFrame frame(30, 600, 40);
    frame.SetSamples(0, Grid(40, [] {
                         std::vector<unsigned> row(600, 0xFFFFFF);
                         std::fill(row.begin() + 300, row.end(), 0x303030u);
                         return row;
                     }()));
    Apply(*MakeEffect("stroke"), frame);
    for (const std::vector<unsigned>& row : frame.Samples()) {
        EXPECT_EQ(std::count(row.begin(), row.begin() + 290, 0xFFFFFFu), 290);
        EXPECT_LT(row[300], 0x303030u) << "the contour";
        EXPECT_EQ(row[330], row[330 + 256]) << "the same place of the paper";
        const auto [darkest, lightest] = std::minmax_element(row.begin() + 310, row.end());
        EXPECT_LT(*darkest, 0x808080u);
        EXPECT_GT(*lightest, 0xC0C0C0u);
    }
}

TEST(Stroke, PaperHasStrokesAlongTheirOwnDirections) {
    const StrokePaper paper;
    double along = 0, across = 0, crossAlong = 0, crossAcross = 0;
    for (unsigned y = 0; y < 256; ++y)
        for (unsigned x = 0; x < 256; ++x) {
            const auto apart = [&](const std::uint8_t* here, const std::uint8_t* there, unsigned column) {
                return std::abs(int(here[x]) - int(there[column % 256]));
            };
            along += apart(paper.Strokes(y), paper.Strokes(y + 2), x + 254);
            across += apart(paper.Strokes(y), paper.Strokes(y + 2), x + 2);
            crossAlong += apart(paper.CrossStrokes(y), paper.CrossStrokes(y + 2), x + 1);
            crossAcross += apart(paper.CrossStrokes(y), paper.CrossStrokes(y), x + 2);
        }
    EXPECT_LT(along * 4, across);
    EXPECT_LT(crossAlong * 4, crossAcross);
}

}  // namespace
}  // namespace AVBased::Testing
