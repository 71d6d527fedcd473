#include "effects/neighbourhood/OilPaintingEffect.h"

#include <gtest/gtest.h>

#include <map>

#include "effects/base/CBasedVideoEffect.h"
#include "tests/support/test_frames.h"

namespace AVBased::Testing {
namespace {

Settings Brush(unsigned radius, unsigned coarseness) {
    return {{"oilpainting_brushsize", std::to_string(int(radius))},
            {"oilpainting_coarseness", std::to_string(int(coarseness))}};
}

// The brush of every pixel rescanned, every write made.
void Judge(TestFrame& frame, std::uint64_t radius, std::uint64_t coarseness) {
    const FormatInfo& info = *FindFormat(frame.GetPixelFormat());
    const unsigned columnShift = info.ColumnShift(), rowShift = info.RowShift();
    Grid grid[3];
    for (unsigned p = 0; p < (info.packed ? 1 : 3); ++p) grid[p] = frame.Samples(p);
    const Grid source[3] = {grid[0], grid[1], grid[2]};
    const std::uint64_t height = source[0].size(), width = height ? source[0][0].size() : 0;
    const auto at = [](auto& plane, std::uint64_t x, std::uint64_t y) -> unsigned {
        if (plane.empty() || plane[0].empty()) return 0;
        const auto& row = plane[std::min<std::uint64_t>(y, plane.size() - 1)];
        return row[std::min<std::uint64_t>(x, row.size() - 1)];
    };
    struct Class {
        unsigned count = 0, sum[3] = {};
    };
    for (std::uint64_t y = 0; y < height; ++y)
        for (std::uint64_t x = 0; x < width; ++x) {
            std::map<std::uint64_t, Class> classes;
            for (std::uint64_t v = y - std::min(y, radius); v < std::min(height, y + radius + 1); ++v)
                for (std::uint64_t u = x - std::min(x, radius); u < std::min(width, x + radius + 1); ++u) {
                    const unsigned pixel = source[0][v][u];
                    const unsigned level = info.packed ? pixel >> 8 & 255 : pixel;
                    Class& c = classes[coarseness * level >> 8];
                    ++c.count;
                    for (unsigned k = 0; k < 3; ++k)
                        c.sum[k] += info.packed ? pixel >> 8 * k & 255
                                    : k == 0    ? pixel
                                                : at(source[k], u >> columnShift, v >> rowShift);
                }
            const Class* mode = &classes.begin()->second;
            for (const auto& [number, c] : classes)
                if (c.count > mode->count) mode = &c;
            const auto mean = [mode](unsigned k) { return mode->sum[k] / mode->count; };
            grid[0][y][x] = info.packed ? mean(2) << 16 | mean(1) << 8 | mean(0) : mean(0);
            for (unsigned k = 1; k < 3 && !info.packed; ++k)
                if (y >> rowShift < grid[k].size() && x >> columnShift < grid[k][0].size())
                    grid[k][y >> rowShift][x >> columnShift] = mean(k);
        }
    for (unsigned p = 0; p < (info.packed ? 1 : 3); ++p) frame.SetSamples(p, grid[p]);
}

TEST(OilPainting, TakesTheMeanOfTheMostFrequentClassTheDarkerOnATie) {
    // Coarseness 2: levels below 128 are class 0, the others class 1. The levels are the green ones.
    TestFrame frame(30, 4, 1);
    frame.SetSamples(0, {{0xFF900A01, 0x11C81405, 0x22FF8003, 0x33008207}});
    Apply(*MakeEffect("oilpainting", Brush(1, 2)), frame);
    // Brushes: two dark; two dark of three; two bright of three; two bright.
    EXPECT_EQ(frame.Samples(), (Grid{{0x00AC0F03, 0x00AC0F03, 0x007F8105, 0x007F8105}}));

    TestFrame tie(30, 2, 1);
    tie.SetSamples(0, {{0x01FF8003, 0x02000A09}});
    Apply(*MakeEffect("oilpainting", Brush(1, 2)), tie);
    EXPECT_EQ(tie.Samples(), (Grid{{0x00000A09, 0x00000A09}}));
}

TEST(OilPainting, ChromaKeepsTheLastOfItsFourMeans) {
    TestFrame frame(0, 4, 2);
    frame.SetSamples(0, {{0, 0, 255, 255}, {0, 0, 255, 0}});
    frame.SetSamples(1, {{10, 51}});
    frame.SetSamples(2, {{200, 100}});
    Apply(*MakeEffect("oilpainting", Brush(1, 1)), frame);
    // One class (coarseness 1 leaves no other): means over 4 x 2 pixels at most, truncated.
    EXPECT_EQ(frame.Samples(0), (Grid{{0, 85, 127, 191}, {0, 85, 127, 191}}));
    EXPECT_EQ(frame.Samples(1), (Grid{{23, 51}}));
    EXPECT_EQ(frame.Samples(2), (Grid{{166, 100}}));
}

TEST(OilPainting, BothChromaPlanesHaveThePitchOfTheFirstUnlessThatLeavesTheSecond) {
    TestFrame frame(60, 2, 2, {{0, 0, 1, 0}});
    for (unsigned p = 0; p < 3; ++p) frame.Fill(p, 40);
    frame.SetSamples(2, {{10, 20}, {60, 70}});
    Apply(*MakeEffect("oilpainting", Brush(1, 0)), frame);
    EXPECT_EQ(frame.Samples(2), (Grid{{32, 32}, {32, 70}}));  // 10, 20, the padding's 40 and 60

    TestFrame narrow(60, 2, 2, {{0, 1, 0, 0}});
    for (unsigned p = 0; p < 3; ++p) narrow.Fill(p, 40);
    narrow.SetSamples(2, {{10, 20}, {60, 70}});
    Apply(*MakeEffect("oilpainting", Brush(1, 0)), narrow);
    EXPECT_EQ(narrow.Samples(2), (Grid{{40, 40}, {40, 40}}));
}

TEST(OilPainting, StartsWithCoarsenessFiftyThoughThreeIsRegistered) {
    std::mt19937 random(50);
    TestFrame frame(30, 20, 9);
    frame.Randomise(random);
    TestFrame fresh = frame, three = frame, fifty = frame;
    const EffectOwner effect = MakeEffect("oilpainting");
    EXPECT_STREQ(effect->GetProperty("oilpainting_coarseness", nullptr), "3");
    Apply(*effect, fresh);
    Judge(fifty, 3, 50);
    EXPECT_EQ(fresh, fifty);
    effect->SetProperty("oilpainting_coarseness", "3");
    Apply(*effect, frame);
    Judge(three, 3, 3);
    EXPECT_EQ(frame, three);
}

TEST(OilPainting, AgreesWithTheSlowRoutineForEveryInstructionSet) {
    std::mt19937 random(35);
    for (unsigned format : {30u, 0u, 4u, 6u, 7u, 35u, 60u})
        for (unsigned round = 0; round < 60; ++round) {
            static constexpr unsigned widths[] = {1, 2, 5, 31, 32, 33, 64, 65, 127, 130};
            static constexpr unsigned coarsenesses[] = {0, 1, 3, 50, 63, 64, 200, 254, 255, 256, 300, 0x7FFFFFFF, ~0u};
            const unsigned width = widths[random() % std::size(widths)], height = 1 + random() % 13;
            const unsigned radius = round % 12 == 0 ? ~0u - random() % 2 : random() % 11;
            const unsigned coarseness = coarsenesses[random() % std::size(coarsenesses)];
            const unsigned chromaPadding = random() % 5;
            const FrameLayout layout{{unsigned(random() % 9), chromaPadding, chromaPadding, 3}, random() % 2 == 0};
            TestFrame frame(format, width, height, layout);
            frame.Randomise(random, Content(random() % 3));
            TestFrame expected = frame;
            Judge(expected, radius, coarseness);
            for (InstructionSet set : allInstructionSets) {
                if (!IsUsable(set)) continue;
                TestFrame actual = frame;
                const EffectOwner effect = MakeEffect("oilpainting", Brush(radius, coarseness));
                dynamic_cast<CBasedVideoImageEffect&>(*effect).UseInstructionSet(set);
                Apply(*effect, actual);
                ASSERT_EQ(actual, expected) << "radius " << radius << " coarseness " << coarseness << " format "
                                            << format << " " << width << "x" << height << " set " << int(set);
            }
        }
}

}  // namespace
}  // namespace AVBased::Testing
