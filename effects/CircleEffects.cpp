#include "effects/CircleEffects.h"

#include <cmath>

#include "effects/fixed_point.h"
#include "effects/property_table.h"

namespace AVBased {
namespace {

constexpr Property<CircleSettings> rotateProperties[] = {
    {"rotate_r", "0", &CircleSettings::radius},
    {"rotate_x", "0", &CircleSettings::x},
    {"rotate_y", "0", &CircleSettings::y},
    {"rotate_scale", "0", &CircleSettings::scale},
};

constexpr char spherizeScaleName[] = "spherize_scale";
constexpr Property<CircleSettings> spherizeProperties[] = {
    {"spherize_r", "0", &CircleSettings::radius},
    {"spherize_x", "0", &CircleSettings::x},
    {"spherize_y", "0", &CircleSettings::y},
    {spherizeScaleName, "0", &CircleSettings::scale},
};

}  // namespace

std::optional<Box> CircleSettings::BoxIn(unsigned width, unsigned height) const {
    if (x > width || y > height) return std::nullopt;
    return Box{x > radius ? x - radius : 0, std::min(x + radius, width), y > radius ? y - radius : 0,
               std::min(y + radius, height)};
}

std::optional<Source> RotateMap::operator()(unsigned x, unsigned y) const {
    const std::int32_t dx = std::int32_t(x - circle.x), dy = std::int32_t(y - circle.y);
    const float distance = float(std::sqrt(double(WrappingSum(WrappingProduct(dx, dx), WrappingProduct(dy, dy)))));
    const float radius = float(circle.radius), centreX = float(circle.x), centreY = float(circle.y);
    // Negated, since the distance in a huge picture may be no number.
    if (!(radius > distance)) return std::nullopt;
    const float nx = (float(x) - centreX) / radius, ny = (float(y) - centreY) / radius;
    const double twist = double(radius - distance) * circle.scale;
    const float angle = float(2 * (std::sqrt(double(nx * nx + ny * ny)) - 0.7) * (twist / double(circle.radius)));
    const float sine = std::sin(angle), cosine = std::cos(angle);
    return Source{TruncateToUint32(centreX + (nx * cosine - ny * sine) * radius),
                  TruncateToUint32(centreY + (nx * sine + ny * cosine) * radius)};
}

std::optional<Source> SpherizeMap::operator()(unsigned x, unsigned y) const {
    std::int32_t dx = std::int32_t(x - circle.x), dy = std::int32_t(y - circle.y);
    const std::uint32_t distance2 = std::uint32_t(dx) * std::uint32_t(dx) + std::uint32_t(dy) * std::uint32_t(dy);
    if (distance2 <= circle.radius * circle.radius) {
        const double reach = std::sqrt(double(distance2)) / double(circle.radius);
        const std::int32_t k = TruncateToInt32(std::pow(reach, circle.scale) * 256);
        dx = WrappingProduct(dx, k) >> 8;
        dy = WrappingProduct(dy, k) >> 8;
    }
    return Source{circle.x + std::uint32_t(dx), circle.y + std::uint32_t(dy)};
}

CRotateVideoImageEffect::CRotateVideoImageEffect() : CBasedVideoImageEffect(effectNameRotate) {
    DeclareProperties(*this, rotateProperties);
}

void CRotateVideoImageEffect::OnSetProperty(const std::string& name, PropertyNode& node) {
    CBasedVideoImageEffect::OnSetProperty(name, node);
    const auto isNamed = [&](const Property<CircleSettings>& property) { return name == property.name; };
    // Deliberate: whichever property is set, its integer value is compared with the radius. Another centre or scale
    // that happens to equal it keeps the old table.
    if (std::ranges::any_of(rotateProperties, isNamed) && node.Value<std::uint32_t>() != m_settings.radius)
        m_table.SetValid(false);
    StoreProperty(m_settings, rotateProperties, name, node);
}

void CRotateVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    ProcessWithTable(
        *this, m_table,
        {&CRotateVideoImageEffect::RotateRgba32Effect, &CRotateVideoImageEffect::RotateComponentEffect,
         &CRotateVideoImageEffect::ConverRotateRgba32Effect, &CRotateVideoImageEffect::ConverRotateComponentEffect},
        *frame);
}

void CRotateVideoImageEffect::RotateRgba32Effect(const PackedView& picture) {
    if (const auto box = m_settings.BoxIn(picture.width, picture.height))
        m_table.Build(*box, RotateMap{m_settings}, picture, Outside::White);
}

void CRotateVideoImageEffect::RotateComponentEffect(const PlanarView& picture) {
    if (const auto box = m_settings.BoxIn(picture.plane[0].width, picture.plane[0].height))
        m_table.Build(*box, RotateMap{m_settings}, picture, Outside::White);
}

void CRotateVideoImageEffect::ConverRotateRgba32Effect(const PackedView& picture) {
    if (m_settings.BoxIn(picture.width, picture.height)) m_table.Replay(picture, Outside::White);
}

void CRotateVideoImageEffect::ConverRotateComponentEffect(const PlanarView& picture) {
    if (m_settings.BoxIn(picture.plane[0].width, picture.plane[0].height)) m_table.Replay(picture, Outside::White);
}

CSpherizeVideoImageEffect::CSpherizeVideoImageEffect() : CBasedVideoImageEffect(effectNameSpherize) {
    DeclareProperties(*this, spherizeProperties);
}

void CSpherizeVideoImageEffect::OnSetProperty(const std::string& name, PropertyNode& node) {
    CBasedVideoImageEffect::OnSetProperty(name, node);
    const double before = m_settings.scale;
    bool changed = StoreProperty(m_settings, spherizeProperties, name, node);
    // Deliberate: of a new scale only the integer that its slot begins with is compared, and with the old scale.
    if (name == spherizeScaleName) changed = double(node.Value<std::int32_t>()) != before;
    if (changed) m_table.SetValid(false);
}

void CSpherizeVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    ProcessWithTable(
        *this, m_table,
        {&CSpherizeVideoImageEffect::SpherizeRgba32Effect, &CSpherizeVideoImageEffect::SpherizeComponentEffect,
         &CSpherizeVideoImageEffect::ConverSpherizeRgba32Effect,
         &CSpherizeVideoImageEffect::ConverSpherizeComponentEffect},
        *frame);
}

// Deliberate: a source outside the picture leaves a packed pixel as it was, but turns a planar one white.
void CSpherizeVideoImageEffect::SpherizeRgba32Effect(const PackedView& picture) {
    if (const auto box = m_settings.BoxIn(picture.width, picture.height))
        m_table.Build(*box, SpherizeMap{m_settings}, picture, Outside::Unchanged);
}

void CSpherizeVideoImageEffect::SpherizeComponentEffect(const PlanarView& picture) {
    if (const auto box = m_settings.BoxIn(picture.plane[0].width, picture.plane[0].height))
        m_table.Build(*box, SpherizeMap{m_settings}, picture, Outside::White);
}

void CSpherizeVideoImageEffect::ConverSpherizeRgba32Effect(const PackedView& picture) {
    if (m_settings.BoxIn(picture.width, picture.height)) m_table.Replay(picture, Outside::Unchanged);
}

void CSpherizeVideoImageEffect::ConverSpherizeComponentEffect(const PlanarView& picture) {
    if (m_settings.BoxIn(picture.plane[0].width, picture.plane[0].height)) m_table.Replay(picture, Outside::White);
}

}  // namespace AVBased
