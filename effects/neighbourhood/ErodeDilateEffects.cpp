#include "effects/neighbourhood/ErodeDilateEffects.h"

#include <algorithm>

#include "effects/base/frame_views.h"
#include "effects/neighbourhood/ErodeDilateEffects_avx2.h"

namespace AVBased {
namespace {

struct Least {
    static std::uint8_t Of(std::uint8_t a, std::uint8_t b) { return std::min(a, b); }
};
struct Greatest {
    static std::uint8_t Of(std::uint8_t a, std::uint8_t b) { return std::max(a, b); }
};

// The extremes of the three rows' columns, then of three neighbours in that line: a stretch at a time, written when
// nothing to its left is needed any more.
template <class Extreme, class Sample>
void FilterRow(std::uint8_t* row, const std::uint8_t* second, const std::uint8_t* third, unsigned bytes) {
    constexpr unsigned stretch = 512, step = sizeof(Sample);
    std::uint8_t columns[stretch + 2 * step];
    for (unsigned begin = 0; begin < bytes; begin += stretch) {
        const unsigned count = std::min(bytes - begin, stretch);
        std::uint8_t* const a = row + begin;
        const std::uint8_t *const b = second + begin, *const c = third + begin;
        for (unsigned i = 0; i < count + 2 * step; ++i) columns[i] = Extreme::Of(Extreme::Of(a[i], b[i]), c[i]);
        for (unsigned i = 0; i < count; ++i)
            columns[i] = Extreme::Of(Extreme::Of(columns[i], columns[i + step]), columns[i + 2 * step]);
        auto* const samples = reinterpret_cast<Sample*>(a);
        const auto* const extremes = reinterpret_cast<const Sample*>(columns);
        for (unsigned x = 0; x < count / step; ++x)
            if constexpr (step == 1)
                samples[x] = extremes[x];
            else
                StoreWord(samples + x, (LoadWord(samples + x) & alphaMask) | (LoadWord(extremes + x) & ~alphaMask));
    }
}

std::ptrdiff_t RowsAway(int rows, unsigned pitch) { return rows * std::ptrdiff_t(pitch); }

// Deliberate, in both: the block is not centred on the sample, and the last two columns stay.
template <class Sample>
void Erode(const PlaneView<Sample>& plane, ExtremeRow* least) {
    const ComponentView bytes{plane.data, plane.width * unsigned(sizeof(Sample)), plane.pitch, plane.height};
    if (plane.width < 3) return;
    for (unsigned y = 0; y + 2 < plane.height; ++y)
        least(bytes.Row(y), bytes.Row(y + 1), bytes.Row(y + 2), bytes.width - 2 * sizeof(Sample),
              RowsAway(4, plane.pitch));
}

// From the last row upwards, so that the rows above are still as they came.
template <class Sample>
void Dilate(const PlaneView<Sample>& plane, ExtremeRow* greatest) {
    const ComponentView bytes{plane.data, plane.width * unsigned(sizeof(Sample)), plane.pitch, plane.height};
    if (plane.width < 3) return;
    for (unsigned y = plane.height; y > 2; --y)
        greatest(bytes.Row(y - 1), bytes.Row(y - 2), bytes.Row(y - 3), bytes.width - 2 * sizeof(Sample),
                 RowsAway(-4, plane.pitch));
}

}  // namespace

void LeastComponentRow(unsigned char* row, const unsigned char* second, const unsigned char* third, unsigned bytes,
                       std::ptrdiff_t) {
    FilterRow<Least, std::uint8_t>(row, second, third, bytes);
}
void LeastRgba32Row(unsigned char* row, const unsigned char* second, const unsigned char* third, unsigned bytes,
                    std::ptrdiff_t) {
    FilterRow<Least, Rgba32>(row, second, third, bytes);
}
void GreatestComponentRow(unsigned char* row, const unsigned char* second, const unsigned char* third, unsigned bytes,
                          std::ptrdiff_t) {
    FilterRow<Greatest, std::uint8_t>(row, second, third, bytes);
}
void GreatestRgba32Row(unsigned char* row, const unsigned char* second, const unsigned char* third, unsigned bytes,
                       std::ptrdiff_t) {
    FilterRow<Greatest, Rgba32>(row, second, third, bytes);
}

void CErodeVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    const auto component = variantsOf<LeastComponentRow, LeastComponentRowAvx2>.For(Instructions()),
               rgba32 = variantsOf<LeastRgba32Row, LeastRgba32RowAvx2>.For(Instructions());
    ForFrame([&](const PackedView& picture) { Erode(picture, rgba32); },
             [&](const PlanarView& picture) {
                 for (unsigned p = 0; p < 3; ++p) Erode(picture.plane[p], component);
             },
             *frame);
}

void CDilateVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    const auto component = variantsOf<GreatestComponentRow, GreatestComponentRowAvx2>.For(Instructions()),
               rgba32 = variantsOf<GreatestRgba32Row, GreatestRgba32RowAvx2>.For(Instructions());
    ForFrame([&](const PackedView& picture) { Dilate(picture, rgba32); },
             [&](const PlanarView& picture) {
                 for (unsigned p = 0; p < 3; ++p) Dilate(picture.plane[p], component);
             },
             *frame);
}

}  // namespace AVBased
