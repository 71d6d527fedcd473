#include "effects/MagnifierEffect.h"

#include <algorithm>

#include "effects/coordinate_table.h"
#include "effects/fixed_point.h"
#include "effects/property_table.h"

namespace AVBased {
namespace {

constexpr Property<MagnifierSettings> magnifierProperties[] = {
    {"magnifier_r", "0", &MagnifierSettings::radius},
    {"magnifier_x", "0", &MagnifierSettings::x},
    {"magnifier_y", "0", &MagnifierSettings::y},
    {"magnifier_scale", "0", &MagnifierSettings::scale},
};

// Whether the glass is there at all. A factor that is no number passes.
bool IsVisible(const MagnifierSettings& s, unsigned width, unsigned height) {
    return !(s.x > width || s.y > height || s.scale <= 1.0 || s.radius > width / 2 || s.radius > height / 2);
}

// One axis of the rectangle around the glass: its positions begin + i, and where each reads.
struct GlassAxis {
    std::uint32_t begin, count, first, step;

    // `edge` is where a rectangle begins that the picture cuts off; positions and steps have `fraction` bits.
    GlassAxis(const MagnifierSettings& s, std::uint32_t centre, unsigned size, unsigned edge, unsigned fraction) {
        const bool cut = centre < s.radius;
        begin = cut ? edge : centre - s.radius;
        count = cut ? centre + s.radius : std::min(2 * s.radius, size - begin);
        const double one = double(1u << fraction);
        step = TruncateToUint32(one / s.scale);
        const std::uint32_t surplus = (TruncateToUint32(count * s.scale) - count) * step >> 1;
        // The nearest routines begin at a whole position, the others at a fraction.
        first = (begin << fraction) + (fraction == nearestFraction ? surplus >> 8 << 8 : surplus);
    }
    std::uint32_t At(std::uint32_t i) const { return first + i * step; }

    static constexpr unsigned nearestFraction = 8, bilinearFraction = 16;
};

// Calls work(x, y, source) inside the glass, in scan order, with the source in the axes' fractions.
template <class Work>
void ForEachInGlass(const MagnifierSettings& s, const GlassAxis& across, const GlassAxis& down, Work work) {
    for (std::uint32_t j = 0; j < down.count; ++j)
        for (std::uint32_t i = 0; i < across.count; ++i) {
            const std::uint32_t x = across.begin + i, y = down.begin + j;
            if ((x - s.x) * (x - s.x) + (y - s.y) * (y - s.y) < s.radius * s.radius)
                work(x, y, Source{across.At(i), down.At(j)});
        }
}

template <class Place>
void MagnifierNearest(const MagnifierSettings& s, unsigned width, unsigned height, Place place) {
    if (!IsVisible(s, width, height)) return;
    const GlassAxis across(s, s.x, width, 0, GlassAxis::nearestFraction),
        down(s, s.y, height, 0, GlassAxis::nearestFraction);
    ForEachInGlass(s, across, down, [&](unsigned x, unsigned y, Source source) {
        place(x, y, {source.x >> 8, source.y >> 8});
    });
}

// A sample and its right, lower and lower right neighbours; at an edge the nearest ones inside.
template <class Sample>
struct Neighbours {
    Sample own, right, below, belowRight;

    Neighbours(const PlaneView<Sample>& plane, unsigned x, unsigned y) {
        const unsigned x0 = std::min(x, plane.width - 1), x1 = std::min(x + 1, plane.width - 1);
        const Sample *const upper = plane.Row(std::min(y, plane.height - 1)), *const lower = plane.Row(
                                                                                  std::min(y + 1, plane.height - 1));
        own = upper[x0], right = upper[x1], below = lower[x0], belowRight = lower[x1];
    }
};

// Weights in 1/256 of a sample and its neighbours.
struct Weights {
    std::uint32_t own, right, below, belowRight;

    Weights(std::uint32_t towardsRight, std::uint32_t towardsBelow) {
        belowRight = towardsRight * towardsBelow >> 8;
        right = towardsRight - belowRight;
        below = towardsBelow - belowRight;
        own = 256 - towardsRight - below;
    }
    std::uint8_t Mix(std::uint32_t p00, std::uint32_t p10, std::uint32_t p01, std::uint32_t p11) const {
        return std::uint8_t((p00 * own + p10 * right + p01 * below + p11 * belowRight) >> 8);
    }
    std::uint8_t Mix(const Neighbours<std::uint8_t>& n) const { return Mix(n.own, n.right, n.below, n.belowRight); }
    Rgba32 Mix(const Neighbours<Rgba32>& n) const {
        return {Mix(n.own.blue, n.right.blue, n.below.blue, n.belowRight.blue),
                Mix(n.own.green, n.right.green, n.below.green, n.belowRight.green),
                Mix(n.own.red, n.right.red, n.below.red, n.belowRight.red),
                Mix(n.own.alpha, n.right.alpha, n.below.alpha, n.belowRight.alpha)};
    }
};

std::uint32_t Fraction(std::uint32_t position) { return position >> 8 & 255; }

// Deliberate: beside Weights::Mix this truncates twice, first between columns, then between rows.
struct TwoSteps {
    std::int32_t x, y;

