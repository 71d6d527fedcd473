#include "dvd_effects/templates/CSpecialOccasion.h"

namespace AVBased {

namespace {

constexpr Colour gold = {212, 168, 74}, lightGold = {252, 230, 164}, darkGold = {128, 88, 26}, wine = {44, 8, 28},
                 ivory = {246, 238, 220};
constexpr Colour feast[] = {{214, 170, 76}, {250, 240, 220}, {196, 60, 92}, {238, 178, 168}};
constexpr unsigned confetti = 80, confettiBehind = 56, balloons = 6, sparkles = 26;

// The part of a band from `begin` to `end`, with soft edges.
double Band(double at, double begin, double end, double soft) {
    return std::clamp((at - begin) / soft + 0.5, 0.0, 1.0) - std::clamp((at - end) / soft + 0.5, 0.0, 1.0);
}

Layer Balloon(LayerKind kind, unsigned size, Colour colour) {
    Layer balloon(size, size * 2);
    // Its skin up to the knot, above a string.
    const auto skin = [](double x, double y) {
        const double v = (y + 0.45) / 0.52, narrowing = v > 0 ? 1 - 0.22 * v : 1, u = x / (0.94 * narrowing);
        return u * u + v * v;
    };
    PaintOver(balloon, kind, {lightGold.red, lightGold.green, lightGold.blue, 150}, [](double x, double y) {
        const double at = x - 0.09 * Wave(y * 0.9) * (y - 0.1);
        return y > 0.08 && at < 0.03 && at > -0.03;
    });
    PaintOver(balloon, kind, colour,
              [](double x, double y) { return y > 0.06 && y < 0.13 && (x < 0 ? -x : x) < (y - 0.03) * 1.1; });
    PaintOver(balloon, kind, {colour.red, colour.green, colour.blue, 235},
              [&](double x, double y) { return skin(x, y) < 1; });
    PaintOver(balloon, kind, {20, 0, 12, 150}, [&](double x, double y) {
        const double u = x + 0.25, v = (y + 0.58) / 0.52;
        return skin(x, y) < 1 ? (u * u + v * v - 0.35) * 0.7 : 0;
    });
    PaintOver(balloon, kind, {255, 255, 255, 200}, [](double x, double y) {
        const double u = (x + 0.36) / 0.24, v = (y + 0.68) / 0.16;
        return 1 - u * u - v * v;
    });
    return balloon;
}

// Four long rays and a bright middle.
Layer Sparkle(LayerKind kind, unsigned size) {
    Layer sparkle(size, size);
    PaintOver(sparkle, kind, {255, 244, 206}, [](double x, double y) {
        const double u = x < 0 ? -x : x, v = y < 0 ? -y : y, far = std::max(u, v);
        const double rays = 0.003 / (u * v + 0.003) * (1 - far) * (1 - far), core = 1 - (x * x + y * y) * 40;
        return rays + std::max(0.0, core);
    });
    return sparkle;
}

// A wavy string with a bow at its upper end.
Layer Ribbon(LayerKind kind, unsigned size) {
    Layer ribbon(size, size * 2);
    PaintOver(ribbon, kind, gold, [](double x, double y) {
        const double at = x - 0.3 * Wave(y * 0.8 + 0.4) * (y + 1) / 2;
        return at < 0.07 && at > -0.07;
    });
    PaintOver(ribbon, kind, lightGold, [](double x, double y) {
        const double u = ((x < 0 ? -x : x) - 0.5) / 0.46, v = (y + 0.8) / (0.06 + 0.12 * (u + 1) / 2);
        return (u * u + v * v < 1) || (x * x / 0.02 + (y + 0.8) * (y + 0.8) / 0.008 < 1);
    });
    return ribbon;
}

}  // namespace

PictureGrid CSpecialOccasion::Rows(unsigned count) const {
    const double top = Texts().empty() ? 0.18 : 0.29;
    return PictureGrid::Spaced({0.1 * Width(), top * Height(), 0.8 * Width(), 0.57 * Height()}, count, 1.45,
                               0.5 * Unit());
}

void CSpecialOccasion::FinishPicture(Layer& picture, unsigned /*index*/) const {
    const unsigned thin = Units(0.025);
    m_mounts.Set(picture, Kind(),
                 {ivory,
                  {{thin, darkGold}, {Units(0.07), gold}, {thin, lightGold}, {thin, darkGold}},
                  Units(0.2),
                  Units(0.08),
                  {0, 0, 0, 170}});
}

void CSpecialOccasion::MakeScenery() {
    for (unsigned i = 0; i < colours; ++i) {
        m_balloons[i] = Balloon(Kind(), Units(1.1), feast[i]);
        m_confetti[i] = PlainLayer(Kind(), {Units(0.16), Units(0.1)}, feast[i]);
    }
    m_sparkle = Sparkle(Kind(), Units(1.2));
    m_light = Glow(Kind(), Units(2), {255, 210, 130});
    m_ribbon = Ribbon(Kind(), Units(0.55));
    MakeFrame();
}

void CSpecialOccasion::MakeFrame() {
    const FrameSize menu = MenuSize();
    const unsigned thick = std::min({Units(0.4), menu.width, menu.height});
    // From the screen's edge inwards.
    const Layer profile(1, thick);
    const auto band = [&](Colour colour, double begin, double end, double soft) {
        PaintOver(profile, Kind(), colour, [=](double, double y) { return Band((y + 1) / 2, begin, end, soft); });
    };
    band(wine, -1, 0.42, 0.03);
    band(darkGold, 0.36, 0.8, 0.03);
    band(gold, 0.4, 0.76, 0.03);
    band(lightGold, 0.46, 0.6, 0.14);
    band(gold, 0.9, 0.96, 0.03);
    const auto side = [&](FrameSize size, unsigned left, unsigned top) {
        Layer layer(size.width, size.height);
        const PackedView view = layer.View();
        for (unsigned y = 0; y < size.height; ++y)
            for (unsigned x = 0; x < size.width; ++x) {
                const unsigned column = x + left, row = y + top;
                const unsigned depth = std::min({column, row, menu.width - 1 - column, menu.height - 1 - row});
                view.Row(y)[x] = *profile.View().Row(std::min(depth, thick - 1));
            }
        return layer;
    };
    m_frameTop = side({menu.width, thick}, 0, 0);
    m_frameBottom = side({menu.width, thick}, 0, menu.height - thick);
    m_frameLeft = side({thick, menu.height}, 0, 0);
    m_frameRight = side({thick, menu.height}, menu.width - thick, 0);
}

void CSpecialOccasion::PaintBackground(Canvas& canvas) const {
    PaintGradient(canvas, {92, 18, 54}, {26, 6, 22});
    canvas.LayTransformed(m_light, Placement::Turned({Width() / 2, 0.42 * Height()}, 1.3 * Width(), 1.3 * Height()),
                          70);
    // Lights out of focus: soft discs, larger and fainter towards the edges.
    Layer disc = PlainLayer(Kind(), {Units(2), Units(2)}, {255, 206, 140});
    CutEllipse(disc, 0.12);
    for (unsigned i = 0; i < 26; ++i) {
        const double size = Unit() * (0.4 + 1.5 * Scattered(11, i));
        const Spot at = {Scattered(12, i) * Width(), Scattered(13, i) * Height()};
        canvas.LayTransformed(disc, Placement::Turned(at, size, size), std::uint8_t(12 + 30 * Scattered(14, i)));
    }
}

void CSpecialOccasion::DrawBalloons(Canvas& canvas) const {
    for (unsigned i = 0; i < balloons; ++i) {
        const double near = 0.7 + 0.6 * Scattered(21, i), width = near * Unit() * 1.1, height = 2 * width;
        const double risen = Wrapped(Turns(i % 2 ? 280 : 360) + (i * 5 % balloons + Scattered(22, i)) / balloons);
        const double sway = Wave(Turns(140) + Scattered(23, i));
        // On both sides, so that the middle belongs to the pictures.
        const double x = (i % 2 ? 0.93 : 0.07) + (Scattered(24, i) - 0.5) * 0.1;
        const Spot at = {x * Width() + sway * 0.25 * Unit(), Height() + height / 2 - risen * (Height() + height)};
        canvas.LayTransformed(m_balloons[i % colours], Placement::Turned(at, width, height, 4 * sway));
    }
}

void CSpecialOccasion::DrawPictures(Canvas& canvas) const {
    const std::vector<ShownPicture> pictures = ShownPictures();
    const auto count = unsigned(pictures.size());
    const PictureGrid rows = Rows(count);
    for (const ShownPicture& picture : pictures) {
        const double own = picture.index * 0.382, width = picture.layer.Width(), height = picture.layer.Height();
        const double swing = Wave(Turns(100) + own), t = Wrapped(Phase() - (picture.index + 0.5) / count);
        Spot at = PlaceOf(picture, rows.MiddleOf(picture.index));
        at.x += 0.12 * Unit() * swing;
        at.y += 0.1 * Unit() * Wave(Turns(75) + own);
        const double tail = m_ribbon.Height(), above = at.y + height / 2 + tail, below = Height() - at.y + height / 2;
        // Out at the top, and from below the screen back to its place.
        const double gone = t / 0.1, left = 1 - std::clamp((t - 0.1) / 0.15, 0.0, 1.0);
        // A single one stays, or nothing would be left.
        if (count > 1) at.y += gone < 1 ? -above * gone * gone : below * left * left * left;
        canvas.LayTransformed(m_ribbon,
                              Placement::Turned({at.x - 0.08 * Unit() * swing, at.y + height / 2 + tail * 0.22},
                                                m_ribbon.Width(), tail, -6 * swing),
                              std::uint8_t(picture.opacity * 255));
        Show(canvas, picture, Placement::Turned(at, width, height, 2.2 * swing));
    }
}

void CSpecialOccasion::DrawConfetti(Canvas& canvas, unsigned first, unsigned last) const {
    for (unsigned i = first; i < last; ++i) {
        const double near = 0.6 + 0.4 * Scattered(31, i) + 0.3 * (i >= confettiBehind);
        const double fallen = Wrapped(Turns(260 - 110 * near) + Scattered(32, i));
        const double flutter = Wave(Turns(75) + Scattered(33, i)),
                     flip = Wave(Turns(60) * (1 + i % 2) + Scattered(34, i));
        const Spot at = {Scattered(35, i) * Width() + 0.35 * Unit() * flutter, (1.06 * fallen - 0.03) * Height()};
        const Layer& piece = m_confetti[i % colours];
        canvas.LayTransformed(
            piece,
            Placement::Turned(at, near * piece.Width(), near * piece.Height() * std::max(0.12, flip < 0 ? -flip : flip),
                              360 * Scattered(36, i) + 50 * flutter),
            std::uint8_t(150 + 70 * near));
    }
}

void CSpecialOccasion::DrawFrame(Canvas& canvas) const {
    const FrameSize menu = MenuSize();
    const auto right = std::int32_t(menu.width - m_frameRight.Width());
    const auto bottom = std::int32_t(menu.height - m_frameBottom.Height());
    canvas.Lay(m_frameLeft, 0, 0);
    canvas.Lay(m_frameRight, right, 0);
    canvas.Lay(m_frameTop, 0, 0);
    canvas.Lay(m_frameBottom, 0, bottom);
    // Places along the frame's middle line, each of which lights up once in a while.
    const double inset = 0.23 * Unit(), across = Width() - 2 * inset, down = Height() - 2 * inset;
    for (unsigned i = 0; i < sparkles; ++i) {
        const double lit = std::max(0.0, Wave(Turns(150) + Scattered(41, i)) * 4 - 3);
        double way = (i + 0.6 * Scattered(42, i)) / sparkles * 2 * (across + down);
        const bool far = way > across + down;
        if (far) way -= across + down;
        Spot at = {inset + std::min(way, across), inset + std::max(0.0, way - across)};
        if (far) at = {Width() - at.x, Height() - at.y};
        const double size = m_sparkle.Width() * (0.4 + 0.8 * lit);
        if (lit > 0)
            canvas.LayTransformed(m_sparkle, Placement::Turned(at, size, size, 20 * lit), std::uint8_t(255 * lit));
    }
}

void CSpecialOccasion::DrawScene(Canvas& canvas) {
    DrawBalloons(canvas);
    DrawConfetti(canvas, 0, confettiBehind);
    DrawPictures(canvas);
    DrawConfetti(canvas, confettiBehind, confetti);
    DrawFrame(canvas);
    DrawTexts(canvas);
}

}  // namespace AVBased
