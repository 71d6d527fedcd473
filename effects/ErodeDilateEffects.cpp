#include "effects/ErodeDilateEffects.h"

#include "effects/frame_views.h"
#include "effects/row_loops.h"

namespace AVBased {
namespace {

struct Least {
    static std::uint8_t Of(std::uint8_t a, std::uint8_t b) { return std::min(a, b); }
};
struct Greatest {
    static std::uint8_t Of(std::uint8_t a, std::uint8_t b) { return std::max(a, b); }
};

// The extremes of the columns of three rows, then of three neighbours in that line: a stretch at a time, each written
// over `row`, one of the three, when nothing to the left is needed any more.
template <class Extreme, class Sample>
void FilterRow(Sample* row, const Sample* second, const Sample* third, unsigned outputs) {
    constexpr unsigned stretch = 512, step = sizeof(Sample);
    std::uint8_t columns[stretch + 2 * step];
    Sample results[stretch / step];
    for (unsigned begin = 0; begin < outputs; begin += stretch / step) {
        const unsigned count = std::min(outputs - begin, stretch / step), bytes = count * step;
        const auto *a = reinterpret_cast<const std::uint8_t*>(row + begin),
                   *b = reinterpret_cast<const std::uint8_t*>(second + begin),
                   *c = reinterpret_cast<const std::uint8_t*>(third + begin);
        for (unsigned i = 0; i < bytes + 2 * step; ++i) columns[i] = Extreme::Of(Extreme::Of(a[i], b[i]), c[i]);
        auto* const result = reinterpret_cast<std::uint8_t*>(results);
        for (unsigned i = 0; i < bytes; ++i)
            result[i] = Extreme::Of(Extreme::Of(columns[i], columns[i + step]), columns[i + 2 * step]);
        for (unsigned i = 0; i < count; ++i)
            if constexpr (step == 1)
                row[begin + i] = results[i];
            else
                StoreWord(row + begin + i,
                          (LoadWord(results + i) & ~alphaMask) | (LoadWord(row + begin + i) & alphaMask));
    }
}

// Deliberate, in both: the block is not centred on the sample, and the last two columns stay.
template <class Sample>
void Erode(PlaneView<Sample> plane) {
    if (plane.width < 3) return;
    for (unsigned y = 0; y + 2 < plane.height; ++y)
        FilterRow<Least>(plane.Row(y), plane.Row(y + 1), plane.Row(y + 2), plane.width - 2);
}

// From the last row upwards, so that the rows above are still as they came.
template <class Sample>
void Dilate(PlaneView<Sample> plane) {
    if (plane.width < 3) return;
    for (unsigned y = plane.height; y-- > 2;)
        FilterRow<Greatest>(plane.Row(y), plane.Row(y - 1), plane.Row(y - 2), plane.width - 2);
}

template <class Packed, class Component>
void ForPlanes(IRawVideoFrame& frame, Packed packed, Component component) {
    ForFrame(
        packed,
        [component](const PlanarView& picture) {
            for (unsigned p = 0; p < 3; ++p) component(picture.plane[p]);
        },
        frame);
}

}  // namespace

void CErodeVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    ForPlanes(*frame, Pick<Erode<Rgba32>>(), Pick<Erode<std::uint8_t>>());
}

void CDilateVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    ForPlanes(*frame, Pick<Dilate<Rgba32>>(), Pick<Dilate<std::uint8_t>>());
}

}  // namespace AVBased
