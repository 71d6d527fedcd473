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
                const unsigned column = unsigned(x) << across;
                const unsigned place = PlaceBits(seed, position, 0, column / 1024, y << down) % 16384 + column % 1024;
                const std::uint32_t bits = Stirred(Stirred(~std::uint32_t(seed)) + place * 0x9E3779B9);
                // Mostly near: the cube of a random number.
                const int part = int(bits & 255), share = part * part * part / 65536;
                const auto step = [&](unsigned byte, int shift) {
                    const int way = 2 * int(bits >> 8 * byte & 255) - 255;
                    return (way * share * side + (1 << (16 + shift))) >> (17 + shift);
                };
                return radius ? from.Near(x + step(1, across), y + step(2, down)) : from(x, y);
            });
        }
        ExpectEffect("atomize", Numbers("atomize_", {{"radius", radius}, {"seed", seed}}), frame, picture, 0, position);
    });
}

TEST(Atomize, KeepsSmallThingsAndSpraysSomeFar) {
    TestFrame frame(0, 300, 200);
    Picture picture(frame);
    picture.planes[0] = picture.planes[0].Like([](int x, int y) { return x / 3 + y % 100; });
    picture.StoreIn(frame);
    for (const auto& [radius, leastShare] : {std::pair{1, 80}, {3, 60}, {12, 25}}) {
        TestFrame sprayed = frame;
        Apply(*MakeEffect("atomize", Numbers("atomize_", {{"radius", radius}})), sprayed);
        const Plane after = Picture(sprayed).planes[0];
        int same = 0, far = 0;
        for (int y = 20; y < 80; ++y)
            for (int x = 20; x < 280; ++x) {
                const int change = std::abs(after(x, y) - picture.planes[0](x, y));
                same += change == 0;
                far += change > 3 * radius / 4;
            }
        EXPECT_GT(same, leastShare * 156) << radius;
        EXPECT_GT(far, 156) << radius;
    }
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
