#include "tests/support/sweep.h"

namespace AVBased::Testing {
namespace {

// A tone as blue, green and red.
using Tint = int (*)(int tone, unsigned plane);

// Pixels by the truncated mean of their colours; of planar frames only chroma, padding included.
void ExpectTone(const char* name, const TestFrame& frame, Tint tint, unsigned u, unsigned v) {
    TestFrame expected = frame;
    Picture picture(frame);
    const std::vector<Plane> in = picture.planes;
    for (unsigned p = 0; p < 3 && picture.packed; ++p)
        picture.planes[p] =
            in[p].Like([&](int x, int y) { return tint((in[0](x, y) + in[1](x, y) + in[2](x, y)) / 3, p); });
    picture.StoreIn(expected);
    if (!picture.packed) expected.Fill(1, u), expected.Fill(2, v);
    ExpectEffect(name, {}, frame, expected);
}

TEST(SimpleColourEffects, ChangeEachPixelByItself) {
    SweepFrames(693, [](const TestFrame& frame, std::mt19937&) {
        const auto gray = [](int tone, unsigned) { return tone; };
        const auto aged = [](int tone, unsigned plane) {
            return std::max(tone, 35) - (plane == 0 ? 35 : plane == 1 ? 15 : 0);
        };
        ExpectTone("gray", frame, gray, 127, 127);
        ExpectTone("aged_film", frame, aged, 117, 136);

        Picture inverted(frame), flipped = inverted;
        for (unsigned p = 0; p < 3; ++p)
            for (int& sample : inverted.planes[p].samples) sample = 255 - sample;
        std::swap(flipped.planes[flipped.packed ? 0 : 1], flipped.planes[2]);
        ExpectEffect("invert", {}, frame, inverted);
        ExpectEffect("flip_color", {}, frame, flipped);
    });
}

TEST(SimpleColourEffects, GrayFillsPlanesTooLargeForTheCacheToTheLastByte) {
    for (unsigned padding : {0u, 1u, 63u}) {
        TestFrame frame(60, 517, 521, {{0, padding, padding, 0}}), expected = frame;
        expected.Fill(1, 127);
        expected.Fill(2, 127);
        ExpectEffect("gray", {}, frame, expected);
    }
}

}  // namespace
}  // namespace AVBased::Testing
