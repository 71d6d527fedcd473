#include "effects/ReverseEffect.h"

#include <cstring>
#include <type_traits>
#include <utility>

#include "effects/frame_views.h"
#include "effects/property_table.h"
#include "effects/row_loops.h"

namespace AVBased {
namespace {

constexpr Property<ReverseSettings> reverseProperties[] = {
    {"mirror", "0", &ReverseSettings::mirror},
    {"vertical", "0", &ReverseSettings::vertical},
};

// A cache line of samples as numbers, which the compiler turns round in vectors; fields of a struct it would not.
template <class Sample>
using Number = std::conditional_t<sizeof(Sample) == 4, std::uint32_t, std::uint8_t>;
template <class Sample>
constexpr unsigned lineSamples = cacheLine / sizeof(Sample);

template <class Sample>
struct Line {
    Number<Sample> samples[lineSamples<Sample>];

    explicit Line(const Sample* from) { std::memcpy(samples, from, sizeof samples); }
    void Store(Sample* to) const { std::memcpy(static_cast<void*>(to), samples, sizeof samples); }
    void StoreReversed(Sample* to) const {
        Number<Sample> reversed[lineSamples<Sample>];
        for (unsigned i = 0; i < lineSamples<Sample>; ++i) reversed[i] = samples[lineSamples<Sample> - 1 - i];
        std::memcpy(static_cast<void*>(to), reversed, sizeof reversed);
    }
};

// Exchanges two stretches that do not overlap.
template <class Sample>
void Exchange(Sample* a, Sample* b, unsigned count) {
    unsigned i = 0;
    for (; i + lineSamples<Sample> <= count; i += lineSamples<Sample>) {
        PrefetchToWrite(a + i);
        PrefetchToWrite(b + i);
        const Line<Sample> first(a + i), second(b + i);
        first.Store(b + i);
        second.Store(a + i);
    }
    for (; i < count; ++i) std::swap(a[i], b[i]);
}

// The same, each stretch turned round on the way: a's first sample becomes b's last.
template <class Sample>
void ExchangeReversed(Sample* a, Sample* b, unsigned count) {
    unsigned i = 0;
    for (; i + lineSamples<Sample> <= count; i += lineSamples<Sample>) {
        Sample* const fromEnd = b + (count - i - lineSamples<Sample>);
        PrefetchToWrite(a + i);
        PrefetchToWrite(fromEnd);
        const Line<Sample> first(a + i), second(fromEnd);
        first.StoreReversed(fromEnd);
        second.StoreReversed(a + i);
    }
    for (; i < count; ++i) std::swap(a[i], b[count - 1 - i]);
}

template <class Sample>
void MirrorRow(Sample* row, unsigned width) {
    const unsigned half = width / 2;
    ExchangeReversed(row, row + (width - half), half);
}

template <class Sample>
void Reverse(const PlaneView<Sample>& plane, bool mirror, bool vertical) {
    if (!vertical) {
        for (unsigned y = 0; y < plane.height; ++y) MirrorRow(plane.Row(y), plane.width);
        return;
    }
    for (unsigned y = 0; y < plane.height / 2; ++y) {
        Sample *const upper = plane.Row(y), *const lower = plane.Row(plane.height - 1 - y);
        if (mirror)
            ExchangeReversed(upper, lower, plane.width);
        else
            Exchange(upper, lower, plane.width);
    }
    if (mirror && plane.height % 2) MirrorRow(plane.Row(plane.height / 2), plane.width);
}

void ReverseRgba32Effect(PackedView picture, bool mirror, bool vertical) { Reverse(picture, mirror, vertical); }

void ReverseComponentEffect(PlanarView picture, bool mirror, bool vertical) {
    for (unsigned p = 0; p < picture.planes; ++p) Reverse(picture.plane[p], mirror, vertical);
}

}  // namespace

CReverseVideoImageEffect::CReverseVideoImageEffect() : CBasedVideoImageEffect(effectNameReverse) {
    DeclareProperties(*this, reverseProperties);
}

void CReverseVideoImageEffect::OnSetProperty(const std::string& name, PropertyNode& node) {
    CBasedVideoImageEffect::OnSetProperty(name, node);
    StoreProperty(m_settings, reverseProperties, name, node);
}

void CReverseVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    const bool mirror = m_settings.mirror == 1, vertical = m_settings.vertical == 1;
    if (!mirror && !vertical) return;
    ForFrame([&](const PackedView& picture) { Pick<ReverseRgba32Effect>()(picture, mirror, vertical); },
             [&](const PlanarView& picture) { Pick<ReverseComponentEffect>()(picture, mirror, vertical); }, *frame);
}

}  // namespace AVBased
