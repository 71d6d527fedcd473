#include "dvd_effects/templates/CTravel.h"

#include <map>

#include "dvd_effects/canvas/painting.h"
#include "dvd_effects/templates/scenery.h"

namespace AVBased {

namespace {

constexpr unsigned dashes = 56, dashSteps = 14;
constexpr Colour routeColour{178, 44, 36};
// Heights of a photograph far away and in front, in heights of the menu, and the most that it has of the stage.
struct Heights {
    double away, front, most;
};
constexpr Heights HeightsOf(unsigned count) {
    if (count < 3) return count < 2 ? Heights{0.4, 0.56, 0.8} : Heights{0.28, 0.5, 0.7};
    return {count > 5 ? 0.2 : 0.235, 0.38, 0.56};
}
constexpr double widest = 1.75;

// A plane between -1 and 1, seen from above, that flies to the right: its body and wings, or its markings.
double Plane(double x, double y, bool isMark) {
    const double v = y < 0 ? -y : y;
    const bool body = x * x / 0.74 + v * v / 0.018 < 1 && x<0.72, nose = x> 0.68 && x < 0.8 && v < 0.1;
    const bool wing = v < 0.96 && x > -0.02 - 0.06 * v && x < 0.4 - 0.14 * v;
    const bool tail = v < 0.38 && x > -0.86 && x < -0.62 - 0.2 * v;
    const bool propeller = x > 0.8 && x < 0.86 && v < 0.3;
    if (isMark) return nose || propeller || (wing && v > 0.56 && v < 0.74);
    return body || wing || tail;
}

}  // namespace

// A way around the middle of an area that winds a little; 0 is in front, at the bottom.
class CTravel::Route {
 public:
    explicit Route(const Region& area) : m_area(area) {
        for (unsigned i = 1; i <= steps; ++i) {
            m_length[i] = m_length[i - 1] + Distance(Turned(i - 1), Turned(i));
        }
    }
    Spot At(double part) const {
        const double length = Wrapped(part) * m_length[steps];
        const auto i = unsigned(std::upper_bound(m_length + 1, m_length + steps, length) - m_length);
        const double between =
            m_length[i] > m_length[i - 1] ? (length - m_length[i - 1]) / (m_length[i] - m_length[i - 1]) : 0;
        const Spot from = Turned(i - 1), to = Turned(i);
        return {Mixed(from.x, to.x, between), Mixed(from.y, to.y, between)};
    }

 private:
    static constexpr unsigned steps = 240;
    Spot Turned(unsigned step) const {
        const double turn = double(step % steps) / steps;
        const double reach = 0.5 * (0.9 + 0.1 * Wave(3 * turn + 0.25));
        return m_area.At(0.5 + reach * Wave(turn), 0.5 + reach * Wave(turn + 0.25) + 0.05 * Wave(4 * turn));
    }

