#include "dvd_effects/templates/remote_keys.h"

#include <algorithm>

#include "dvd_effects/canvas/animation.h"
#include "dvd_effects/canvas/painting.h"

namespace AVBased {

namespace {

double Length(double side) { return side < 0 ? -side : side; }

// A triangle whose tip looks to the right, from `begin` to `end`; its base is twice as long as `half`.
bool IsArrow(double x, double y, double begin, double end, double half) {
    return x > begin && x < end && Length(y) < half * (end - x) / (end - begin);
}

bool IsSign(unsigned group, double x, double y) {
    if (group == 1) return IsArrow(x, y, -0.22, 0.36, 0.34);
    if (group == 2) {
        const double row = Length(y) > 0.11 ? Length(y) - 0.22 : y;
        return Length(x) < 0.32 && Length(row) < 0.05;
    }
    const double far = x * x + y * y;
    const bool isRing = far > 0.34 * 0.34 && far < 0.39 * 0.39;
    // The same in all four directions.
    const double along = std::max(Length(x), Length(y)), aside = std::min(Length(x), Length(y));
    return isRing || IsArrow(along, aside, 0.58, 0.82, 0.2);
}

bool IsKey(unsigned group, double x, double y) {
    const double radius = group ? 0.66 : 0.98;
    return x * x + y * y < radius * radius;
}

}  // namespace

void RemoteKeys::Make(LayerKind kind, unsigned size, const Style& style) {
    m_size = size;
    for (unsigned group = 0; group < groups; ++group) {
        const auto paint = [&](Layer& layer, Colour key, Colour sign) {
            layer = Layer(size, size);
            PaintOver(layer, kind, key, [=](double x, double y) { return IsKey(group, x, y); });
            PaintOver(layer, kind, sign, [=](double x, double y) { return IsSign(group, x, y); });
        };
        paint(m_keys[group], style.key, style.sign);
        paint(m_lit[group], style.lit, style.key);
    }
}

void RemoteKeys::Draw(Canvas& canvas, const Region& room, double part) const {
    constexpr double least = 1.0 / 3, step = 1.12, airy = 0.8;
    const double size = std::min({m_size, airy * room.height, room.width / (1 + step * (groups - 1))});
    if (size < least * m_size) return;
    const Spot middle = room.Middle();
    for (unsigned group = 0; group < groups; ++group) {
        const Spot at{middle.x + (group - (groups - 1) / 2.0) * step * size, middle.y};
        const double turn = part * groups - group, pressed = Between(turn, 0.1, 0.9, 0.2);
        const double shown = size * (1 - 0.05 * pressed);
        canvas.LayTransformed(m_keys[group], Placement::Turned(at, shown, shown));
        canvas.LayTransformed(m_lit[group], Placement::Turned(at, shown, shown), ByteOf(pressed));
    }
}

Region BelowTexts(const std::vector<MenuText>& texts, const Region& panel) {
    double top = panel.top;
    for (const MenuText& text : texts) {
        const point_t at = text.item.boxPosition;
        const bool isBeside = at.x > panel.left + panel.width || double(at.x) + text.layer.Width() < panel.left;
        if (!isBeside) top = std::max(top, double(at.y) + text.layer.Height());
    }
    return {panel.left, top, panel.width, std::max(0.0, panel.top + panel.height - top)};
}

}  // namespace AVBased
