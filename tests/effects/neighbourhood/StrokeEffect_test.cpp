#include "tests/support/place_bits.h"
#include "tests/support/sweep.h"

namespace AVBased::Testing {
namespace {

// Strokes two pixels wide, each of random darkness every 32 pixels and changing evenly in between.
int Streak(unsigned kind, unsigned across, unsigned along) {
    const auto knot = [&](unsigned i) { return int(PlaceBits(0, 0, kind, i % 8, across / 2 % 128) >> 24); };
    const int part = int(along % 32);
    return (knot(along / 32) * (32 - part) + knot(along / 32 + 1) * part) / 32;
}

Plane Drawn(const Plane& tones, int strength) {
    static const Plane lines(256, 256, [](unsigned x, unsigned y) { return Streak(0, x + y, x - y); }),
        crossLines(256, 256, [](unsigned x, unsigned y) { return Streak(1, 2 * x - y, x + 2 * y); });
    return tones.Like([&](int x, int y) {
        int sum = 0;
        for (int i = 0; i < 49; ++i) sum += tones.Near(x + i % 7 - 3, y + i / 7 - 3);
        const int mean = sum * 1338 / 65536, line = std::max(0, mean - tones(x, y) - 4) * strength / 8;
        const int hatched =
            std::max(0, 255 - mean - lines(x % 256, y % 256)) + std::max(0, 143 - mean - crossLines(x % 256, y % 256));
        return 255 - std::min(225, line + hatched * strength / 64);
    });
}

TEST(Stroke, DrawsContoursAndHatchesOnPaper) {
    SweepFrames(250, [](const TestFrame& frame, std::mt19937& random) {
        const int strength = Between(-5, 110, random), colour = Between(-5, 110, random);
        const int line = std::clamp(strength, 0, 100), kept = std::clamp(colour, 0, 100) * 256 / 100;
        Picture picture(frame);
        std::vector<Plane>& planes = picture.planes;
        if (picture.packed) {
            const Plane tones = planes[0].Like([&](int x, int y) {
                return (29 * planes[0](x, y) + 150 * planes[1](x, y) + 77 * planes[2](x, y)) / 256;
            });
            const Plane drawn = Drawn(tones, line);
            for (unsigned p = 0; p < 3; ++p)
                planes[p] = planes[p].Like([&, in = planes[p]](int x, int y) {
                    return std::clamp(drawn(x, y) + ((in(x, y) - tones(x, y)) * kept >> 8), 0, 255);
                });
        } else {
            const Plane luma = planes[0];
            const Plane drawn =
                Drawn(luma.Like([&](int x, int y) { return std::clamp((luma(x, y) - 16) * 298 >> 8, 0, 255); }), line);
            planes[0] = luma.Like([&](int x, int y) { return 16 + drawn(x, y) * 220 / 256; });
            for (unsigned p : {1u, 2u})
                for (int& sample : planes[p].samples) sample = 128 + ((sample - 128) * kept >> 8);
        }
        ExpectEffect("stroke", Numbers("stroke_", {{"strength", strength}, {"color", colour}}), frame, picture);
    });
}

}  // namespace
}  // namespace AVBased::Testing
