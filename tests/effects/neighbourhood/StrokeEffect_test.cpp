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

// Rough paper, whose teeth are two random places wide.
int Tooth(unsigned x, unsigned y) {
    int sum = 0;
    for (unsigned i = 0; i < 4; ++i) sum += int(PlaceBits(0, 0, 2, (x + i % 2) % 256, (y + i / 2) % 256) >> 24);
    return std::clamp(sum / 2 - 127, 0, 255);
}

Plane Drawn(const Plane& tones, int strength) {
    static const Plane teeth(256, 256, Tooth),
        lines(256, 256, [](int x, int y) { return 34 + Streak(0, x + y, x - y) * 150 / 256 + teeth(x, y) * 70 / 256; }),
        crossLines(256, 256, [](int x, int y) {
            return 112 + Streak(1, 2 * x - y, x + 2 * y) * 110 / 256 + teeth(x, y) * 70 / 256;
        });
    return tones.Like([&](int x, int y) {
        int sum = 0;
        for (int i = 0; i < 49; ++i) sum += tones.Near(x + i % 7 - 3, y + i / 7 - 3);
        const int mean = sum * 1338 / 65536, dark = 255 - mean, grain = teeth(x % 256, y % 256) * 10 / 256;
        const int line = std::max(0, mean - tones(x, y) - 5 - grain) * strength * 32 * (96 + dark / 2) / 65536;
        const int hatched =
            std::max(0, dark - lines(x % 256, y % 256)) + std::max(0, dark - crossLines(x % 256, y % 256));
        const int graphite = std::min(511, line + hatched * strength / 32);
        return 255 - grain - graphite * (1024 - graphite) / 1024 * 230 / 256;
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

// On a bright plain nothing but paper; a dark one is darker the harder the pencil is pressed, and never of one tone.
TEST(Stroke, LeavesPaperBareAndShowsItsGrainInTheDark) {
    const auto drawn = [](unsigned tone, int strength) {
        TestFrame frame(0, 64, 64);
        frame.Fill(0, tone);
        Apply(*MakeEffect("stroke", Numbers("stroke_", {{"strength", strength}})), frame);
        std::vector<int> luma = Picture(frame).planes[0].samples;
        std::sort(luma.begin(), luma.end());
        return std::array{luma[0], luma[2048], luma[3700]};
    };
    EXPECT_GT(drawn(210, 100)[0], 225);
    const auto soft = drawn(60, 30), hard = drawn(60, 80);
    EXPECT_LT(hard[1] + 40, soft[1]);
    EXPECT_GT(soft[2] - soft[0], 30);
}

}  // namespace
}  // namespace AVBased::Testing
