#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/test_frames.h"

namespace AVBased::Testing {
namespace {

Grid MirroredRows(Grid grid) {
    for (auto& row : grid) std::ranges::reverse(row);
    return grid;
}
Grid FlippedColumns(Grid grid) {
    std::ranges::reverse(grid);
    return grid;
}

TEST(Reverse, KeepsTheMiddleOfOddRows) {
    TestFrame frame(30, 3, 2);
    frame.SetSamples(0, {{1, 2, 3}, {4, 5, 6}});
    Apply(*MakeEffect("reverse", {{"mirror", "1"}}), frame);
    EXPECT_EQ(frame.Samples(), (Grid{{3, 2, 1}, {6, 5, 4}}));
    Apply(*MakeEffect("reverse", {{"vertical", "1"}}), frame);
    EXPECT_EQ(frame.Samples(), (Grid{{6, 5, 4}, {3, 2, 1}}));
    Apply(*MakeEffect("reverse", {{"vertical", "1"}, {"mirror", "1"}}), frame);
    EXPECT_EQ(frame.Samples(), (Grid{{1, 2, 3}, {4, 5, 6}}));
}

TEST(Reverse, CountsOnlyTheValueOne) {
    std::mt19937 random(1);
    TestFrame frame(30, 5, 4);
    frame.Randomise(random);
    const TestFrame before = frame;
    Apply(*MakeEffect("reverse", {{"mirror", "2"}, {"vertical", "-1"}}), frame);
    EXPECT_EQ(frame, before);
}

TEST(Reverse, TurnsEveryPlaneInsideItsOwnWidth) {
    std::mt19937 random(2);
    for (unsigned format : {30u, 35u, 7u})
        for (unsigned width = 1; width <= 300; width += 1 + width / 40)
            for (unsigned height : {1u, 4u, 5u}) {
                TestFrame before(format, width, height);
                before.Randomise(random);
                TestFrame mirror = before, vertical = before, both = before;
                Apply(*MakeEffect("reverse", {{"mirror", "1"}}), mirror);
                Apply(*MakeEffect("reverse", {{"vertical", "1"}}), vertical);
                Apply(*MakeEffect("reverse", {{"mirror", "1"}, {"vertical", "1"}}), both);
                for (unsigned p = 0; p < before.GetBufferCount(); ++p) {
                    const Grid grid = before.Samples(p);
                    ASSERT_EQ(mirror.Samples(p), MirroredRows(grid)) << width << "x" << height << " plane " << p;
                    ASSERT_EQ(vertical.Samples(p), FlippedColumns(grid)) << width << "x" << height << " plane " << p;
                    ASSERT_EQ(both.Samples(p), FlippedColumns(MirroredRows(grid))) << width << "x" << height;
                }
            }
}

}  // namespace
}  // namespace AVBased::Testing
