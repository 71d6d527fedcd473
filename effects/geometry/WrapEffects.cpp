#include "effects/geometry/WrapEffects.h"

#include <array>
#include <cmath>
#include <numbers>
#include <vector>

#include "TarvoBased/CBaseException.h"
#include "TarvoBased/error_codes.h"
#include "effects/base/correct_rounding.h"
#include "effects/base/fixed_point.h"

namespace AVBased {

using namespace TarvoBased;

namespace {

constexpr char sourceName[] = "TileReflect";

// Lines that the host reads beside a refused value.
enum Line : int { lineAngle = 60, lineSize = 70 };

constexpr Property<MirrorInvertSettings> mirrorInvertProperties[] = {
    {"mirrorinvert_amount", "100", &MirrorInvertSettings::amount},
};

// The properties as the host gives them. Only their names and types count: the settings hold what follows from them.
struct TileReflectInput {
    std::int32_t angle, size, curvature;
};
constexpr char angleName[] = "tilereflect_angle", sizeName[] = "tilereflect_size",
               curvatureName[] = "tilereflect_curvature";
constexpr Property<TileReflectInput> tileReflectProperties[] = {
    {angleName, "30", &TileReflectInput::angle},
    {sizeName, "30", &TileReflectInput::size},
    {curvatureName, "30", &TileReflectInput::curvature},
};

std::int32_t InQ15(double value) { return std::int32_t(std::lround(32768 * value)); }

// Sines of 0 to 90 degrees.
const std::array<std::int32_t, 91>& SineMap() {
    static const auto map = [] {
        std::array<std::int32_t, 91> sines;
        for (int a = 0; a <= 90; ++a) sines[a] = InQ15(SineAndCosineOf(a * std::numbers::pi / 180).sine);
        return sines;
    }();
    return map;
}

// Tangents of -90 to 90 degrees.
const std::array<std::int32_t, 181>& TangentMap() {
    static const auto map = [] {
        std::array<std::int32_t, 181> tangents{};
        // Deliberate: 0 at 89 degrees as well as at 90.
        for (int a = -88; a <= 88; ++a) {
            const auto [sine, cosine] = SineAndCosineOf(a * std::numbers::pi / 180);
            tangents[a + 90] = InQ15(sine / cosine);
        }
        return tangents;
    }();
    return map;
}

// The two divisions below are written for vectors: as doubles, and with masks in place of branches.

constexpr std::int32_t MaskOf(bool condition) { return -std::int32_t(condition); }

// The truncated quotient of two 32-bit integers as doubles is the integers' own. The squared distance in a huge picture
// may wrap around to anything.
std::int32_t Divided(std::int32_t dividend, std::int32_t divisor) {
    const std::int32_t mask = MaskOf(divisor != 0) & MaskOf(divisor != -1);
    const std::int32_t quotient = std::int32_t(double(dividend) / double((divisor & mask) | (1 & ~mask)));
    return (quotient & mask) | (WrappingProduct(dividend, divisor) & ~mask);
}

// The remainder of a division by a picture's size, never negative. Half a step away from the multiples of the size, the
// rounding of the quotient cannot carry it over one, so a product can replace the division.
struct Wrapping {
    unsigned size;
    double inverse;

    explicit Wrapping(unsigned pictureSize) : size(pictureSize), inverse(1 / double(pictureSize)) {}
    std::uint32_t operator()(std::int32_t position) const {
        const std::int32_t quotient = std::int32_t((position + 0.5) * inverse);
        return std::uint32_t(position) - std::uint32_t(quotient) * size + (size & std::uint32_t(MaskOf(position < 0)));
    }
};

// What the lens of a tile adds along one of its axes.
std::int32_t LensAt(std::int32_t angle, const TileReflectSettings& settings) {
    while (angle < -90) angle += 180;
    while (angle > 90) angle -= 180;
    return WrappingProduct(TangentMap()[angle + 90], WrappingProduct(settings.curvature, settings.curvature));
}

// The lens for every angle that a position can have: the upper nine bits of a 32-bit number.
class LensTable {
 public:
    explicit LensTable(const TileReflectSettings& settings) {
        for (int i = 0; i < 512; ++i) m_lens[i] = LensAt(i - 256, settings);
    }
    std::int32_t operator[](std::int32_t angle) const { return m_lens[angle + 256]; }

