#include "tests/support/sweep.h"

namespace AVBased::Testing {
namespace {

TEST(VideoWall, CopiesPositionByPositionInTheFrameItself) {
    SweepFrames(500, [](const TestFrame& frame, std::mt19937& random) {
        const auto tiles = [&] { return random() % 4 ? RealBetween(0, random() % 2 ? 2 : 6, random) : 1; };
        const double across = tiles(), down = tiles();
        Picture picture(frame);
        const int width = picture.Width(), height = picture.Height();
        if (across >= 1 && down >= 1) {
            const int tileWidth = int(width * 256 / across) >> 8, tileHeight = int(height * 256 / down) >> 8;
            for (int y = 0; y < tileHeight; ++y)
                for (int x = 0; x < tileWidth; ++x)
                    picture.Take(x, y, picture, x * int(across * 256) >> 8, y * int(down * 256) >> 8);
            for (int y = 0; y < tileHeight; ++y)
                for (int x = tileWidth, from = 0; x < width; ++x) {
                    picture.Take(x, y, picture, from, y);
                    from = from == tileWidth ? 1 : from + 1;
                }
            for (int y = tileHeight, from = 0; y < height; ++y) {
                for (int x = 0; x < width; ++x) picture.Take(x, y, picture, x, from);
                if (++from == tileHeight) from = 0;
            }
        }
        ExpectEffect("videowall", Numbers("videowall_", {{"horiTiles", across}, {"verTiles", down}}), frame, picture);
    });
}

TEST(VideoWall, LeavesTheFrameForCountsThatAreNoNumbers) {
    std::mt19937 random(1);
    TestFrame frame(0, 13, 7);
    frame.Randomise(random);
    for (const char* count : {"nan", "inf", "-inf"})
        ExpectEffect("videowall", {{"videowall_horiTiles", count}, {"videowall_verTiles", count}}, frame, frame);
}

}  // namespace
}  // namespace AVBased::Testing
