#include "effects/WrapEffects.h"

#include <array>
#include <cmath>
#include <numbers>

#include "TarvoBased/CBaseException.h"
#include "TarvoBased/error_codes.h"
#include "effects/fixed_point.h"
#include "effects/property_table.h"

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
        for (int a = 0; a <= 90; ++a) sines[a] = InQ15(std::sin(a * std::numbers::pi / 180));
        return sines;
    }();
    return map;
}

// Tangents of -90 to 90 degrees.
const std::array<std::int32_t, 181>& TangentMap() {
    static const auto map = [] {
        std::array<std::int32_t, 181> tangents{};
        // Deliberate: 0 at 89 degrees as well as at 90.
        for (int a = -88; a <= 88; ++a) tangents[a + 90] = InQ15(std::tan(a * std::numbers::pi / 180));
        return tangents;
    }();
    return map;
}

// The squared distance in a huge picture may wrap around to anything.
std::int32_t Divided(std::int32_t dividend, std::int32_t divisor) {
    if (divisor == 0) return 0;
    return divisor == -1 ? WrappingDifference(0, dividend) : dividend / divisor;
}

// The remainder of a division by a picture's size, with the size added when it is negative.
std::uint32_t Wrapped(std::int32_t position, unsigned size) {
    if (position >= 0) return std::uint32_t(position) < size ? std::uint32_t(position) : std::uint32_t(position) % size;
    const std::uint32_t remainder = (0u - std::uint32_t(position)) % size;
    return remainder == 0 ? 0 : size - remainder;
}

// The lens of a tile, along one of its axes.
std::int32_t ThroughLens(std::int32_t position, const TileReflectSettings& settings) {
    std::int32_t angle = WrappingProduct(position, settings.sizeFactor) >> 23;
    while (angle < -90) angle += 180;
    while (angle > 90) angle -= 180;
    const std::int32_t curvature2 = WrappingProduct(settings.curvature, settings.curvature);
    return WrappingSum(WrappingProduct(TangentMap()[angle + 90], curvature2), position) >> 15;
}

Box Whole(unsigned width, unsigned height) { return {0, width, 0, height}; }

}  // namespace

std::optional<Source> MirrorInvertMap::operator()(unsigned x, unsigned y) const {
    const std::int32_t centreX = std::int32_t(width >> 1), centreY = std::int32_t(height >> 1);
    const std::int32_t m = std::min(centreX, centreY), reference2 = WrappingProduct(m, m);
    const std::int32_t strength = WrappingProduct(settings.amount, 256);
    const std::int32_t dx = std::int32_t(x) - centreX, dy = std::int32_t(y) - centreY;
    // Deliberate: the hundredth is taken early and truncated, except at the centre.
    const std::int32_t k = dx == 0 && dy == 0 ? WrappingProduct(strength, reference2) / 100
                                              : Divided(WrappingProduct(strength, reference2 / 100),
                                                        WrappingSum(WrappingProduct(dx, dx), WrappingProduct(dy, dy)));
    return Source{Wrapped(WrappingSum(WrappingProduct(k, dx) >> 8, centreX), width),
                  Wrapped(WrappingSum(WrappingProduct(k, dy) >> 8, centreY), height)};
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

std::optional<Source> TileReflectMap::operator()(unsigned x, unsigned y) const {
    const std::int32_t s = settings.sine, c = settings.cosine;
    const std::int32_t centreX = std::int32_t(width >> 1), centreY = std::int32_t(height >> 1);
    const std::int32_t dx = std::int32_t(x) - centreX, dy = std::int32_t(y) - centreY;
    const std::int32_t u = ThroughLens(WrappingSum(WrappingProduct(c, dx), WrappingProduct(s, dy)), settings);
    const std::int32_t v = ThroughLens(WrappingDifference(WrappingProduct(c, dy), WrappingProduct(s, dx)), settings);
    const std::int32_t backX = WrappingDifference(WrappingProduct(c, u), WrappingProduct(s, v)) >> 15;
    const std::int32_t backY = WrappingSum(WrappingProduct(c, v), WrappingProduct(s, u)) >> 15;
    return Source{Wrapped(WrappingSum(WrappingSum(backX, centreX), std::int32_t(width)), width),
                  Wrapped(WrappingSum(WrappingSum(backY, centreY), std::int32_t(height)), height)};
}

CMirrorInvertVideoImageEffect::CMirrorInvertVideoImageEffect() : CBasedVideoImageEffect(effectNameMirrorInvert) {
    DeclareProperties(*this, mirrorInvertProperties);
}

void CMirrorInvertVideoImageEffect::OnSetProperty(const std::string& name, PropertyNode& node) {
    CBasedVideoImageEffect::OnSetProperty(name, node);
    if (StoreProperty(m_settings, mirrorInvertProperties, name, node)) m_table.SetValid(false);
}

void CMirrorInvertVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    using Effect = CMirrorInvertVideoImageEffect;
    ProcessWithTable(*this, m_table,
                     {&Effect::MirrorInvertRgba32EffectFirst, &Effect::MirrorInvertComponentEffectFirst,
                      &Effect::MirrorInvertRgba32Effect, &Effect::MirrorInvertComponentEffect},
                     *frame);
}

