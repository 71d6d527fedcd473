#include "tests/support/sweep.h"

namespace AVBased::Testing {
namespace {

TEST(Reverse, TurnsEveryPlaneForTheValueOneOnly) {
    SweepFrames(693, [](const TestFrame& frame, std::mt19937& random) {
        const int mirror = Between(-1, 2, random), vertical = Between(-1, 2, random);
        Picture picture(frame);
        for (Plane& plane : picture.planes)
            plane = plane.Like([&](int x, int y) {
                return plane(mirror == 1 ? plane.width - 1 - x : x, vertical == 1 ? plane.height - 1 - y : y);
            });
        ExpectEffect("reverse", Numbers("", {{"mirror", mirror}, {"vertical", vertical}}), frame, picture);
    });
}

}  // namespace
}  // namespace AVBased::Testing
