#include "tests/support/sweep.h"

namespace AVBased::Testing {
namespace {

// The extreme over three columns from x on and three rows from y + top on, where these are in the plane.
template <class Better>
Plane Extremes(const Plane& in, int top, Better better) {
    return in.Like([&](int x, int y) {
        if (!in.Contains(x + 2, y + top) || !in.Contains(x, y + top + 2)) return in(x, y);
        int best = in(x, y);
        for (int i = 0; i < 9; ++i) best = better(best, in(x + i % 3, y + top + i / 3));
        return best;
    });
}

TEST(ErodeDilate, TakeTheExtremeOfABlockThatErodesUpwardsAndDilatesDownwards) {
    SweepFrames(693, [](const TestFrame& frame, std::mt19937&) {
        Picture eroded(frame), dilated = eroded;
        for (unsigned p = 0; p < 3; ++p) {
            eroded.planes[p] = Extremes(eroded.planes[p], 0, [](int a, int b) { return std::min(a, b); });
            dilated.planes[p] = Extremes(dilated.planes[p], -2, [](int a, int b) { return std::max(a, b); });
        }
        ExpectEffect("erode", {}, frame, eroded);
        ExpectEffect("dilate", {}, frame, dilated);
    });
}

}  // namespace
}  // namespace AVBased::Testing
