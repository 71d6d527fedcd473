#include "effects/geometry/MagnifierEffect.h"

#include "tests/support/sweep.h"

namespace AVBased::Testing {
namespace {

int Mixed(int a, int b, int share) { return a + ((b - a) * share >> 8); }

// A sample at a place in 65536ths, between its neighbours in its own plane.
int MixedAt(const Picture& from, unsigned plane, unsigned x, unsigned y, bool twoSteps) {
    const int column = int(x >> 16) >> from.ColumnShift(plane), row = int(y >> 16) >> from.RowShift(plane);
    const int fx = x >> 8 & 255, fy = y >> 8 & 255, both = fx * fy >> 8;
    const Plane& in = from.planes[plane];
    const int own = in.Near(column, row), right = in.Near(column + 1, row), below = in.Near(column, row + 1),
              belowRight = in.Near(column + 1, row + 1);
    if (from.packed && twoSteps) return Mixed(Mixed(own, right, fx), Mixed(below, belowRight, fx), fy);
    // Planar pictures exchange the weights of the right and the lower neighbour.
    const int rightWeight = (from.packed ? fx : fy) - both, belowWeight = (from.packed ? fy : fx) - both;
    const int ownWeight = from.packed ? 256 - fx - belowWeight : 256 - fy - belowWeight;
    return (own * ownWeight + right * rightWeight + below * belowWeight + belowRight * both) >> 8;
}

Picture Magnified(const TestFrame& frame, unsigned r, unsigned cx, unsigned cy, double scale, bool twoSteps) {
    const Picture from(frame);
    Picture to = from;
    const unsigned w = unsigned(from.Width()), h = unsigned(from.Height());
    if (cx > w || cy > h || scale <= 1 || r > w / 2 || r > h / 2) return to;
    const bool nearest = scale <= 2;
    const unsigned edge = !nearest && from.packed;
    const unsigned left = cx < r ? edge : cx - r, top = cy < r ? edge : cy - r;
    const unsigned width = cx < r ? cx + r : std::min(2 * r, w - left);
    const unsigned height = cy < r ? cy + r : std::min(2 * r, h - top);
    const unsigned step = unsigned((nearest ? 256 : 65536) / scale);
    const unsigned xSurplus = (unsigned(width * scale) - width) * step,
                   ySurplus = (unsigned(height * scale) - height) * step;
    for (unsigned j = 0; j < height; ++j)
        for (unsigned i = 0; i < width; ++i) {
            const unsigned x = left + i, y = top + j;
            if ((x - cx) * (x - cx) + (y - cy) * (y - cy) >= r * r) continue;
            if (nearest) {
                to.Take(int(x), int(y), from, int((i * step >> 8) + (xSurplus >> 9) + left),
                        int((j * step >> 8) + (ySurplus >> 9) + top));
            } else {
                const unsigned sx = i * step + (xSurplus >> 1) + (left << 16),
                               sy = j * step + (ySurplus >> 1) + (top << 16);
                to.Set(int(x), int(y), [&](unsigned p) { return MixedAt(from, p, sx, sy, twoSteps); });
            }
        }
    return to;
}

TEST(Magnifier, TakesWhatTheStepsSayInsideTheCircle) {
    SweepFrames(1000, [](const TestFrame& frame, std::mt19937& random) {
        static constexpr double limits[] = {-3, 1, 2, 2.0001};
        const Picture size(frame);
        const int r = Between(0, std::min(size.Width(), size.Height()) / 2 + (random() % 8 == 0), random);
        const int x = Between(0, size.Width() + 1, random), y = Between(0, size.Height() + 1, random);
        const double scale = random() % 8 ? RealBetween(1, random() % 2 ? 2 : 7, random) : limits[random() % 4];
        const Settings glass = Numbers("magnifier_", {{"r", r}, {"x", x}, {"y", y}, {"scale", scale}});
        ExpectEffect("magnifier", glass, frame, Magnified(frame, unsigned(r), unsigned(x), unsigned(y), scale, true));

        TestFrame plain = frame, expected = frame;
        Magnified(frame, unsigned(r), unsigned(x), unsigned(y), scale, false).StoreIn(expected);
        const EffectOwner effect(new CMagnifierVideoImageEffect(0));
        for (const auto& [name, value] : glass) effect->SetProperty(name.c_str(), value.c_str());
        Apply(*effect, plain);
        ASSERT_EQ(plain, expected) << "without a vector unit" << Describe(glass);
    });
}

}  // namespace
}  // namespace AVBased::Testing
