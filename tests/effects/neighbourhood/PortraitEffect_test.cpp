#include "tests/support/sweep.h"

namespace AVBased::Testing {
namespace {

struct Look {
    int strength, radius, glow;

    Settings AsSettings() const {
        return Numbers("portrait_", {{"strength", strength}, {"radius", radius}, {"glow", glow}});
    }
};

// The means over squares, with `bits` more binary digits.
Plane Means(const Plane& in, int radius, unsigned bits) {
    const unsigned cells = unsigned((2 * radius + 1) * (2 * radius + 1));
    return in.Like([&](int x, int y) {
        std::uint64_t sum = 0;
        for (int v = y - radius; v <= y + radius; ++v)
            for (int u = x - radius; u <= x + radius; ++u) sum += unsigned(in.Near(u, v));
        return int((sum * (((1u << 24) + cells / 2) / cells)) >> (24 - bits));
    });
}

// chroma(x, y) returns the u and v of a pixel.
template <class Chroma>
Plane Softened(const Plane& tones, Look look, int white, Chroma chroma) {
    const int radius = (look.radius + 1) / 2, flat = look.strength * look.strength * 5 / 100;
    const Plane cells((tones.width + 1) / 2, (tones.height + 1) / 2, [&](int x, int y) {
        return (tones.Near(2 * x, 2 * y) + tones.Near(2 * x + 1, 2 * y) + tones.Near(2 * x, 2 * y + 1) +
                tones.Near(2 * x + 1, 2 * y + 1) + 2) /
               4;
    });
    const Plane light = Means(cells, radius, 8),
                squares = Means(cells.Like([&](int x, int y) { return cells(x, y) * cells(x, y); }), radius, 8);
    const Plane share = cells.Like([&](int x, int y) {
        const int m = light(x, y), square = int(std::int64_t(m) * m / 256);
        const int variance = std::clamp((squares(x, y) - square) / 256, 0, 4095);
        const auto [u, v] = chroma(2 * x, 2 * y);
        const int near = std::clamp(8 * (52 - std::abs(u - 108) - std::abs(v - 152)), 0, 255);
        return flat ? 255 * flat * flat / (variance * variance + flat * flat) * (90 + near * 165 / 256) *
                          std::min(m / 128, 255) / 65536
                    : 0;
    });
    const Plane a = Means(share, radius, 8), l = Means(light, radius, 0),
                b = Means(cells.Like([&](int x, int y) { return share(x, y) * light(x, y) / 256; }), radius, 0);
    return tones.Like([&](int x, int y) {
        const auto full = [&](const Plane& in) {
            const int besideX = x % 2 ? x / 2 + 1 : x / 2 - 1, besideY = y % 2 ? y / 2 + 1 : y / 2 - 1;
            const auto column = [&](int u) { return (3 * in.Near(u, y / 2) + in.Near(u, besideY)) / 4; };
            return (3 * column(x / 2) + column(besideX)) / 4;
        };
        const int t = tones(x, y), s = std::clamp(t + ((256 * full(b) - full(a) * t + 32768) >> 16), 0, 255);
        const int bright = full(l) / 256, glow = look.glow * 256 / 100;
        return s + std::max(0, white - s) * s / 16 * (bright * bright * glow / 256) / 1048576;
    });
}

TEST(Portrait, SoftensTonesAndKeepsColours) {
    static constexpr Look looks[] = {{50, 8, 0}, {100, 3, 100}, {30, 64, 20}, {0, 1, 0}};
    SweepFrames(150, [](const TestFrame& frame, std::mt19937& random) {
        const Picture from(frame);
        const Look look = looks[random() % (from.Width() * from.Height() > 600 ? 2 : 4)];
        Picture to = from;
        if (from.packed) {
            const auto mix = [&](int x, int y, int blue, int green, int red) {
                return blue * from.planes[0].Near(x, y) + green * from.planes[1].Near(x, y) +
                       red * from.planes[2].Near(x, y);
            };
            const Plane tones = from.planes[0].Like([&](int x, int y) { return mix(x, y, 29, 150, 77) / 256; });
            const Plane soft = Softened(tones, look, 255, [&](int x, int y) {
                return std::pair(128 + (mix(x, y, 128, -85, -43) >> 8), 128 + (mix(x, y, -21, -107, 128) >> 8));
            });
            for (unsigned p = 0; p < 3; ++p)
                to.planes[p] = tones.Like(
                    [&](int x, int y) { return std::clamp(from.planes[p](x, y) + soft(x, y) - tones(x, y), 0, 255); });
        } else {
            to.planes[0] = Softened(from.planes[0], look, 235, [&](int x, int y) {
                const int *const u = to.At(1, x, y), *const v = to.At(2, x, y);
                return u && v ? std::pair(*u, *v) : std::pair(128, 128);
            });
        }
        ExpectEffect("portrait", look.AsSettings(), frame, to);
    });
}

// The spread of a plane's middle after softening fine noise in that colour.
int SpreadOfNoise(int tone, unsigned u, unsigned v) {
    std::mt19937 random(4);
    TestFrame frame(0, 60, 60);
    Picture noise(frame);
    for (int& sample : noise.planes[0].samples) sample = tone + Between(-8, 8, random);
    noise.StoreIn(frame);
    frame.Fill(1, u);
    frame.Fill(2, v);
    Apply(*MakeEffect("portrait", Look{50, 8, 0}.AsSettings()), frame);
    const Plane after = Picture(frame).planes[0];
    int spread = 0;
    for (int y = 20; y < 40; ++y)
        for (int x = 20; x < 40; ++x) spread += std::abs(after(x, y) - tone);
    return spread;
}

TEST(Portrait, SmoothsSkinMostAndShadowsAndOtherColoursLess) {
    const int skin = SpreadOfNoise(150, 108, 152), grass = SpreadOfNoise(150, 90, 110),
              hair = SpreadOfNoise(40, 108, 152);
    EXPECT_LT(skin * 5, grass);
    EXPECT_LT(skin * 5, hair);
}

// A pupil, and hair of strong contrast, in skin that glows.
TEST(Portrait, KeepsEyesDarkAndHairCrisp) {
    TestFrame frame(0, 80, 40);
    Picture picture(frame);
    picture.planes[0] = picture.planes[0].Like([](int x, int y) {
        if (x >= 40) return x % 4 < 2 ? 130 : 80;
        return std::abs(x - 20) < 4 && std::abs(y - 20) < 4 ? 30 : 170;
    });
    picture.StoreIn(frame);
    frame.Fill(1, 108);
    frame.Fill(2, 152);
    Apply(*MakeEffect("portrait", Look{60, 8, 40}.AsSettings()), frame);
    const Plane after = Picture(frame).planes[0];
    EXPECT_LT(after(20, 20), 40);
    EXPECT_GT(after(60, 20) - after(62, 20), 44);
}

}  // namespace
}  // namespace AVBased::Testing
