#include <limits>

#include "tests/support/place_bits.h"
#include "tests/support/sweep.h"

namespace AVBased::Testing {
namespace {

TEST(Atomize, TakesEachPixelFromItsOwnPlaceNearby) {
    SweepFrames(200, [](const TestFrame& frame, std::mt19937& random) {
        const int radius = random() % 8 ? Between(0, 12, random) : 300, side = 2 * std::min(radius, 255) + 1;
        const int seed = int(random()), position = Between(-5, 1000, random);
        Picture picture(frame);
        for (unsigned p = 0; p < picture.planes.size(); ++p) {
            const Plane from = picture.planes[p];
            const int across = picture.ColumnShift(p), down = picture.RowShift(p);
            picture.planes[p] = from.Like([&](int x, int y) {
                const std::uint32_t bits = PlaceBits(seed, position, 0, x << across, y << down);
                const auto step = [&](unsigned shift) {
                    const int sum = int(bits >> shift & 255) + int(bits >> (shift + 8) & 255);
                    return ((sum - 255) * side + 256) >> 9;
                };
                return radius ? from.Near(((x << across) + step(0)) >> across, ((y << down) + step(16)) >> down)
                              : from(x, y);
            });
        }
        ExpectEffect("atomize", Numbers("atomize_", {{"radius", radius}, {"seed", seed}}), frame, picture, 0, position);
    });
}

TEST(Atomize, TakesAMissingPositionFromTheFramesTimeStamp) {
    std::mt19937 random(3);
    TestFrame frame(30, 40, 20);
    frame.Randomise(random);
    frame.SetTimeStamp(9);
    const auto sprayed = [&](int position) {
        TestFrame result = frame;
        Apply(*MakeEffect("atomize"), result, position);
        return result;
    };
    EXPECT_EQ(sprayed(std::numeric_limits<int>::min()), sprayed(9));
    EXPECT_FALSE(sprayed(9) == sprayed(10));
}

}  // namespace
}  // namespace AVBased::Testing
