#include "dvd_effects/menu/menu_motion.h"

#include <gtest/gtest.h>

#include "tests/support/test_frames.h"

namespace AVBased::Testing {
namespace {

TEST(MenuMotion, MovesAlongTheLineAndStopsAtTheEndInEitherDirection) {
    EXPECT_EQ(MovedPosition({10, 20}, {100, 20}, {0, 0}, 5, 3), (point_t{25, 20}));
    EXPECT_EQ(MovedPosition({10, 20}, {22, 20}, {0, 0}, 5, 3), (point_t{22, 20}));
    EXPECT_EQ(MovedPosition({10, 20}, {-2, 20}, {0, 0}, -5, 3), (point_t{-2, 20}));
    // The line's value (1 * 25 - 20 = 5) counts three times.
    EXPECT_EQ(MovedPosition({10, 20}, {100, 90}, {1, -20}, 5, 3), (point_t{25, 35}));
    EXPECT_EQ(MovedPosition({10, 20}, {100, 30}, {1, -20}, 5, 3), (point_t{25, 30}));
    EXPECT_EQ(MovedPosition({0, 0}, {5, 5}, {2147483647.0, 0}, 2147483647, 2147483647), (point_t{1, 5}));
}

TEST(MenuMotion, RampsStayWithinAByte) {
    EXPECT_EQ(CalculateNewValue(200, 100, 1), 255);
    EXPECT_EQ(CalculateNewValue(200, 54, 1), 254);
    EXPECT_EQ(CalculateNewValue(100, 100, 0), 0);
    EXPECT_EQ(CalculateNewValue(100, 99, 0), 1);
    EXPECT_EQ(CalculateNewValue(100, 99, 2), 0);
}

TEST(MenuMotion, LinesTruncateTowardZero) {
    int y = 0;
    CalculateYCondinate(0, 0, 3, -5, 1, y);
    EXPECT_EQ(y, -1);
    CalculateYCondinate(2, 10, 4, 13, 3, y);
    EXPECT_EQ(y, 11);
}

TEST(MenuMotion, PanelEdgesBelongToThePanel) {
    const formula_t edges[4] = {{0, 2}, {0, 1}, {0, 8}, {1, -5}};
    EXPECT_EQ(InRange(3, 2, edges), 10);
    EXPECT_EQ(InRange(3, 8, edges), 10);
    EXPECT_EQ(InRange(3, 9, edges), -1);   // edge 2
    EXPECT_EQ(InRange(3, 1, edges), -1);   // edge 0
    EXPECT_EQ(InRange(12, 6, edges), -1);  // edge 3
}

class Warp : public testing::Test {
 protected:
    static constexpr unsigned width = 32, height = 24;
    std::vector<unsigned char> coverage = std::vector<unsigned char>(width * height, 99), side = coverage;
    std::vector<int> columns = std::vector<int>(width * height, -1), rows = columns;

    int Run(const position_t& corners, const position_t& limits, const formula_t* edges) {
        return CondinateChange(coverage.data(), side.data(), columns.data(), rows.data(), corners, limits, edges, width,
                               height);
    }
};

// Lines that every pixel is on the right side of, and that no border follows.
constexpr formula_t everywhere[4] = {{0, -1000}, {0, -1000}, {0, 1000}, {0, -1000}};

TEST_F(Warp, OfTheWholeFrameMapsEachPixelToItself) {
    ASSERT_EQ(Run({{0, 0, width, 0, 0, height, width, height}}, {}, everywhere), 1);
    for (unsigned y = 0; y < height; ++y)
        for (unsigned x = 0; x < width; ++x) {
            ASSERT_EQ(columns[y * width + x], int(x));
            ASSERT_EQ(rows[y * width + x], int(y));
            ASSERT_EQ(coverage[y * width + x], 10);
        }
}

TEST_F(Warp, ClearsOnlyAQuarterOfTheCoordinates) {
    ASSERT_EQ(Run({{-9, -9, -9, -9, -9, -9, -9, -9}}, {}, everywhere), 1);
    EXPECT_EQ(coverage.back(), 0);
    EXPECT_EQ(columns[width * height / 4 - 1], 0);
    EXPECT_EQ(columns[width * height / 4], -1);
    EXPECT_EQ(rows.back(), -1);
}

TEST_F(Warp, FadesFourUnequalBorders) {
    // Flat lines at y = 4, 20.5, 10 and 16; no panel, so that only borders are written.
    const formula_t edges[4] = {{0, 4}, {0, 20.5}, {0, 23}, {0, 15.5}};
    ASSERT_EQ(Run({{-9, -9, -9, -9, -9, -9, -9, -9}}, {{0, 0, 12, 18, 20, 30, 31, 30}}, edges), 1);
    const auto at = [&](int x, int y) { return coverage[y * width + x] * 10 + side[y * width + x]; };
    EXPECT_EQ(at(0, 4), 0);    // a border starts beside its first pixel
    EXPECT_EQ(at(12, 4), 91);  // next to x = 11, the last that may write it
    EXPECT_EQ(at(1, 4), 91);
    EXPECT_EQ(at(13, 4), 0);    // past the limit
    EXPECT_EQ(at(30, 23), 92);  // leftwards from x = 31
    EXPECT_EQ(at(20, 23), 2);   // the farthest pixel of the edge writes last
    EXPECT_EQ(at(19, 23), 0);   // past the limit
    EXPECT_EQ(at(5, 20), 93);   // upwards from y = 21, which lies within a whole pixel below 20.5
    EXPECT_EQ(at(5, 18), 73);
    EXPECT_EQ(at(5, 17), 0);   // the limit of edge 1
    EXPECT_EQ(at(5, 15), 93);  // edge 3 shares the side of edge 1
    EXPECT_EQ(at(5, 6), 3);    // the tenth pixel
}

TEST_F(Warp, RefusesNullPlanes) {
    ForgetError();
    EXPECT_EQ(CondinateChange(coverage.data(), nullptr, columns.data(), rows.data(), {}, {}, everywhere, width, height),
              0);
    EXPECT_EQ(LastError().code, 10021008);
    EXPECT_EQ(LastError().message, "Null Pointer");
    EXPECT_EQ(LastError().source, "dvd_effects_utils");
}

}  // namespace
}  // namespace AVBased::Testing
