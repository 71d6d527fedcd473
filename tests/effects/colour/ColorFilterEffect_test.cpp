#include <array>
#include <cmath>

#include "tests/support/sweep.h"

namespace AVBased::Testing {
namespace {

using Colour = std::array<double, 3>;

Colour ToYuv(const Colour& rgb) {
    const double y = 0.299 * rgb[0] + 0.587 * rgb[1] + 0.114 * rgb[2];
    return {16 + y * 219 / 255, 128 + (rgb[2] - y) / 1.772 * 224 / 255, 128 + (rgb[0] - y) / 1.402 * 224 / 255};
}

Colour ToRgb(const Colour& yuv) {
    const double y = (yuv[0] - 16) * 255 / 219, u = (yuv[1] - 128) * 255 / 224, v = (yuv[2] - 128) * 255 / 224;
    const double red = y + 1.402 * v, blue = y + 1.772 * u;
    return {red, (y - 0.299 * red - 0.114 * blue) / 0.587, blue};
}

// Each sample by itself: to real colours, through the glass and back.
int ThroughGlass(const Picture& from, unsigned p, int x, int y, const int (&parts)[3]) {
    if (from.packed) return from.planes[p](x, y) * parts[2 - p] >> 8;
    const int columns = 1 << from.ColumnShift(p), rows = 1 << from.RowShift(p);
    double luma = 0;
    for (int i = 0; i < columns * rows; ++i)
        luma += double(from.planes[0].Near(x * columns + i % columns, y * rows + i / columns)) / (columns * rows);
    const bool hasChroma = !from.planes[1].samples.empty();
    const auto chroma = [&](unsigned plane) {
        return !hasChroma ? 128.0 : p == 0 ? from.Near(plane, x, y) : from.planes[plane](x, y);
    };
    Colour rgb = ToRgb({luma, chroma(1), chroma(2)});
    for (unsigned c = 0; c < 3; ++c) rgb[c] *= parts[c] / 256.0;
    return int(std::lround(std::clamp(ToYuv(rgb)[p], 0.0, 255.0)));
}

TEST(ColorFilter, PlanarPicturesLookThroughTheSameGlassAsPixels) {
    SweepFrames(500, [](const TestFrame& frame, std::mt19937& random) {
        const int colour = Between(0, 0xFFFFFF, random), density = Between(-5, 110, random);
        int parts[3];
        for (int c = 0; c < 3; ++c) {
            const int darkness = 255 - (colour >> (16 - 8 * c) & 255);
            parts[c] = 256 - darkness * std::clamp(density, 0, 100) * 256 / 25500;
        }
        const Picture from(frame);
        Picture to = from;
        for (unsigned p = 0; p < 3; ++p)
            to.planes[p] = from.planes[p].Like([&](int x, int y) { return ThroughGlass(from, p, x, y, parts); });
        ExpectEffect("colorfilter", Numbers("colorfilter_", {{"color", colour}, {"density", density}}), frame, to,
                     from.packed ? 0 : 1);
    });
}

TEST(ColorFilter, ClearGlassKeepsEveryPlanarByte) {
    std::mt19937 random(9);
    TestFrame frame(0, 35, 7);
    frame.Randomise(random);
    for (const int density : {0, 100})
        ExpectEffect("colorfilter", Numbers("colorfilter_", {{"color", density ? 0xFFFFFF : 0}, {"density", density}}),
                     frame, frame);
}

}  // namespace
}  // namespace AVBased::Testing
