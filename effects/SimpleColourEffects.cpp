#include "effects/SimpleColourEffects.h"

#include <cstring>
#include <utility>

#if defined(__x86_64__)
#include <emmintrin.h>
#endif

#include "effects/row_loops.h"

namespace AVBased {
namespace {

std::uint32_t Mean(std::uint32_t pixel) {
    const std::uint32_t sum = Blue(pixel) + Green(pixel) + Red(pixel);
    return sum * 21846 >> 16;  // exactly sum / 3 for every sum up to 765
}

#if defined(__x86_64__)
// Fills whole cache lines around the cache: ordinary stores would first read every line that they overwrite.
void StreamFill(unsigned char* lines, std::size_t count, std::uint8_t value) {
    const __m128i vector = _mm_set1_epi8(static_cast<char>(value));
    auto* const out = reinterpret_cast<__m128i*>(lines);
    for (std::size_t i = 0; i < count * (cacheLine / sizeof vector); ++i) _mm_stream_si128(out + i, vector);
    _mm_sfence();
}
#else
void StreamFill(unsigned char* lines, std::size_t count, std::uint8_t value) {
    std::memset(lines, value, count * cacheLine);
}
#endif

// Deliberate: the whole plane, padding included.
void Fill(const ComponentView& plane, std::uint8_t value) {
    if (!plane.data) return;
    const std::size_t bytes = plane.ByteCount();
    // A smaller plane is likely to be in the cache, and to be wanted there.
    constexpr std::size_t streamedFrom = 1 << 18;
    if (bytes < streamedFrom) {
        std::memset(plane.data, value, bytes);
        return;
    }
    const std::size_t head = -reinterpret_cast<std::uintptr_t>(plane.data) % cacheLine;
    const std::size_t lines = (bytes - head) / cacheLine;
    std::memset(plane.data, value, head);
    StreamFill(plane.data + head, lines, value);
    std::memset(plane.data + head + lines * cacheLine, value, bytes - head - lines * cacheLine);
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
    ForFrame(Pick<GrayRgba32Effect>(), Pick<GrayComponentEffect>(), *frame);
}

void CFlipColorEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    ForFrame(Pick<FlipColorRgba32Effect>(), Pick<FlipColorComponentEffect>(), *frame);
}

void CInvertEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    ForFrame(Pick<InvertRgba32Effect>(), Pick<InvertComponentEffect>(), *frame);
}

void CAgedFilmEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    ForFrame(Pick<AgedFilmRgba32Effect>(), Pick<AgedFilmComponentEffect>(), *frame);
}

}  // namespace AVBased
