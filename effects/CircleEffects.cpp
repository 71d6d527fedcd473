#include "effects/CircleEffects.h"

#include <cmath>
#include <cstddef>
#include <vector>

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

// What depends on a pixel's distances from the centre alone is the same in all four quarters of the circle.
template <class Value, Value unknown>
class QuarterMemory {
 public:
    QuarterMemory(const CircleSettings& circle, const Box& box)
        : m_circle(circle),
          m_columns(std::max(Distance(box.xBegin, circle.x), Distance(box.xEnd, circle.x)) + std::size_t(1)),
          m_values(
              m_columns * (std::max(Distance(box.yBegin, circle.y), Distance(box.yEnd, circle.y)) + std::size_t(1)),
              unknown) {}

    template <class Compute>
    const Value& At(unsigned x, unsigned y, const Compute& compute) {
        Value& value = m_values[Distance(y, m_circle.y) * m_columns + Distance(x, m_circle.x)];
        if (value == unknown) value = compute(x, y);
        return value;
    }

 private:
    static unsigned Distance(unsigned a, unsigned b) { return a < b ? b - a : a - b; }

    CircleSettings m_circle;
    std::size_t m_columns;
    std::vector<Value> m_values;
};

// Above this, distances as single-precision numbers may differ from quarter to quarter.
constexpr unsigned exactInFloat = 1 << 24;

template <class Picture>
void BuildRotation(CoordinateTable& table, const Box& box, const RotateMap& map, const Picture& picture) {
    if (std::max(box.xEnd, box.yEnd) > exactInFloat) return table.Build(box, map, picture, Outside::White);
    // No sine is above 1.
    constexpr RotateMap::Turn unknown{2, 0}, outside{3, 0};
    QuarterMemory<RotateMap::Turn, unknown> turns(map.circle, box);
    const auto turnAt = [&](unsigned x, unsigned y) { return map.TurnAt(x, y).value_or(outside); };
    table.Build(
        box,
        [&](unsigned x, unsigned y) {
            const RotateMap::Turn turn = turns.At(x, y, turnAt);
            return turn == outside ? std::nullopt : std::optional(map.Turned(x, y, turn));
        },
        picture, Outside::White);
}

template <class Picture>
void BuildLens(CoordinateTable& table, const Box& box, const SpherizeMap& map, const Picture& picture,
               Outside outside) {
    QuarterMemory<std::int32_t, INT32_MIN> factors(map.circle, box);
    const auto factorAt = [&](unsigned x, unsigned y) { return map.FactorAt(x, y); };
    table.Build(
        box, [&](unsigned x, unsigned y) { return std::optional(map.Scaled(x, y, factors.At(x, y, factorAt))); },
        picture, outside);
}

}  // namespace

std::optional<Box> CircleSettings::BoxIn(unsigned width, unsigned height) const {
    if (x > width || y > height) return std::nullopt;
    return Box{x > radius ? x - radius : 0, std::min(x + radius, width), y > radius ? y - radius : 0,
               std::min(y + radius, height)};
}

std::optional<RotateMap::Turn> RotateMap::TurnAt(unsigned x, unsigned y) const {
    const std::int32_t dx = std::int32_t(x - circle.x), dy = std::int32_t(y - circle.y);
    const float distance = float(std::sqrt(double(WrappingSum(WrappingProduct(dx, dx), WrappingProduct(dy, dy)))));
    const float radius = float(circle.radius);
    // Negated, since the distance in a huge picture may be no number.
    if (!(radius > distance)) return std::nullopt;
    const float nx = (float(x) - float(circle.x)) / radius, ny = (float(y) - float(circle.y)) / radius;
    const double twist = double(radius - distance) * circle.scale;
    const float angle = float(2 * (std::sqrt(double(nx * nx + ny * ny)) - 0.7) * (twist / double(circle.radius)));
    return Turn{std::sin(angle), std::cos(angle)};
}

Source RotateMap::Turned(unsigned x, unsigned y, Turn turn) const {
    const float radius = float(circle.radius), centreX = float(circle.x), centreY = float(circle.y);
    const float nx = (float(x) - centreX) / radius, ny = (float(y) - centreY) / radius;
    return {TruncateToUint32(centreX + (nx * turn.cosine - ny * turn.sine) * radius),
            TruncateToUint32(centreY + (nx * turn.sine + ny * turn.cosine) * radius)};
}

std::optional<Source> RotateMap::operator()(unsigned x, unsigned y) const {
    const std::optional<Turn> turn = TurnAt(x, y);
    return turn ? std::optional(Turned(x, y, *turn)) : std::nullopt;
}

std::int32_t SpherizeMap::FactorAt(unsigned x, unsigned y) const {
    const std::uint32_t dx = x - circle.x, dy = y - circle.y, distance2 = dx * dx + dy * dy;
    if (distance2 > circle.radius * circle.radius) return -1;
    return TruncateToInt32(std::pow(std::sqrt(double(distance2)) / double(circle.radius), circle.scale) * 256);
}

Source SpherizeMap::Scaled(unsigned x, unsigned y, std::int32_t factor) const {
    if (factor < 0) return {x, y};
    const std::int32_t dx = std::int32_t(x - circle.x), dy = std::int32_t(y - circle.y);
    return {circle.x + std::uint32_t(WrappingProduct(dx, factor) >> 8),
            circle.y + std::uint32_t(WrappingProduct(dy, factor) >> 8)};
}

std::optional<Source> SpherizeMap::operator()(unsigned x, unsigned y) const { return Scaled(x, y, FactorAt(x, y)); }

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
        Instructions(), *frame);
}

void CRotateVideoImageEffect::RotateRgba32Effect(const PackedView& picture) {
    if (const auto box = m_settings.BoxIn(picture.width, picture.height))
        BuildRotation(m_table, *box, RotateMap{m_settings}, picture);
}

void CRotateVideoImageEffect::RotateComponentEffect(const PlanarView& picture) {
    if (const auto box = m_settings.BoxIn(picture.plane[0].width, picture.plane[0].height))
        BuildRotation(m_table, *box, RotateMap{m_settings}, picture);
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
        Instructions(), *frame);
}

// Deliberate: a source outside the picture leaves a packed pixel as it was, but turns a planar one white.
void CSpherizeVideoImageEffect::SpherizeRgba32Effect(const PackedView& picture) {
    if (const auto box = m_settings.BoxIn(picture.width, picture.height))
        BuildLens(m_table, *box, SpherizeMap{m_settings}, picture, Outside::Unchanged);
}

void CSpherizeVideoImageEffect::SpherizeComponentEffect(const PlanarView& picture) {
    if (const auto box = m_settings.BoxIn(picture.plane[0].width, picture.plane[0].height))
        BuildLens(m_table, *box, SpherizeMap{m_settings}, picture, Outside::White);
}

void CSpherizeVideoImageEffect::ConverSpherizeRgba32Effect(const PackedView& picture) {
    if (m_settings.BoxIn(picture.width, picture.height)) m_table.Replay(picture, Outside::Unchanged);
}

void CSpherizeVideoImageEffect::ConverSpherizeComponentEffect(const PlanarView& picture) {
    if (m_settings.BoxIn(picture.plane[0].width, picture.plane[0].height)) m_table.Replay(picture, Outside::White);
}

}  // namespace AVBased
