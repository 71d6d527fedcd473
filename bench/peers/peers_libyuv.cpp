#include <libyuv.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "bench/peers/peers.h"

namespace Bench {
namespace {

constexpr int width = int(frameWidth), height = int(frameHeight), pitch = 4 * width;

struct Plane {
    std::uint8_t* data;
    int width, pitch, rows;
};

Plane PlaneOf(CRawVideoFrame& frame, unsigned plane) {
    unsigned rowBytes = 0, pitchBytes = 0, rows = 0;
    std::uint8_t* const data = frame.GetBuffer(plane, &rowBytes, &pitchBytes, &rows);
    return {data, int(rowBytes), int(pitchBytes), int(rows)};
}

std::uint8_t* Pixels(CRawVideoFrame& frame) { return PlaneOf(frame, 0).data; }

Work FillChroma(unsigned u, unsigned v) {
    return [=](CRawVideoFrame& frame) {
        for (unsigned p : {1u, 2u}) {
            const Plane plane = PlaneOf(frame, p);
            libyuv::SetPlane(plane.data, plane.pitch, plane.width, plane.rows, p == 1 ? u : v);
        }
    };
}

// work(pixels, scratch), where the scratch is a second packed frame.
template <class F>
Work WithScratch(F work) {
    const auto scratch = std::make_shared<std::vector<std::uint8_t>>(std::size_t(pitch) * height);
    return [=](CRawVideoFrame& frame) { work(Pixels(frame), scratch->data()); };
}

std::vector<std::uint8_t> ToneTable() {
    std::vector<std::uint8_t> table(256 * 4);
    for (int i = 0; i < 256 * 4; ++i) {
        const int tone = (i / 4 - 127) * 13 / 10 + 178;
        table[std::size_t(i)] = std::uint8_t(i % 4 == 3 ? i / 4 : tone < 0 ? 0 : tone > 255 ? 255 : tone);
    }
    return table;
}

}  // namespace

void RegisterLibyuv() {
    using namespace libyuv;
    RegisterPeer(
        "gray libyuv", [](CRawVideoFrame& f) { ARGBGray(Pixels(f), pitch, 0, 0, width, height); },
        FillChroma(127, 127));
    RegisterPeer(
        "flip_color libyuv", [](CRawVideoFrame& f) { ARGBToABGR(Pixels(f), pitch, Pixels(f), pitch, width, height); },
        nullptr);
    RegisterPeer(
        "aged_film libyuv", [](CRawVideoFrame& f) { ARGBSepia(Pixels(f), pitch, 0, 0, width, height); },
        FillChroma(117, 136));
    RegisterPeer(
        "brightness_contrast libyuv",
        [table = ToneTable()](CRawVideoFrame& f) {
            ARGBColorTable(Pixels(f), pitch, table.data(), 0, 0, width, height);
        },
        nullptr);
    static constexpr std::int8_t saturate[16] = {80, -8, -8, 0, -8, 80, -8, 0, -8, -8, 80, 0, 0, 0, 0, 64};
    RegisterPeer(
        "brightness_contrast saturation libyuv",
        [](CRawVideoFrame& f) { ARGBColorMatrix(Pixels(f), pitch, Pixels(f), pitch, saturate, width, height); },
        nullptr);
    RegisterPeer(
        "fadein libyuv",
        [](CRawVideoFrame& f) { ARGBShade(Pixels(f), pitch, Pixels(f), pitch, width, height, 0x66FFFFFF); }, nullptr);
    RegisterPeer(
        "directfadein libyuv",
        [](CRawVideoFrame& f) { ARGBShade(Pixels(f), pitch, Pixels(f), pitch, width, height, 0xFF666666); }, nullptr);
    RegisterPeer(
        "colorfilter libyuv",
        [](CRawVideoFrame& f) { ARGBShade(Pixels(f), pitch, Pixels(f), pitch, width, height, 0xFFFFC284); }, nullptr);
    RegisterPeer("tensile libyuv", WithScratch([](std::uint8_t* pixels, std::uint8_t* out) {
                     const int left = width / 6, top = height / 6;
                     ARGBScale(pixels + top * pitch + left * 4, pitch, width * 2 / 3, height * 2 / 3, out, pitch, width,
                               height, kFilterNone);
                 }),
                 nullptr);
    RegisterPeer("mirage libyuv", WithScratch([](std::uint8_t* pixels, std::uint8_t* out) {
                     ARGBScale(pixels + height / 42 * pitch + width / 42 * 4, pitch, width * 20 / 21, height * 20 / 21,
                               out, pitch, width, height, kFilterNone);
                     ARGBInterpolate(pixels, pitch, out, pitch, pixels, pitch, width, height, 25);
                 }),
                 nullptr);
    RegisterPeer("spotlight libyuv", WithScratch([](std::uint8_t* pixels, std::uint8_t* light) {
                     ARGBAdd(pixels, pitch, light, pitch, pixels, pitch, width, height);
                 }),
                 nullptr);
    RegisterPeer("reverse mirror libyuv", WithScratch([](std::uint8_t* pixels, std::uint8_t* out) {
                     ARGBMirror(pixels, pitch, out, pitch, width, height);
                 }),
                 nullptr);
    RegisterPeer("reverse vertical libyuv", WithScratch([](std::uint8_t* pixels, std::uint8_t* out) {
                     ARGBCopy(pixels, pitch, out, pitch, width, -height);
                 }),
                 nullptr);
    RegisterPeer("EffectNameRotate90X libyuv", WithScratch([](std::uint8_t* pixels, std::uint8_t* out) {
                     // Scaled and turned; the black beside is not counted.
                     constexpr int scaled = height * height / width;
                     ARGBScale(pixels, pitch, width, height, out, pitch, height, scaled, kFilterBox);
                     ARGBRotate(out, pitch, pixels, pitch, height, scaled, kRotate90);
                 }),
                 nullptr);
}

}  // namespace Bench