 private:
    std::int32_t m_lens[512];
};

// The factor of a pixel's distances from the centre, in 256ths.
std::int32_t InversionAt(const MirrorInvertMap& map, std::int32_t dx, std::int32_t dy) {
    const std::int32_t m = std::int32_t(std::min(map.width >> 1, map.height >> 1)), reference2 = WrappingProduct(m, m);
    const std::int32_t strength = WrappingProduct(map.settings.amount, 256);
    // Deliberate: the hundredth is taken early and truncated, except at the centre.
    const std::int32_t atCentre = WrappingProduct(strength, reference2) / 100;
    const std::int32_t elsewhere = Divided(WrappingProduct(strength, reference2 / 100),
                                           WrappingSum(WrappingProduct(dx, dx), WrappingProduct(dy, dy)));
    const std::int32_t mask = MaskOf((dx | dy) == 0);
    return (atCentre & mask) | (elsewhere & ~mask);
}

Source MirrorInverted(const MirrorInvertMap& map, std::int32_t dx, std::int32_t dy, std::int32_t factor) {
    const std::int32_t centreX = std::int32_t(map.width >> 1), centreY = std::int32_t(map.height >> 1);
    return {Wrapping(map.width)(WrappingSum(WrappingProduct(factor, dx) >> 8, centreX)),
            Wrapping(map.height)(WrappingSum(WrappingProduct(factor, dy) >> 8, centreY))};
}

// Both halves of a row share their factors, for which `factors` has room. The row begins at the picture's left edge.
void MirrorInvertRow(const MirrorInvertMap& map, std::int32_t* factors, const SourceRow& row) {
    const MirrorInvertMap own = map;
    const SourceRow to = row;
    const std::int32_t dy = std::int32_t(to.y) - std::int32_t(own.height >> 1);
    const std::size_t centre = own.width >> 1;
    for (std::size_t distance = 0; distance <= centre; ++distance)
        factors[distance] = InversionAt(own, std::int32_t(distance), dy);
    const auto invert = [&](std::size_t i, std::size_t distance, std::int32_t dx) {
        const Source source = MirrorInverted(own, dx, dy, factors[distance]);
        to.columns[i] = source.x;
        to.rows[i] = source.y;
    };
    const std::size_t left = std::min<std::size_t>(centre, to.count);
    for (std::size_t i = 0; i < left; ++i) invert(i, centre - i, std::int32_t(i) - std::int32_t(centre));
    for (std::size_t i = left; i < to.count; ++i) invert(i, i - centre, std::int32_t(i - centre));
}

}  // namespace

std::optional<Source> MirrorInvertMap::operator()(unsigned x, unsigned y) const {
    const std::int32_t dx = std::int32_t(x - (width >> 1)), dy = std::int32_t(y - (height >> 1));
    return MirrorInverted(*this, dx, dy, InversionAt(*this, dx, dy));
}

FillSourceRow MirrorInvertMap::Rows(const Box&, InstructionSet set) const {
    return
        [map = *this, factors = std::vector<std::int32_t>((width >> 1) + 1),
         fill = variantsOf<MirrorInvertRow>.For(set)](const SourceRow& row) mutable { fill(map, factors.data(), row); };
}

void TileReflectSettings::SetAngle(std::int32_t a) {
    const auto& sines = SineMap();
    // Deliberate: above 0 degrees the cosine is never positive.
    if (a > 90) {
        sine = sines[180 - a];
        cosine = -sines[a - 90];
    } else if (a > 0) {
        sine = sines[a];
        cosine = -sines[90 - a];
    } else if (a >= -90) {
        sine = -sines[-a];
        cosine = sines[a + 90];
    } else {
        sine = -sines[a + 180];
        cosine = -sines[-90 - a];
    }
}

void TileReflectSettings::SetSize(std::int32_t size) { sizeFactor = 46080 / size; }

namespace {

// `lensAt` returns what the lens adds at an angle.
template <class LensOf>
Source TileReflected(const TileReflectMap& map, unsigned x, unsigned y, const LensOf& lensAt) {
    const std::int32_t s = map.settings.sine, c = map.settings.cosine;
    const std::int32_t centreX = std::int32_t(map.width >> 1), centreY = std::int32_t(map.height >> 1);
    const std::int32_t dx = std::int32_t(x) - centreX, dy = std::int32_t(y) - centreY;
    const auto throughLens = [&](std::int32_t position) {
        return WrappingSum(lensAt(WrappingProduct(position, map.settings.sizeFactor) >> 23), position) >> 15;
    };
    const std::int32_t u = throughLens(WrappingSum(WrappingProduct(c, dx), WrappingProduct(s, dy)));
    const std::int32_t v = throughLens(WrappingDifference(WrappingProduct(c, dy), WrappingProduct(s, dx)));
    const std::int32_t backX = WrappingDifference(WrappingProduct(c, u), WrappingProduct(s, v)) >> 15;
    const std::int32_t backY = WrappingSum(WrappingProduct(c, v), WrappingProduct(s, u)) >> 15;
    return {Wrapping(map.width)(WrappingSum(WrappingSum(backX, centreX), std::int32_t(map.width))),
            Wrapping(map.height)(WrappingSum(WrappingSum(backY, centreY), std::int32_t(map.height)))};
}

void TileReflectRow(const TileReflectMap& map, const LensTable& lens, const SourceRow& row) {
    const TileReflectMap own = map;
    const LensTable ownLens = lens;
    const SourceRow to = row;
    for (unsigned i = 0; i < to.count; ++i) {
        const Source source =
            TileReflected(own, to.xBegin + i, to.y, [&](std::int32_t angle) { return ownLens[angle]; });
        to.columns[i] = source.x;
        to.rows[i] = source.y;
    }
}

}  // namespace

FillSourceRow TileReflectMap::Rows(const Box&, InstructionSet set) const {
    return [map = *this, lens = LensTable(settings), fill = variantsOf<TileReflectRow>.For(set)](const SourceRow& row) {
        fill(map, lens, row);
    };
}

std::optional<Source> TileReflectMap::operator()(unsigned x, unsigned y) const {
    return TileReflected(*this, x, y, [&](std::int32_t angle) { return LensAt(angle, settings); });
}

CMirrorInvertVideoImageEffect::CMirrorInvertVideoImageEffect()
    : CTableEffect(effectNameMirrorInvert, mirrorInvertProperties) {}

void CMirrorInvertVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    using Effect = CMirrorInvertVideoImageEffect;
    Process(*this, *frame, &Effect::MirrorInvertRgba32EffectFirst, &Effect::MirrorInvertComponentEffectFirst,
            &Effect::MirrorInvertRgba32Effect, &Effect::MirrorInvertComponentEffect);
}

