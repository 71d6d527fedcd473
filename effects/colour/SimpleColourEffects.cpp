#include "effects/colour/SimpleColourEffects.h"

#include <cstring>
#include <utility>

#include "effects/base/row_loops.h"
#include "effects/base/streaming_stores.h"

namespace AVBased {
namespace {

std::uint32_t Mean(std::uint32_t pixel) {
    const std::uint32_t sum = Blue(pixel) + Green(pixel) + Red(pixel);
    return sum * 21846 >> 16;  // exactly sum / 3 for every sum up to 765
}

// Deliberate: the whole plane, padding included.
void Fill(const ComponentView& plane, std::uint8_t value) {
    if (!plane.data) return;
    // A smaller plane is likely to be in the cache, and to be wanted there.
    constexpr std::size_t streamedFrom = 1 << 18;
    if (plane.ByteCount() < streamedFrom)
        std::memset(plane.data, value, plane.ByteCount());
    else
        StreamingStores().Fill(plane.data, value, plane.ByteCount());
}

void GrayRgba32Effect(PackedView picture) {
    ForEachPixel(picture, [](std::uint32_t p) {
        const std::uint32_t mean = Mean(p);
        return WithAlphaOf(p, mean, mean, mean);
    });
}

void GrayComponentEffect(PlanarView picture) {
    // Deliberate: 127, not the neutral 128.
    Fill(picture.plane[1], 127);
    Fill(picture.plane[2], 127);
}

void FlipColorRgba32Effect(PackedView picture) {
    ForEachPixel(picture, [](std::uint32_t p) { return WithAlphaOf(p, Red(p), Green(p), Blue(p)); });
}

void FlipColorComponentEffect(PlanarView picture) {
    const ComponentView &first = picture.plane[1], &second = picture.plane[2];
    const unsigned width = std::min(first.width, second.width), height = std::min(first.height, second.height);
    for (unsigned y = 0; y < height; ++y)
        for (unsigned x = 0; x < width; ++x) std::swap(first.Row(y)[x], second.Row(y)[x]);
}

void InvertRgba32Effect(PackedView picture) {
    ForEachPixel(picture, [](std::uint32_t p) { return p ^ ~alphaMask; });
}

void InvertComponentEffect(PlanarView picture) {
    for (unsigned p = 0; p < 3; ++p) ForEachSample(picture.plane[p], [](std::uint8_t s) { return std::uint8_t(~s); });
}

void AgedFilmRgba32Effect(PackedView picture) {
    ForEachPixel(picture, [](std::uint32_t p) {
        const std::uint32_t tone = std::max(Mean(p), 35u);
        return WithAlphaOf(p, tone - 35, tone - 15, tone);
    });
}

void AgedFilmComponentEffect(PlanarView picture) {
    Fill(picture.plane[1], 117);
    Fill(picture.plane[2], 136);
}

}  // namespace

void CGrayEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    ForFrame(variantsOf<GrayRgba32Effect>.For(Instructions()), variantsOf<GrayComponentEffect>.For(Instructions()),
             *frame);
}

void CFlipColorEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    ForFrame(variantsOf<FlipColorRgba32Effect>.For(Instructions()),
             variantsOf<FlipColorComponentEffect>.For(Instructions()), *frame);
}

void CInvertEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    ForFrame(variantsOf<InvertRgba32Effect>.For(Instructions()), variantsOf<InvertComponentEffect>.For(Instructions()),
             *frame);
}

void CAgedFilmEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    ForFrame(variantsOf<AgedFilmRgba32Effect>.For(Instructions()),
             variantsOf<AgedFilmComponentEffect>.For(Instructions()), *frame);
}

}  // namespace AVBased
