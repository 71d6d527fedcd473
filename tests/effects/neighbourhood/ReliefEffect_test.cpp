#include <array>
#include <cmath>
#include <numbers>

#include "tests/support/sweep.h"

namespace AVBased::Testing {
namespace {

using Kernel = std::array<int, 9>;

Kernel KernelOf(int angle) {
    constexpr double pi = std::numbers::pi;
    const double x = (double(angle) + double(angle)) * pi / 360;
    Kernel kernel{};
    const double turns[] = {pi / 4, pi / 2, 3 * pi / 4, 0, 0, pi, -pi / 4, -pi / 2, -3 * pi / 4};
    for (unsigned i = 0; i < 9; ++i) kernel[i] = i == 4 ? 256 : int(std::cos(x + turns[i]) * 256);
    return kernel;
}

TEST(Relief, IsTheSumOfTheBlockOnEveryPlane) {
    EXPECT_EQ(KernelOf(40), (Kernel{22, -164, -255, 196, 256, -196, 255, 164, -22}));
    static constexpr int angles[] = {40, 0, 135, -77, 2147483647};
    SweepFrames(693, [](const TestFrame& frame, std::mt19937& random) {
        const int angle = angles[random() % std::size(angles)];
        const Kernel kernel = KernelOf(angle);
        Picture picture(frame);
        for (unsigned p = 0; p < 3; ++p) {
            const Plane in = picture.planes[p];
            picture.planes[p] = in.Like([&](int x, int y) {
                int sum = 0;
                for (int i = 0; i < 9; ++i) {
                    const int u = x + i % 3 - 1, v = y + i / 3 - 1;
                    if (in.Contains(u, v)) sum += in(u, v) * kernel[unsigned(i)] >> 8;
                }
                return std::clamp(sum, 0, 255);
            });
        }
        if (picture.packed) {
            const Plane alpha = picture.planes[3];
            picture.planes[3] = alpha.Like([&](int x, int y) { return alpha.Near(x + 1, y + 1); });
        }
        ExpectEffect("relief", Numbers("relief_", {{"angle", angle}}), frame, picture);
        if (angle == 40) ExpectEffect("relief", {}, frame, picture);
    });
}

}  // namespace
}  // namespace AVBased::Testing
