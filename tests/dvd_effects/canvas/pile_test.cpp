#include "dvd_effects/canvas/pile.h"

#include <gtest/gtest.h>

#include "dvd_effects/canvas/painting.h"
#include "effects/base/row_loops.h"
#include "tests/dvd_effects/canvas/compositor_judge.h"

namespace AVBased::Testing {
namespace {

TEST(Pile, ComesOutAsIfEachLayerHadBeenLaidByItself) {
    std::mt19937 random(12);
    const auto between = [&](double least, double most) {
        return std::uniform_real_distribution<double>(least, most)(random);
    };
    for (unsigned i = 0; i < 180; ++i) {
        const TestFrame frame = RandomFrame(i, random);
        TestFrame expected = frame;
        // More of them, at times, than are looked at.
        std::vector<Layer> layers(2 + (i % 10 ? random() % 5 : 20));
        Pile pile;
        for (Layer& layer : layers) {
            layer = RandomLayer(1 + random() % 30, 1 + random() % 20, random);
            const bool isOpaque = random() % 4 > 0;
            if (isOpaque) ForEachPixel(layer.View(), [](std::uint32_t pixel) { return pixel | alphaMask; });
            const double x = between(0, SizeOf(expected).width), y = between(0, 20);
            auto placement =
                Placement::Turned({x, y}, between(1, 60), between(1, 30), random() % 3 ? between(-180, 180) : 0);
            if (random() % 3 == 0) placement.topLeft.x += between(-1, 1);
            const auto opacity = std::uint8_t(random() % 3 ? 255 : random() % 256);
            pile.Put(layer, placement, opacity, isOpaque);
            Canvas(expected, BestInstructionSet()).LayTransformed(layer, placement, opacity);
        }
        for (InstructionSet set : allInstructionSets) {
            if (!IsUsable(set)) continue;
            TestFrame actual = frame;
            Canvas canvas(actual, set);
            pile.Draw(canvas);
            ASSERT_EQ(actual, expected) << "frame " << i << " set " << int(set);
        }
    }
}

TEST(Pile, LeavesOutWhatIsHidden) {
    const LayerKind kind;
    const Layer below = PlainLayer(kind, {1, 1}, {255, 0, 0}), above(1, 1);
    TestFrame frame(30, 20, 20);
    const unsigned before = frame.Samples()[10][10];
    Pile pile;
    pile.Put(below, Placement::Turned({10, 10}, 20, 20, 5), 255, true);
    // What it hides shows where it says more than it holds.
    pile.Put(above, Placement::Turned({10, 10}, 9, 9, 30), 255, true);
    Canvas canvas(frame, BestInstructionSet());
    pile.Draw(canvas);
    EXPECT_EQ(frame.Samples()[10][10], before);
    EXPECT_EQ(frame.Samples()[10][17], 0xFFFF0000);
}

}  // namespace
}  // namespace AVBased::Testing