    Region m_area;
    double m_length[steps + 1] = {};
};

namespace {

// A map at a place counted in heights of the menu.
Tint Map(double x, double y) {
    constexpr Tint sea{158, 190, 196}, shallow{190, 212, 208}, land{238, 224, 188}, hill{214, 190, 142},
        coast{120, 92, 62};
    const double height =
        0.58 * Noise(21, x * 2.3, y * 2.3) + 0.28 * Noise(22, x * 6, y * 6) + 0.14 * Noise(23, x * 17, y * 17) - 0.5;
    const double fibres = 0.95 + 0.06 * Noise(24, x * 160, y * 160);
    const double off = height < 0 ? -height : height;
    Tint tint = height < 0 ? Mixed(shallow, sea, Eased(off / 0.09)) : Mixed(land, hill, Eased(off / 0.3));
    // Lines of equal height and depth, meridians and parallels.
    const double level = Wrapped(off / 0.045);
    if (level < 0.09) tint = Mixed(tint, coast, height < 0 ? 0.1 : 0.2);
    for (const double line : {Wrapped(x * 3.2), Wrapped(y * 3.2 + 0.2)})
        if (line < 0.008) tint = Mixed(tint, coast, 0.25);
    return Mixed(coast, tint, Eased((off - 0.001) / 0.004)) * fibres;
}

// A wind rose between -1 and 1: eight rays, half of each in shade, within a ring.
double Rose(double x, double y, bool isShade) {
    const double u = x < 0 ? -x : x, v = y < 0 ? -y : y, squared = x * x + y * y;
    const auto ray = [](double along, double across, double reach) {
        return along < reach && across < 0.24 * (reach - along) && across < along;
    };
    const double p = (u + v) * 0.7071, q = (u > v ? u - v : v - u) * 0.7071;
    const bool isMain = ray(std::max(u, v), std::min(u, v), 0.96), isMinor = ray(p, q, 0.62);
    const bool isDiagonal = (x > 0) == (y > 0), isDark = isMain ? isDiagonal == (u > v) : isDiagonal != (u > v);
    if (isShade) return (isMain || isMinor) && isDark;
    const bool isRing = squared > 0.49 && squared < 0.52;
    return isMain || isMinor || isRing;
}

// A pointer between -1 and 1 from the bottom to the top.
double Needle(double x, double y) { return (x < 0 ? -x : x) < 0.16 * (1 - (y < 0 ? -y : y)); }

}  // namespace

void CTravel::MakeScenery() {
    CPhotographs::MakeScenery();
    const FrameSize dash = PartOfMenu(0.016, 0.009);
    m_dash = PlainLayer(Kind(), dash, routeColour);
    RoundCorners(m_dash, dash.height);
    const unsigned dot = PartOfMenu(0, 0.022).height, rim = std::max(1u, dot / 5);
    Layer red = PlainLayer(Kind(), {dot, dot}, routeColour);
    CutEllipse(red, 0);
    m_stop = Framed(red, Kind(), rim, {255, 250, 240});
    CutEllipse(m_stop, 0);
    m_needle = Layer(Units(0.3), Units(1.3));
    PaintOver(m_needle, Kind(), {70, 58, 46}, Needle);
    PaintOver(m_needle, Kind(), routeColour, [](double x, double y) { return y < 0 ? Needle(x, y) : 0; });
    m_plane = Layer(Units(1.1), Units(1.1));
    PaintOver(m_plane, Kind(), routeColour, [](double x, double y) { return Plane(x, y, false); });
    PaintOver(m_plane, Kind(), {255, 246, 224}, [](double x, double y) { return Plane(x, y, true); });
    m_planeShadow = ShadowOf(m_plane, Kind(), Units(0.1), {40, 26, 12, 120});
}

Spot CTravel::Compass() const { return {Width() - 1.5 * Unit(), 1.35 * Unit()}; }

void CTravel::PaintBackground(Canvas& canvas) const {
    Paint(canvas, Kind(), [&](double x, double y) {
        const double fromMiddleX = x / Width() - 0.5, fromMiddleY = y / Height() - 0.5;
        const double squared = fromMiddleX * fromMiddleX + fromMiddleY * fromMiddleY;
        return Map(x / Height(), y / Height()) * (1.04 - 0.9 * squared * squared * 2);
    });
    Layer rose(Units(1.9), Units(1.9));
    PaintOver(rose, Kind(), {246, 234, 204}, [](double x, double y) { return Rose(x, y, false); });
    PaintOver(rose, Kind(), {120, 92, 62}, [](double x, double y) { return Rose(x, y, true); });
    canvas.LayTransformed(rose, Placement::Turned(Compass(), rose.Width(), rose.Height()));
}

void CTravel::DrawRoute(Canvas& canvas, const Route& route) const {
    const auto ahead = [&](double part) {
        const Spot before = route.At(part - 0.004), after = route.At(part + 0.004);
        return Spot{after.x - before.x, after.y - before.y};
    };
    for (unsigned i = 0; i < dashes; ++i) {
        const double part = (i + Phase() * dashSteps) / dashes;
        canvas.LayTransformed(m_dash, Placement::Towards(route.At(part), ahead(part), m_dash.Width(), m_dash.Height()));
    }
    // It starts half the way from the photograph in front.
    const double part = Turns(500) + 0.5, drop = 0.35 * Unit();
    const Spot at = route.At(part), way = ahead(part);
    const double nearness = 0.85 + 0.3 * (at.y - route.At(0.5).y) / Height();
    const double size = nearness * m_plane.Width(), shade = nearness * m_planeShadow.Width();
    canvas.LayTransformed(m_planeShadow, Placement::Towards({at.x + 0.4 * drop, at.y + drop}, way, shade, shade));
    canvas.LayTransformed(m_plane, Placement::Towards(at, way, size, size));
}

void CTravel::DrawScene(Canvas& canvas) {
    const std::vector<ShownPicture> pictures = ShownPictures();
    const auto count = unsigned(pictures.size());
    const Region stage = FreeRegion();
    const Heights heights = HeightsOf(count);
    const double front = std::min(heights.front * Height(), heights.most * stage.height);
    const double far = std::min(heights.away * Height(), 0.65 * front);
    double wide = 1;
    for (const ShownPicture& picture : pictures)
        wide = std::max(wide, std::min(widest, double(picture.layer.Width()) / picture.layer.Height()));
    // The photographs stand above their stops.
    canvas.LayTransformed(m_needle, Placement::Turned(Compass(), m_needle.Width(), m_needle.Height(),
                                                      26 * Wave(Turns(150)) + 7 * Wave(Turns(50))));
    const double aside = std::max(0.05 * Width(), 0.53 * far * wide - 0.038 * Width());
    const Route route({stage.left + aside, stage.top + far, stage.width - 2 * aside, stage.height - far});
    DrawRoute(canvas, route);
    // One stop in each turn, and a rest there.
    const Turn turn = TurnAt(Phase(), count);
    const double gone = turn.index + Passed(turn.part, 0.3, 1);
    const auto stop = [&](unsigned i) { return Wrapped((gone + i) / count); };
    // Those beside the one in front are as near as there is room for.
    const double reach = std::min(0.2, 1.15 / count);
    // Of two, the far one rests beside the near one, not behind it.
    const double turned = count == 2 ? 0.09 : 0;
    std::multimap<double, unsigned> byNearness;
    for (unsigned i = 0; i < count; ++i) {
        const double away = std::min(stop(i), 1 - stop(i));
        byNearness.emplace(Eased(1 - away / reach) + (0.5 - away) * 0.2, i);
    }
    Pile pile;
    for (const auto& [nearness, i] : byNearness) {
        const Layer& picture = pictures[i].layer;
        const double near = std::min(1.0, nearness);
        const double fit = std::min(front / picture.Height(), widest * front / picture.Width());
        const double scale = ScaleOf(pictures[i], fit) * Mixed(far / front, 1, near);
        const Spot at = route.At(stop(i) + turned);
        const double shown = picture.Height() * scale, dot = m_stop.Height() * (0.8 + 0.5 * near);
        const double sway = 2.5 * Wave(Phase() * 2 + Scattered(1, i));
        ShowPhotograph(pile, pictures[i], {{at.x, at.y - shown / 2 - 0.9 * dot}, scale, sway, 0.25 + 0.5 * near});
        pile.Put(m_stop, Placement::Turned(at, dot, dot), ByteOf(pictures[i].opacity));
    }
    pile.Draw(canvas);
    DrawTexts(canvas);
}

}  // namespace AVBased
