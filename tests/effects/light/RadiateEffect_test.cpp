#include "tests/support/sweep.h"

namespace AVBased::Testing {
namespace {

// A distance from the centre, a step nearer to it.
int Nearer(int distance, int level) {
    return int(unsigned(distance) - unsigned(int(unsigned(distance >> 4) * unsigned(level)) >> 10));
}

TEST(Radiate, SumsSixteenStepsTowardsTheCentre) {
    SweepFrames(500, [](const TestFrame& frame, std::mt19937& random) {
        const bool isInitial = random() % 16 == 0;
        const int cx = isInitial ? 300 : Between(-20, 200, random), cy = isInitial ? 300 : Between(-9, 40, random);
        const int level = isInitial ? 300 : Between(random() % 4 ? 0 : -100, random() % 4 ? 1000 : 16384, random);
        const Picture from(frame);
        Picture to = from;
        for (int y = 0; y < from.Height(); ++y)
            for (int x = 0; x < from.Width(); ++x) {
                const int own[4] = {from.Near(0, x, y), from.Near(1, x, y), from.Near(2, x, y),
                                    from.planes.size() > 3 ? from.Near(3, x, y) : 0};
                int dx = (x - cx) * 256, dy = (y - cy) * 256;
                unsigned sums[3] = {unsigned(own[0]), unsigned(own[1]), unsigned(own[2])};
                for (int i = 0; i < 16; ++i) {
                    dx = Nearer(dx, level), dy = Nearer(dy, level);
                    const int u = std::clamp((dx + cx * 256 + 256) >> 8, 0, from.Width() - 1),
                              v = std::clamp((dy + cy * 256 + 256) >> 8, 0, from.Height() - 1);
                    for (unsigned p = 0; p < 3; ++p) sums[p] += unsigned(from.Near(p, u, v));
                }
                // 17 values over 16; a bias that falls below black turns white, and chroma has none.
                to.Set(x, y, [&](unsigned p) {
                    if (p == 3) return own[3];
                    return int(std::min((sums[p] >> 4) + unsigned(from.IsChroma(p) ? 0 : level >> 3), 255u));
                });
            }
        const Settings settings = Numbers("radiate_", {{"x", cx}, {"y", cy}, {"level", level}});
        ExpectEffect("radiate", isInitial ? Settings{} : settings, frame, to);
    });
}

}  // namespace
}  // namespace AVBased::Testing
