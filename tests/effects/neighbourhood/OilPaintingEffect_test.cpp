#include <cstdint>
#include <map>

#include "tests/support/sweep.h"

namespace AVBased::Testing {
namespace {

Settings Brush(std::int64_t radius, std::int64_t coarseness) {
    return Numbers("oilpainting_", {{"brushsize", int(radius)}, {"coarseness", int(coarseness)}});
}

// The brush of every position rescanned, every write made.
Picture Painted(const TestFrame& frame, std::int64_t radius, std::int64_t coarseness) {
    const Picture from(frame);
    Picture to = from;
    const Plane& levels = from.planes[from.packed ? 1 : 0];
    struct Class {
        int count = 0, sum[3] = {};
    };
    for (int y = 0; y < levels.height; ++y)
        for (int x = 0; x < levels.width; ++x) {
            std::map<std::int64_t, Class> classes;
            const int right = int(std::min<std::int64_t>(levels.width, x + radius + 1)),
                      bottom = int(std::min<std::int64_t>(levels.height, y + radius + 1));
            for (int v = int(std::max<std::int64_t>(0, y - radius)); v < bottom; ++v)
                for (int u = int(std::max<std::int64_t>(0, x - radius)); u < right; ++u) {
                    Class& c = classes[coarseness * levels(u, v) >> 8];
                    ++c.count;
                    for (unsigned p = 0; p < 3; ++p) c.sum[p] += from.Near(p, u, v);
                }
            const Class* mode = &classes.begin()->second;
            for (const auto& [number, c] : classes)
                if (c.count > mode->count) mode = &c;
            to.Set(x, y, [&](unsigned p) { return p < 3 ? mode->sum[p] / mode->count : 0; });
        }
    return to;
}

TEST(OilPainting, BothChromaPlanesHaveThePitchOfTheFirstUnlessThatLeavesTheSecond) {
    TestFrame frame(60, 2, 2, {{0, 0, 1, 0}});
    for (unsigned p = 0; p < 3; ++p) frame.Fill(p, 40);
    frame.SetSamples(2, {{10, 20}, {60, 70}});
    Apply(*MakeEffect("oilpainting", Brush(1, 0)), frame);
    EXPECT_EQ(frame.Samples(2), (Grid{{32, 32}, {32, 70}}));  // 10, 20, the padding's 40 and 60

    TestFrame narrow(60, 2, 2, {{0, 1, 0, 0}});
    for (unsigned p = 0; p < 3; ++p) narrow.Fill(p, 40);
    narrow.SetSamples(2, {{10, 20}, {60, 70}});
    Apply(*MakeEffect("oilpainting", Brush(1, 0)), narrow);
    EXPECT_EQ(narrow.Samples(2), (Grid{{40, 40}, {40, 40}}));
}

TEST(OilPainting, StartsWithCoarsenessFiftyThoughThreeIsRegistered) {
    std::mt19937 random(50);
    TestFrame frame(30, 20, 9);
    frame.Randomise(random);
    EXPECT_STREQ(MakeEffect("oilpainting")->GetProperty("oilpainting_coarseness", nullptr), "3");
    ExpectEffect("oilpainting", {}, frame, Painted(frame, 3, 50));
}

TEST(OilPainting, TakesTheMeanOfTheMostFrequentClass) {
    static constexpr std::int64_t coarsenesses[] = {0, 1, 2, 3, 50, 63, 64, 200, 254, 255, 256, 0x7FFFFFFF, 0xFFFFFFFF};
    SweepFrames(400, [](TestFrame& frame, std::mt19937& random) {
        unsigned width, height, pitch, secondPitch;
        frame.GetDimension(&width, &height);
        frame.GetBuffer(1, nullptr, &pitch, nullptr);
        frame.GetBuffer(2, nullptr, &secondPitch, nullptr);
        if (pitch != secondPitch) return;
        const bool isLarge = width * height > 600, isHuge = random() % 12 == 0 && !isLarge;
        const std::int64_t radius = isHuge ? 0xFFFFFFFF - random() % 2 : Between(0, isLarge ? 3 : 10, random);
        const std::int64_t coarseness = coarsenesses[random() % std::size(coarsenesses)];
        ExpectEffect("oilpainting", Brush(radius, coarseness), frame, Painted(frame, radius, coarseness));
    });
}

}  // namespace
}  // namespace AVBased::Testing