// Its properties are stored as what follows from them, so none of them has a member.
CTileReflectVideoImageEffect::CTileReflectVideoImageEffect() : CTableEffect(effectNameTileReflect, {}) {
    DeclareProperties(*this, tileReflectProperties);
}

void CTileReflectVideoImageEffect::OnSetProperty(const std::string& name, PropertyNode& node) {
    CTableEffect::OnSetProperty(name, node);
    TileReflectSettings settings = m_settings;
    const std::int32_t value = node.Value<std::int32_t>();
    if (name == angleName) {
        if (value < -180 || value > 180)
            throw CBaseException(errorGeneral, textInvalidParamValue, lineAngle, sourceName);
        settings.SetAngle(value);
    } else if (name == sizeName) {
        if (value == 0) throw CBaseException(errorGeneral, textInvalidParamValue, lineSize, sourceName);
        settings.SetSize(value);
    } else if (name == curvatureName) {
        settings.curvature = value;
    }
    if (settings == m_settings) return;
    m_settings = settings;
    m_table.SetValid(false);
}

void CTileReflectVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    using Effect = CTileReflectVideoImageEffect;
    Process(*this, *frame, &Effect::TileReflectRgba32EffectFirst, &Effect::TileReflectComponentEffectFirst,
            &Effect::TileReflectRgba32Effect, &Effect::TileReflectComponentEffect);
}

}  // namespace AVBased
