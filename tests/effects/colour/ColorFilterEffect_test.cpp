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
    if (from.packed) {
        static constexpr int shares[] = {77, 150, 29};
        int light = 0;
        for (unsigned c = 0; c < 3; ++c) light += from.planes[2 - c](x, y) * (shares[c] * (256 - parts[c]) >> 8);
        return std::min((from.planes[p](x, y) * parts[2 - p] + light) >> 8, 255);
    }
    if (p == 0) return from.planes[0](x, y);
    const int columns = 1 << from.ColumnShift(p), rows = 1 << from.RowShift(p);
    double luma = 0;
    for (int i = 0; i < columns * rows; ++i)
        luma += double(from.planes[0].Near(x * columns + i % columns, y * rows + i / columns)) / (columns * rows);
    Colour rgb = ToRgb({luma, double(from.planes[1](x, y)), double(from.planes[2](x, y))});
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
        const int clearest = std::max({parts[0], parts[1], parts[2]});
        for (int& part : parts) part = clearest ? part * 256 / clearest : 256;
        const Picture from(frame);
        Picture to = from;
        for (unsigned p = 0; p < 3; ++p)
            to.planes[p] = from.planes[p].Like([&](int x, int y) { return ThroughGlass(from, p, x, y, parts); });
        ExpectEffect("colorfilter", Numbers("colorfilter_", {{"color", colour}, {"density", density}}), frame, to,
                     from.packed ? 0 : 1);
    });
}

TEST(ColorFilter, ClearAndGreyGlassKeepEveryByte) {
    std::mt19937 random(9);
    for (const unsigned format : {0u, 30u}) {
        TestFrame frame(format, 35, 7);
        frame.Randomise(random);
        for (const int colour : {0xFFFFFF, 0x777777, 0})
            ExpectEffect("colorfilter", Numbers("colorfilter_", {{"color", colour}, {"density", 100}}), frame, frame);
    }
}

TEST(ColorFilter, KeepsTheBrightnessOfWhatHasRoomForTheColour) {
    TestFrame frame(30, 6, 1);
    frame.SetSamples(0, {{0xFF000000, 0xFF303030, 0xFF806040, 0xFF406080, 0xFF5A8C30, 0xFF9A9A9A}});
    const Picture before(frame);
    for (const int colour : {0xFF9933, 0xFF0000, 0x00A040, 0x3366CC}) {
        TestFrame filtered = frame;
        Apply(*MakeEffect("colorfilter", Numbers("colorfilter_", {{"color", colour}, {"density", 60}})), filtered);
        const Picture after(filtered);
        for (int x = 0; x < 6; ++x) {
            const auto luma = [x](const Picture& in) {
                return 0.114 * in.planes[0](x, 0) + 0.587 * in.planes[1](x, 0) + 0.299 * in.planes[2](x, 0);
            };
            EXPECT_NEAR(luma(after), luma(before), 2) << std::hex << colour << " at " << x;
        }
    }
}

}  // namespace
}  // namespace AVBased::Testing