    static std::int32_t Between(std::int32_t a, std::int32_t b, std::int32_t fraction) {
        return a + ((b - a) * fraction >> 8);
    }
    std::uint8_t Mix(std::int32_t p00, std::int32_t p10, std::int32_t p01, std::int32_t p11) const {
        return std::uint8_t(Between(Between(p00, p10, x), Between(p01, p11, x), y));
    }
    Rgba32 Mix(const Neighbours<Rgba32>& n) const {
        return {Mix(n.own.blue, n.right.blue, n.below.blue, n.belowRight.blue),
                Mix(n.own.green, n.right.green, n.below.green, n.belowRight.green),
                Mix(n.own.red, n.right.red, n.below.red, n.belowRight.red),
                Mix(n.own.alpha, n.right.alpha, n.below.alpha, n.belowRight.alpha)};
    }
};

void MagnifierDoubleRgba32Effect(const MagnifierSettings& s, bool vectorised, const PackedView& to,
                                 const PackedView& from) {
    if (!IsVisible(s, to.width, to.height)) return;
    // Deliberate: a glass that the left or upper edge cuts begins at 1, so column and row 0 stay.
    const GlassAxis across(s, s.x, to.width, 1, GlassAxis::bilinearFraction),
        down(s, s.y, to.height, 1, GlassAxis::bilinearFraction);
    ForEachInGlass(s, across, down, [&](unsigned x, unsigned y, Source source) {
        const Neighbours neighbours(from, source.x >> 16, source.y >> 16);
        const std::uint32_t fx = Fraction(source.x), fy = Fraction(source.y);
        to.Row(y)[x] =
            vectorised ? TwoSteps{std::int32_t(fx), std::int32_t(fy)}.Mix(neighbours) : Weights(fx, fy).Mix(neighbours);
    });
}

void MagnifierDoubleComponentEffect(const MagnifierSettings& s, const PlanarView& to, const PlanarView& from) {
    const ComponentView& luma = to.plane[0];
    if (!IsVisible(s, luma.width, luma.height)) return;
    const GlassAxis across(s, s.x, luma.width, 0, GlassAxis::bilinearFraction),
        down(s, s.y, luma.height, 0, GlassAxis::bilinearFraction);
    ForEachInGlass(s, across, down, [&](unsigned x, unsigned y, Source source) {
        // Deliberate: planar pictures have the fractions exchanged.
        const Weights weights(Fraction(source.y), Fraction(source.x));
        for (unsigned p = 0; p < 3; ++p) {
            std::uint8_t* const sample = to.At(p, x, y);
            if (!sample || !from.plane[p].Contains(0, 0)) continue;
            const unsigned column = source.x >> 16 >> (p ? from.columnShift : 0),
                           row = source.y >> 16 >> (p ? from.rowShift : 0);
            *sample = weights.Mix(Neighbours(from.plane[p], column, row));
        }
    });
}

}  // namespace

CMagnifierVideoImageEffect::CMagnifierVideoImageEffect(unsigned cpuFeatures)
    : CBasedVideoImageEffect(effectNameMagnifier), m_vectorised(HasVectorUnit(cpuFeatures)) {
    DeclareProperties(*this, magnifierProperties);
}

void CMagnifierVideoImageEffect::OnSetProperty(const std::string& name, PropertyNode& node) {
    CBasedVideoImageEffect::OnSetProperty(name, node);
    StoreProperty(m_settings, magnifierProperties, name, node);
}

void CMagnifierVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    const bool nearest = m_settings.scale <= 2.0;
    const FrameCopy source(*frame);
    ForFrame(
        [&](const PackedView& to, const PackedView& from) {
            if (nearest)
                MagnifierNearest(m_settings, to.width, to.height, PlacePacked{to, from});
            else
                MagnifierDoubleRgba32Effect(m_settings, m_vectorised, to, from);
        },
        [&](const PlanarView& to, const PlanarView& from) {
            if (nearest)
                MagnifierNearest(m_settings, to.plane[0].width, to.plane[0].height, PlacePlanar{to, from});
            else
                MagnifierDoubleComponentEffect(m_settings, to, from);
        },
        *frame, *source);
}

}  // namespace AVBased
