#include <cmath>

#include "tests/support/sweep.h"

namespace AVBased::Testing {
namespace {

struct Spot {
    unsigned x, y, radius;
    int colour, density, brightness;  // of the properties, in per cent

    // As blue, green and red, or as luma and chroma.
    unsigned ColourOf(unsigned plane, bool packed) const {
        const int red = colour >> 16, green = colour >> 8 & 255, blue = colour & 255;
        if (packed) return unsigned(plane == 0 ? blue : plane == 1 ? green : red);
        if (plane == 0) return unsigned(0.257 * red + 0.504 * green + 0.098 * blue + 16);
        if (plane == 1) return unsigned(-0.148 * red - 0.291 * green + 0.439 * blue + 128);
        return unsigned(0.439 * red - 0.368 * green - 0.071 * blue + 128);
    }
};

void Light(Picture& picture, const Spot& s) {
    const unsigned width = unsigned(picture.Width()), height = unsigned(picture.Height());
    const unsigned r = s.radius, ring = 3 * r >> 2;
    if (ring == 0 || s.x > width || s.y > height) return;
    const unsigned opacity = unsigned(s.density << 16) / 100;
    const int added = s.brightness * 256 / 100, step = added * 256 / int(ring);
    for (unsigned y = s.y > r ? s.y - r : 0; y < std::min(height, s.y + r); ++y)
        for (unsigned x = s.x > r ? s.x - r : 0; x < std::min(width, s.x + r); ++x) {
            const unsigned square = (x - s.x) * (x - s.x) + (y - s.y) * (y - s.y);
            if (square > r * r) continue;
            const bool isCore = square <= (r - ring) * (r - ring);
            const unsigned toRim = r - unsigned(std::sqrt(double(square)));
            const unsigned weight = isCore ? opacity : opacity / ring * toRim;
            const unsigned light = unsigned(isCore ? added : int(toRim) * step >> 8);
            // Chroma is tinted once for each position that shares it, and not brightened. Alpha stays.
            picture.Set(int(x), int(y), [&](unsigned p) {
                const auto own = unsigned(*picture.At(p, int(x), int(y)));
                if (p == 3) return int(own);
                const unsigned tinted = (own * (65536 - weight) + s.ColourOf(p, picture.packed) * weight) >> 16;
                return int(std::min(tinted + (picture.IsChroma(p) ? 0 : light), 255u));
            });
        }
}

TEST(Spotlight, LightsPositionByPosition) {
    SweepFrames(1000, [](const TestFrame& frame, std::mt19937& random) {
        const Picture from(frame);
        Spot spot{.x = unsigned(Between(0, from.Width() + 1, random)),
                  .y = unsigned(Between(0, from.Height() + 1, random)),
                  .radius = unsigned(Between(random() % 8 ? 2 : 0, random() % 8 ? 120 : 3000, random)),
                  .colour = Between(0, 0xFFFFFF, random),
                  .density = Between(0, random() % 4 ? 100 : 300, random),
                  .brightness = Between(random() % 4 ? 0 : -40, 150, random)};
        // What 16 bits cannot hold; and three times this radius wraps around.
        if (random() % 16 == 0) spot.brightness = -20000;
        if (random() % 16 == 0) spot.radius = 1431655766;
        Picture to = from;
        Light(to, spot);
        ExpectEffect("spotlight",
                     Numbers("spotlight_", {{"x", spot.x},
                                            {"y", spot.y},
                                            {"r", spot.radius},
                                            {"color", spot.colour},
                                            {"density", spot.density},
                                            {"brightness", spot.brightness}}),
                     frame, to);
    });
}

TEST(Spotlight, StartsWhiteAndHalfAsBright) {
    TestFrame frame(60, 320, 260);
    for (unsigned p = 0; p < 4; ++p) frame.Fill(p, 100);
    Picture picture(frame);
    Light(picture, {250, 250, 200, 0xFFFFFF, 40, 50});
    ExpectEffect("spotlight", {}, frame, picture);
}

}  // namespace
}  // namespace AVBased::Testing
