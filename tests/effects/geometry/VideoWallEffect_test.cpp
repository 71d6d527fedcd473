#include <gtest/gtest.h>

#include "tests/support/random_frames.h"

namespace AVBased::Testing {
namespace {

Settings Tiles(const char* across, const char* down) {
    return {{"videowall_horiTiles", across}, {"videowall_verTiles", down}};
}

TEST(VideoWall, RepeatsTheShrunkPicture) {
    TestFrame frame(30, 7, 4);
    frame.SetSamples(0, {{0, 1, 2, 3, 4, 5, 6},
                         {10, 11, 12, 13, 14, 15, 16},
                         {20, 21, 22, 23, 24, 25, 26},
                         {30, 31, 32, 33, 34, 35, 36}});
    Apply(*MakeEffect("videowall", Tiles("3", "2")), frame);
    const std::vector<unsigned> first = {0, 3, 0, 3, 0, 3, 0}, second = {20, 23, 20, 23, 20, 23, 20};
    EXPECT_EQ(frame.Samples(), (Grid{first, second, first, second}));
}

TEST(VideoWall, EndsInAPartOfATile) {
    TestFrame frame(30, 5, 3);
    frame.SetSamples(0, {{0, 1, 2, 3, 4}, {10, 11, 12, 13, 14}, {20, 21, 22, 23, 24}});
    Apply(*MakeEffect("videowall", Tiles("2.5", "1.5")), frame);
    EXPECT_EQ(frame.Samples(), (Grid{{0, 2, 0, 2, 0}, {10, 12, 10, 12, 10}, {0, 2, 0, 2, 0}}));
}

TEST(VideoWall, ReadsChromaThatItHasWritten) {
    // Tiles three wide: columns 0 and 1 share a chroma sample, and column 2 shares one with the next tile's column 0.
    TestFrame frame(4, 10, 1);
    frame.SetSamples(0, {{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}});
    frame.SetSamples(1, {{10, 20, 30, 40, 50}});
    frame.SetSamples(2, {{60, 70, 80, 90, 100}});
    Apply(*MakeEffect("videowall", Tiles("3", "1")), frame);
    EXPECT_EQ(frame.Samples(0), (Grid{{0, 3, 6, 0, 3, 6, 0, 3, 6, 0}}));
    EXPECT_EQ(frame.Samples(1), (Grid{{20, 20, 20, 20, 20}}));
    EXPECT_EQ(frame.Samples(2), (Grid{{70, 70, 70, 70, 70}}));
}

TEST(VideoWall, LeavesTheFrameForCountsItCannotUse) {
    std::mt19937 random(1);
    TestFrame frame(0, 13, 7);
    frame.Randomise(random);
    const TestFrame before = frame;
    for (const char* count : {"1", "0.99", "0", "-3", "nan", "inf"}) {
        Apply(*MakeEffect("videowall", Tiles(count, "1")), frame);
        EXPECT_EQ(frame, before) << count;
        Apply(*MakeEffect("videowall", Tiles("1", count)), frame);
        EXPECT_EQ(frame, before) << count;
    }
}

TEST(VideoWall, CopiesPositionByPositionInTheFrameItself) {
    const auto settings = [](unsigned, unsigned, std::mt19937& random) {
        Settings tiles = Tiles("1", "1");
        for (auto& [name, value] : tiles)
            if (random() % 4) value = RealBetween(1, random() % 2 ? 2 : 6, random);
        return tiles;
    };
    CompareOnRandomFrames("videowall", 300, settings, [](const auto& to, const auto&, const Settings& s) {
        const double across = std::stod(s[0].second), down = std::stod(s[1].second);
        const unsigned width = LumaOf(to).width, height = LumaOf(to).height;
        const unsigned tileWidth = unsigned(width * 256 / across) >> 8, tileHeight = unsigned(height * 256 / down) >> 8;
        const auto place = PlacerOf(to, to);
        for (unsigned y = 0; y < tileHeight; ++y)
            for (unsigned x = 0; x < tileWidth; ++x)
                place(x, y, {x * unsigned(across * 256) >> 8, y * unsigned(down * 256) >> 8});
        for (unsigned y = 0; y < tileHeight; ++y)
            for (unsigned x = tileWidth, from = 0; x < width; ++x) {
                place(x, y, {from, y});
                from = from == tileWidth ? 1 : from + 1;
            }
        for (unsigned y = tileHeight, from = 0; y < height; ++y) {
            for (unsigned x = 0; x < width; ++x) place(x, y, {x, from});
            if (++from == tileHeight) from = 0;
        }
    });
}

}  // namespace
}  // namespace AVBased::Testing
