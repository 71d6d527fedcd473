#include "effects/geometry/coordinate_table.h"

#include <gtest/gtest.h>

#include <array>

namespace AVBased {
namespace {

// A planar picture of 3 x 3 luma samples whose chroma, rounded down, is one sample a plane.
struct OddPicture {
    std::array<std::uint8_t, 9> luma{10, 11, 12, 20, 21, 22, 30, 31, 32};
    std::uint8_t chroma[2] = {70, 80};

    PlanarView View() { return {{{luma.data(), 3, 3, 3}, {&chroma[0], 1, 1, 1}, {&chroma[1], 1, 1, 1}, {}}, 3, 1, 1}; }
};

TEST(PlacePlanar, ReadsTheNearestChromaAndDropsWhatHasNoPlace) {
    OddPicture to, from;
    from.chroma[0] = 71;
    from.chroma[1] = 81;
    const PlacePlanar place{to.View(), from.View()};
    place(2, 2, {0, 1});  // no chroma sample covers the destination
    EXPECT_EQ(to.luma[8], 20);
    EXPECT_EQ(to.chroma[0], 70);
    place(0, 1, {2, 2});  // none covers the source
    EXPECT_EQ(to.luma[3], 32);
    EXPECT_EQ(to.chroma[0], 71);
    EXPECT_EQ(to.chroma[1], 81);
    place(3, 0, {0, 0});
    EXPECT_EQ(to.luma[3], 32);
}

TEST(PlacePlanar, TreatsASourceOutsideAsAsked) {
    OddPicture to, from;
    PlacePlanar{to.View(), from.View(), Outside::Unchanged}(0, 0, {3, 0});
    EXPECT_EQ(to.luma[0], 10);
    PlacePlanar{to.View(), from.View(), Outside::Nearest}(1, 0, {7, 4000000000});
    EXPECT_EQ(to.luma[1], 32);
    PlacePlanar{to.View(), from.View(), Outside::White}(0, 0, {0, 3});
    EXPECT_EQ(to.luma[0], 235);
    EXPECT_EQ(to.chroma[0], 128);
    EXPECT_EQ(to.chroma[1], 128);
}

}  // namespace
}  // namespace AVBased
