// What the templates are made of: grids, turns, mounts and the arithmetic of motion.

#include <gtest/gtest.h>

#include <cmath>

#include "dvd_effects/templates/picture_grid.h"
#include "dvd_effects/templates/picture_mount.h"
#include "dvd_effects/templates/picture_rows.h"
#include "dvd_effects/templates/turns.h"

namespace AVBased {

static bool operator==(const Spot& a, const Spot& b) { return a.x == b.x && a.y == b.y; }
static std::ostream& operator<<(std::ostream& out, const Spot& spot) { return out << spot.x << "," << spot.y; }

}  // namespace AVBased

namespace AVBased::Testing {
namespace {

TEST(PictureGrid, SpacesCellsOfAShapeInEvenRows) {
    const PictureGrid grid = PictureGrid::Spaced({0, 0, 320, 200}, 5, 1, 20);
    EXPECT_EQ(grid.CellSize(), (FrameSize{90, 90}));
    EXPECT_EQ(grid.MiddleOf(0), (Spot{50, 45}));
    EXPECT_EQ(grid.MiddleOf(2), (Spot{270, 45}));
    EXPECT_EQ(grid.MiddleOf(4), (Spot{215, 155}));
    const PictureGrid seven = PictureGrid::Spaced({0, 0, 300, 300}, 7, 1, 0);
    const unsigned rows[] = {0, 0, 0, 1, 1, 2, 2};
    for (unsigned i = 0; i < 7; ++i) EXPECT_EQ(seven.RowOf(i), rows[i]) << i;
    EXPECT_EQ(PictureGrid::Spaced({0, 0, 0.5, 0.5}, 3, 1, 0).CellSize(), (FrameSize{1, 1}));
}

TEST(PictureGrid, CellsLieInTheRegionBesideOneAnother) {
    const Region region{7, 5, 400, 230};
    for (unsigned count = 1; count < 14; ++count) {
        const PictureGrid grid = PictureGrid::Spaced(region, count, 1.2, 9);
        for (unsigned i = 0; i < count; ++i) {
            const Region cell = grid.Cell(i);
            const Spot middle = grid.MiddleOf(i);
            EXPECT_NEAR(cell.Middle().x, middle.x, 1e-9) << count;
            EXPECT_NEAR(cell.Middle().y, middle.y, 1e-9) << count;
            EXPECT_TRUE(cell.left > 6.99 && cell.top > 4.99 && cell.At(1, 1).x < 407.01 && cell.At(1, 1).y < 235.01);
            for (unsigned k = 0; k < i; ++k) {
                const Spot other = grid.MiddleOf(k);
                EXPECT_TRUE(std::abs(other.x - middle.x) > cell.width - 0.01 ||
                            std::abs(other.y - middle.y) > cell.height - 0.01)
                    << i << " meets " << k << " of " << count;
            }
        }
    }
}

TEST(PictureRows, GiveAllOneHeightAndEachItsShape) {
    const Region region{7, 5, 400, 230};
    const double shapes[] = {1.5, 0.67, 1.78, 1, 0.67, 3, 1.33, 0.75, 1.5};
    for (std::size_t count = 1; count <= std::size(shapes); ++count) {
        const PictureRows rows(region, {shapes, count}, 9);
        double area = 0;
        for (unsigned i = 0; i < count; ++i) {
            const Region& place = rows[i];
            EXPECT_NEAR(place.height, rows[0].height, 1e-9);
            EXPECT_NEAR(place.width, place.height * shapes[i], 1e-9);
            EXPECT_TRUE(place.left >= 7 && place.top >= 5 && place.At(1, 1).x <= 407 && place.At(1, 1).y <= 235);
            const Region before = i > 0 ? rows[i - 1] : Region{};
            EXPECT_TRUE(place.left > before.At(1, 0).x || place.top > before.At(0, 1).y) << i;
            area += place.width * place.height;
        }
        EXPECT_GT(area, 0.4 * region.width * region.height) << count;
    }
}

TEST(Turns, GoRoundAndAreSharedOut) {
    const Turn middle = TurnAt(0.5, 3), last = TurnAfter(8.25, 3);
    EXPECT_EQ(middle.index, 1u);
    EXPECT_EQ(middle.part, 0.5);
    EXPECT_EQ(last.Next() * 10 + last.Before(), 1u);
    EXPECT_EQ(last.part, 0.25);
    EXPECT_EQ(TurnAt(0.7, 0).index, 0u);
    for (const unsigned count : {1u, 2u, 5u})
        for (double phase = 0; phase < 1; phase += 0.01) {
            double held = 0, come = 0;
            for (unsigned i = 0; i < count; ++i) {
                held += TurnAt(phase, count).ShareOf(i, 0.4);
                come += InTurn(phase, i, count, 0.4);
            }
            EXPECT_NEAR(held, 1, 1e-9) << count << " at " << phase;
            EXPECT_NEAR(come, 1, 1e-9) << count << " at " << phase;
        }
}

TEST(Turns, HandOverAtTheirEndOrTakeOverAtTheirBeginning) {
    // The second of four has the part of the loop from 0.25 on.
    const auto share = [](double phase) { return TurnAt(phase, 4).ShareOf(1, 0.4); };
    EXPECT_EQ(share(0.25), 1);
    EXPECT_NEAR(share(0.45), 0.5, 1e-9);
    EXPECT_NEAR(share(0.20), 0.5, 1e-9);
    EXPECT_EQ(share(0.5), 0);
    const auto come = [](double phase) { return InTurn(phase, 1, 4, 0.4); };
    EXPECT_EQ(come(0.25), 0);
    EXPECT_NEAR(come(0.30), 0.5, 1e-9);
    EXPECT_EQ(come(0.36), 1);
    EXPECT_NEAR(come(0.55), 0.5, 1e-9);
    // Back at its place a turn and a half after its turn began; one by itself before the loop ends.
    EXPECT_EQ(ForwardInTurn(0.5, 1, 4, 1.5, 0.4), 1);
    EXPECT_NEAR(ForwardInTurn(0.575, 1, 4, 1.5, 0.4), 0.5, 1e-9);
    EXPECT_EQ(ForwardInTurn(0.7, 1, 4, 1.5, 0.4), 0);
    EXPECT_NEAR(ForwardInTurn(0.8, 0, 1, 1.5, 0.4), 0.5, 1e-9);
}

std::uint32_t PixelAt(const Layer& layer, unsigned x, unsigned y) { return LoadWord(layer.View().Row(y) + x); }

TEST(PictureMounts, SetPicturesBetweenRims) {
    const LayerKind kind;
    const MountStyle style{{0, 0, 255}, {{1, {0, 255, 0}}, {2, {255, 0, 0}}}, 0, 1, {0, 0, 0, 255}};
    PictureMounts mounts;
    for (const std::uint32_t colour : {0xFF102030u, 0xFF405060u}) {
        Layer picture = PlainLayer(kind, {3, 2}, {});
        StoreWord(picture.View().Row(0), colour);
        StoreWord(picture.View().Row(0) + 1, 0);
        mounts.Set(picture, kind, style);
        ASSERT_EQ(picture.Width() * 100 + picture.Height(), 1110u);
        EXPECT_EQ(PixelAt(picture, 4, 4), colour);
        EXPECT_EQ(PixelAt(picture, 5, 4), 0xFF0000FFu) << "its ground";
        EXPECT_EQ(PixelAt(picture, 3, 3), 0xFF00FF00u) << "the inner rim";
        EXPECT_EQ(PixelAt(picture, 1, 1), 0xFFFF0000u) << "the outer rim";
        EXPECT_EQ(PixelAt(picture, 5, 9), 0xFF000000u) << "its shadow";
        EXPECT_EQ(PixelAt(picture, 0, 0), 0u);
    }
}

TEST(PictureMounts, CutPictureAndRimsToOneOutline) {
    const LayerKind kind;
    PictureMounts mounts;
    Layer picture = PlainLayer(kind, {20, 20}, {255, 0, 0});
    mounts.Set(picture, kind,
               {{0, 0, 255}, {{4, {0, 0, 255}}}, 0, 0, {0, 0, 0, 0}, [](const Layer& layer) { CutEllipse(layer, 0); }});
    EXPECT_EQ(PixelAt(picture, 0, 0), 0u);
    EXPECT_EQ(PixelAt(picture, 5, 5), 0xFF0000FFu) << "beside the picture's circle, within the rim's";
    EXPECT_EQ(PixelAt(picture, 14, 14), 0xFFFF0000u);
}

TEST(Motion, RisesAndFallsWithinItsTime) {
    EXPECT_EQ(Between(0.2, 0.2, 0.8, 0.1), 0);
    EXPECT_NEAR(Between(0.25, 0.2, 0.8, 0.1), 0.5, 1e-9);
    EXPECT_EQ(Between(0.5, 0.2, 0.8, 0.1), 1);
    EXPECT_NEAR(Between(0.75, 0.2, 0.8, 0.1), 0.5, 1e-9);
    EXPECT_EQ(Between(0.9, 0.2, 0.8, 0.1), 0);
    EXPECT_EQ(Wrapped(-0.25), 0.75);
    for (double turns = -2; turns < 2; turns += 0.01) EXPECT_NEAR(Wave(turns), std::sin(turns * 2 * M_PI), 1.1e-3);
    EXPECT_EQ(FixedMixed(10, 20, fixedOne / 2), 15);
    EXPECT_EQ(FixedEased(fixedOne / 4), fixedOne * 5 / 32);
}

TEST(Motion, ScattersEvenlyAndAlwaysAlike) {
    EXPECT_EQ(Scattered(1, 0) * (1 << 24), 6589602);
    EXPECT_EQ(Scattered(41, 25) * (1 << 24), 11811030);
    unsigned inTenth[10] = {};
    for (unsigned i = 0; i < 2000; ++i) ++inTenth[unsigned(Scattered(7, i) * 10)];
    for (const unsigned count : inTenth) EXPECT_NEAR(count, 200, 45);
    EXPECT_NE(Scattered(1, 2), Scattered(2, 1));
}

}  // namespace
}  // namespace AVBased::Testing
