#include "dvd_effects/menu/menu_picture.h"

#include <gtest/gtest.h>

#include "dvd_effects/canvas/painting.h"

namespace AVBased::Testing {
namespace {

TEST(MenuPicture, KeepsMoreOfTheUpperEndWhereItIsCropped) {
    MenuPicture picture(FrameKind{30, {8, 8}});
    picture.layer = Layer(4, 12);
    for (unsigned y = 0; y < 12; ++y) picture.layer.View().Row(y)[0].blue = std::uint8_t(y);
    picture.CropTo({4, 4});
    EXPECT_EQ(picture.layer.Size(), (FrameSize{4, 4}));
    EXPECT_EQ(picture.layer.View().Row(0)[0].blue, 2);
}

TEST(MenuPicture, StandsWholeBeforeItsOwnBlurredColours) {
    for (const bool packed : {true, false}) {
        MenuPicture picture(FrameKind{packed ? 30u : 0u, {48, 32}});
        // Of two colours, the upper and the lower half.
        picture.layer = Layer(12, 24);
        FillGradient(picture.layer, picture.kind, {250, 60, 40}, {20, 40, 220});
        const Layer own = Cropped(picture.layer, 0, 0, picture.layer.Size());
        picture.SetOnStage({48, 32});
        ASSERT_EQ(picture.layer.Size(), (FrameSize{48, 32}));
        for (unsigned y = 0; y < 24; ++y)
            for (unsigned x = 0; x < 12; ++x)
                ASSERT_EQ(LoadWord(picture.layer.View().Row(y + 4) + x + 18), LoadWord(own.View().Row(y) + x));
        // Beside it about as its middle, darker.
        const Rgba32 beside = picture.layer.View().Row(16)[4], middle = own.View().Row(12)[6];
        EXPECT_EQ(beside.alpha, 255);
        EXPECT_LT(beside.blue, middle.blue);
        EXPECT_GT(beside.blue, middle.blue / 3);
        EXPECT_TRUE(IsOpaque(picture.layer));
    }
}

}  // namespace
}  // namespace AVBased::Testing
