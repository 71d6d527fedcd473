#include "dvd_effects/canvas/painting.h"

#include <gtest/gtest.h>

namespace AVBased::Testing {
namespace {

TEST(Painting, HalvesByTheMeanOfWhatIsCovered) {
    const Layer layer(3, 3);
    const Rgba32 pixels[3][3] = {{{10, 0, 9, 255}, {20, 4, 9, 255}, {8, 8, 8, 0}},
                                 {{30, 0, 9, 255}, {41, 4, 9, 255}, {1, 2, 3, 100}},
                                 {{9, 9, 9, 0}, {7, 7, 7, 0}, {50, 60, 70, 40}}};
    for (unsigned y = 0; y < 3; ++y) std::copy_n(pixels[y], 3, layer.View().Row(y));
    const Layer half = Halved(layer);
    ASSERT_EQ(half.Width(), 2u);
    ASSERT_EQ(half.Height(), 2u);
    const auto at = [&](unsigned x, unsigned y) { return LoadWord(half.View().Row(y) + x); };
    EXPECT_EQ(at(0, 0), 0xFF090219u);
    EXPECT_EQ(at(1, 0), 0x32030201u);  // a pixel that is not covered does not affect the colour
    EXPECT_EQ(at(0, 1), 0u);
    EXPECT_EQ(at(1, 1), 0x28463C32u);  // an odd edge counts twice
}

}  // namespace
}  // namespace AVBased::Testing