void CMirrorInvertVideoImageEffect::MirrorInvertRgba32EffectFirst(const PackedView& picture) {
    m_table.Build(Whole(picture.width, picture.height), MirrorInvertMap{m_settings, picture.width, picture.height},
                  picture, Outside::Nearest);
}

void CMirrorInvertVideoImageEffect::MirrorInvertComponentEffectFirst(const PlanarView& picture) {
    const unsigned width = picture.plane[0].width, height = picture.plane[0].height;
    m_table.Build(Whole(width, height), MirrorInvertMap{m_settings, width, height}, picture, Outside::Nearest);
}

void CMirrorInvertVideoImageEffect::MirrorInvertRgba32Effect(const PackedView& picture) {
    m_table.Replay(picture, Outside::Nearest);
}

void CMirrorInvertVideoImageEffect::MirrorInvertComponentEffect(const PlanarView& picture) {
    m_table.Replay(picture, Outside::Nearest);
}

CTileReflectVideoImageEffect::CTileReflectVideoImageEffect() : CBasedVideoImageEffect(effectNameTileReflect) {
    DeclareProperties(*this, tileReflectProperties);
}

void CTileReflectVideoImageEffect::OnSetProperty(const std::string& name, PropertyNode& node) {
    CBasedVideoImageEffect::OnSetProperty(name, node);
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
    ProcessWithTable(*this, m_table,
                     {&Effect::TileReflectRgba32EffectFirst, &Effect::TileReflectComponentEffectFirst,
                      &Effect::TileReflectRgba32Effect, &Effect::TileReflectComponentEffect},
                     *frame);
}

void CTileReflectVideoImageEffect::TileReflectRgba32EffectFirst(const PackedView& picture) {
    m_table.Build(Whole(picture.width, picture.height), TileReflectMap{m_settings, picture.width, picture.height},
                  picture, Outside::Nearest);
}

void CTileReflectVideoImageEffect::TileReflectComponentEffectFirst(const PlanarView& picture) {
    const unsigned width = picture.plane[0].width, height = picture.plane[0].height;
    m_table.Build(Whole(width, height), TileReflectMap{m_settings, width, height}, picture, Outside::Nearest);
}

void CTileReflectVideoImageEffect::TileReflectRgba32Effect(const PackedView& picture) {
    m_table.Replay(picture, Outside::Nearest);
}

void CTileReflectVideoImageEffect::TileReflectComponentEffect(const PlanarView& picture) {
    m_table.Replay(picture, Outside::Nearest);
}

}  // namespace AVBased
