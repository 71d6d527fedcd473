#include "dvd_effects/templates/CFestival.h"

namespace AVBased {

namespace {

constexpr Colour gold = {236, 190, 104}, night = {8, 10, 38};
constexpr Colour fires[] = {{255, 206, 120}, {255, 120, 140}, {130, 220, 255}, {190, 150, 255}, {160, 255, 170}};
constexpr unsigned fireworks = 7, sparks = 34, skyLanterns = 6, swags = 4, bulbs = 9;

double Size(double t) { return t < 0 ? -t : t; }

// (x, y) turned clockwise about the origin, and moved.
Spot Swung(Spot origin, double x, double y, double degrees) {
    const double sine = Wave(degrees / 360), cosine = Wave(degrees / 360 + 0.25);
    return {origin.x + x * cosine - y * sine, origin.y + x * sine + y * cosine};
}

// A barrel of paper, lit from inside, between two rings, with a tassel.
Layer Lantern(LayerKind kind, unsigned width) {
    Layer lantern(width, width * 3 / 2 + 1);
    const auto body = [](double x, double y) {
        const double u = x / 0.94, v = (y + 0.17) / 0.53;
        return u * u + v * v * v * v;
    };
    PaintOver(lantern, kind, gold, [](double x, double y) {
        const bool rings = Size(x) < 0.4 && ((y > -0.78 && y < -0.66) || (y > 0.32 && y < 0.43));
        const bool tassel = y > 0.4 && Size(x) < 0.05 + 0.14 * (y - 0.4) && Size(Wave(x * 9)) > 0.2;
        return rings || tassel || (y < -0.7 && Size(x) < 0.04);
    });
    PaintOver(lantern, kind, {214, 44, 26}, [&](double x, double y) { return body(x, y) < 1; });
    PaintOver(lantern, kind, {255, 196, 92},
              [&](double x, double y) { return body(x, y) < 1 ? 1.05 - 0.95 * body(x * 1.05, y * 0.9 - 0.05) : 0; });
    PaintOver(lantern, kind, {150, 20, 14, 110}, [&](double x, double y) {
        const double v = (y + 0.17) / 0.53, u = x / 0.94 / std::max(0.1, 1 - v * v * v * v * 0.5);
        return body(x, y) < 1 && (Size(Size(u) - 0.34) < 0.03 || Size(Size(u) - 0.74) < 0.03);
    });
    return lantern;
}

}  // namespace

void CFestivalNight::FinishPicture(Layer& picture, unsigned /*index*/) const {
    constexpr Colour dark = {26, 20, 52};
    m_mounts.Set(picture, Kind(),
                 {dark, {{Units(0.05), dark}, {Units(0.025), gold}}, Units(0.16), Units(0.05), {0, 0, 10, 190}});
}

void CFestivalNight::MakeScenery() {
    for (unsigned i = 0; i < colours; ++i) m_sparks[i] = Glow(Kind(), Units(0.3), fires[i]);
    m_star = Glow(Kind(), Units(0.2), {255, 252, 236});
    m_halo = Glow(Kind(), Units(1.6), {255, 158, 66});
    m_lantern = Lantern(Kind(), Units(0.6));
    m_string = PlainLayer(Kind(), {4, 4}, {206, 160, 92});
}

void CFestivalNight::PaintBackground(Canvas& canvas) const {
    PaintGradient(canvas, {5, 8, 34}, {58, 44, 112});
    canvas.LayTransformed(m_halo, Placement::Turned({0.5 * Width(), Height()}, 1.7 * Width(), 0.9 * Height()), 110);
    for (unsigned i = 0; i < 150; ++i) {
        const double high = Scattered(52, i), size = Unit() * (0.05 + 0.13 * Scattered(53, i) * Scattered(54, i));
        canvas.LayTransformed(m_star,
                              Placement::Turned({Scattered(51, i) * Width(), high * 0.75 * Height()}, size, size),
                              std::uint8_t(60 + 180 * (1 - high)));
    }
    Layer hills(canvas.Width(), Units(1.6));
    for (const bool front : {false, true})
        PaintOver(hills, Kind(), front ? Colour{6, 6, 22} : Colour{26, 22, 62}, [&](double x, double y) {
            const double wave = front ? 0.3 * Wave(x * 0.31 + 0.2) + 0.12 * Wave(x * 0.83) + 0.35
                                      : 0.4 * Wave(x * 0.4 + 0.55) + 0.1 * Wave(x * 1.3) - 0.35;
            return y > wave;
        });
    canvas.Lay(hills, 0, std::int32_t(canvas.Height()) - std::int32_t(hills.Height()));
    for (unsigned i = 0; i < 34; ++i) {
        const double size = Unit() * (0.05 + 0.06 * Scattered(57, i));
        const Spot at = {Scattered(55, i) * Width(), Height() - Unit() * (0.05 + 0.3 * Scattered(56, i))};
        canvas.LayTransformed(m_sparks[0], Placement::Turned(at, 3 * size, 3 * size), 150);
    }
}

void CFestivalNight::DrawString(Canvas& canvas, Spot from, Spot to) const {
    canvas.LayTransformed(m_string, Placement::Along(from, to, std::max(1.0, 0.02 * Unit())), 200);
}

Spot CFestivalNight::OnLine(double x, double y) const {
    const double s = x / Width();
    return {x, y + (1.2 * s * (1 - s) - 0.2) * Unit()};
}

void CFestivalNight::DrawLine(Canvas& canvas, double y) const {
    constexpr unsigned pieces = 12;
    const auto place = [&](unsigned i) { return OnLine(i * Width() / pieces, y); };
    for (unsigned i = 0; i < pieces; ++i) DrawString(canvas, place(i), place(i + 1));
}

void CFestivalNight::DrawLight(Canvas& canvas, Spot at, double width, double height, double light) const {
    if (light <= 0) return;
    canvas.LayTransformed(m_halo, Placement::Turned(at, width, height),
                          std::uint8_t(255 * std::clamp(light, 0.0, 1.0)));
}

void CFestivalNight::DrawLantern(Canvas& canvas, Spot hook, double height, double degrees, double own) const {
    const double flicker = 0.55 + 0.12 * Wave(Turns(25) + own) + 0.08 * Wave(Turns(37) + 3 * own);
    const Spot middle = Swung(hook, 0, height / 2, degrees);
    DrawLight(canvas, middle, 2 * height, 2 * height, flicker);
    canvas.LayTransformed(m_lantern, Placement::Turned(middle, height * 2 / 3, height, degrees));
}

CFestivalNight::Pendulum CFestivalNight::Hang(const ShownPicture& picture, Spot rest, double own) const {
    return {{rest.x, -1.2 * Unit()},       rest.y + 1.2 * Unit(),          1.5 * Wave(Turns(110) + own),
            double(picture.layer.Width()), double(picture.layer.Height()), own};
}

Spot CFestivalNight::Pendulum::At(double x, double y) const {
    return Swung(pivot, x * width, length + y * height, degrees);
}

void CFestivalNight::DrawHangers(Canvas& canvas, const Pendulum& hung) const {
    for (const double side : {-0.36, 0.36}) {
        const double x = hung.pivot.x + 0.8 * side * hung.width;
        DrawString(canvas, hung.line < 0 ? Spot{x, hung.pivot.y} : OnLine(x, hung.line), hung.At(side, -0.4));
    }
    // The picture's layer has room for a shadow below its rim.
    const Spot hook = hung.At(0, 0.5 - 0.24 * Unit() / hung.height);
    DrawLantern(canvas, hook, 0.72 * Unit(), 5 * Wave(Turns(110) + hung.own - 0.12), hung.own);
}

void CFestivalNight::ShowHung(Canvas& canvas, const ShownPicture& picture, const Pendulum& hung, double opacity) const {
    Show(canvas, picture, Placement::Turned(hung.At(0, 0), hung.width, hung.height, hung.degrees), opacity);
}

void CFestivalNight::DrawFirework(Canvas& canvas, unsigned index, double t) const {
    const Spot centre = {(0.08 + 0.84 * Wrapped(index * 0.382 + 0.1)) * Width(),
                         (0.14 + 0.3 * Scattered(61, index)) * Height()};
    const Layer& fire = m_sparks[index % colours];
    const double thin = 0.1 * Unit();
    if (t < 0) {
        const auto way = [&](double part) {
            return Spot{centre.x, Mixed(Height(), centre.y, 1 - (1 - part) * (1 - part))};
        };
        canvas.LayTransformed(m_star, Placement::Along(way(std::max(0.0, t + 0.85)), way(t + 1), thin), 180);
        return;
    }
    if (t < 0.25) DrawLight(canvas, centre, (1 + 14 * t) * Unit(), (1 + 14 * t) * Unit(), 0.8 - 3.2 * t);
    const double reach = (1.5 + 0.9 * Scattered(62, index)) * Unit();
    for (unsigned i = 0; i < sparks; ++i) {
        const bool inner = i % 3 == 2;
        const double turn = (i + 0.5 * Scattered(63 + index, i)) / sparks;
        const double far = reach * (inner ? 0.35 + 0.25 * Scattered(71, i) : 0.85 + 0.15 * Scattered(72, i));
        const auto way = [&](double s) {
            const double left = 1 - s, part = 1 - left * left * left;
            return Spot{centre.x + far * part * Wave(turn),
                        centre.y + far * part * Wave(turn + 0.25) + 0.7 * Unit() * s * s};
        };
        const double light = std::min(1.0, 1.8 * (1 - t));
        canvas.LayTransformed(inner ? m_star : fire, Placement::Along(way(std::max(0.0, t - 0.22)), way(t), thin),
                              std::uint8_t(255 * light));
        const Spot tip = way(t);
        canvas.LayTransformed(m_star, Placement::Turned(tip, 1.3 * thin, 1.3 * thin), std::uint8_t(230 * light));
    }
}

void CFestivalNight::DrawFireworks(Canvas& canvas) const {
    constexpr double rise = 0.09, life = 0.24;
    for (unsigned i = 0; i < fireworks; ++i) {
        const double t = Wrapped(Turns(300) - double(i) / fireworks);
        if (t < rise)
            DrawFirework(canvas, i, t / rise - 1);
        else if (t < rise + life)
            DrawFirework(canvas, i, (t - rise) / life);
    }
}

void CFestivalNight::DrawSkyLanterns(Canvas& canvas) const {
    for (unsigned i = 0; i < skyLanterns; ++i) {
        const double near = 0.35 + 0.3 * Scattered(81, i), height = near * Unit();
        const double risen = Wrapped(Turns(420) + (i + Scattered(82, i)) / skyLanterns);
        const Spot at = {(Wrapped(i * 0.618 + 0.15)) * Width() + 0.3 * Unit() * Wave(Turns(200) + Scattered(83, i)),
                         Height() + 2 * height - risen * (Height() + 4 * height)};
        DrawLantern(canvas, at, height, 3 * Wave(Turns(120) + Scattered(84, i)), Scattered(85, i));
    }
}

void CFestivalNight::DrawBulbs(Canvas& canvas) const {
    const auto place = [&](unsigned i) {
        const double s = double(i % bulbs) / bulbs;
        return Spot{double(i) / (swags * bulbs) * Width(), (0.06 + 1.5 * s * (1 - s)) * Unit()};
    };
    for (unsigned i = 0; i < swags * bulbs; ++i) {
        DrawString(canvas, place(i), place(i + 1));
        const double light = 0.62 + 0.38 * Wave(Turns(75) + i * 0.382), size = 0.34 * Unit();
        const Spot at = {place(i).x, place(i).y + 0.06 * Unit()};
        canvas.LayTransformed(m_sparks[i % 2 ? 0 : 1 + i / 2 % 4], Placement::Turned(at, size, size),
                              std::uint8_t(255 * light));
        canvas.LayTransformed(m_star, Placement::Turned(at, size / 2, size / 2), std::uint8_t(255 * light));
    }
}

void CFestivalNight::DrawScene(Canvas& canvas) {
    DrawFireworks(canvas);
    DrawSkyLanterns(canvas);
    DrawPictures(canvas);
    DrawBulbs(canvas);
    DrawTexts(canvas);
}

PictureGrid CFestival::Rows(unsigned count) const {
    const double top = Texts().empty() ? 0.17 : 0.285;
    return PictureGrid::Spaced({0.08 * Width(), top * Height(), 0.84 * Width(), 0.57 * Height()}, count, 1.5,
                               0.85 * Unit());
}

void CFestival::DrawPictures(Canvas& canvas) {
    const std::vector<ShownPicture> pictures = ShownPictures();
    const PictureGrid rows = Rows(unsigned(pictures.size()));
    const double line = rows.MiddleOf(0).y - rows.CellSize().height / 2.0 - 0.25 * Unit();
    const auto hang = [&](const ShownPicture& picture) {
        Pendulum hung = Hang(picture, PlaceOf(picture, rows.MiddleOf(picture.index)), picture.index * 0.382);
        if (!HasPlaces()) hung.line = line;
        return hung;
    };
    if (!HasPlaces() && !pictures.empty()) DrawLine(canvas, line);
    for (const ShownPicture& picture : pictures) DrawHangers(canvas, hang(picture));
    for (const ShownPicture& picture : pictures) ShowHung(canvas, picture, hang(picture));
}

PictureGrid CFestivalSub::Rows(unsigned count) const {
    constexpr unsigned inRow = 4;
    constexpr double shape = 1.45;
    const unsigned lines = std::max(1u, (count + inRow - 1) / inRow),
                   columns = std::max(1u, (count + lines - 1) / lines);
    const double width = 0.86 * Width(), gap = 0.5 * Unit(), top = (Texts().empty() ? 0.3 : 0.36) * Height();
    // No higher than so many lines need, or the pictures would make more of them.
    const double fitting = lines * ((width - gap * (columns - 1)) / columns / shape + gap) - gap;
    const double most = 0.48 * Height(), height = std::clamp(fitting, 0.0, most);
    return PictureGrid::Spaced({0.07 * Width(), top + (most - height) / 2, width, height}, count, shape, gap);
}

void CFestivalSub::DrawLines(Canvas& canvas, const PictureGrid& rows) const {
    unsigned index = 0;
    for (unsigned row = 0; row < rows.Rows(); ++row) {
        while (rows.RowOf(index) < row) ++index;
        const double y = rows.MiddleOf(index).y - rows.CellSize().height / 2.0 - 0.3 * Unit();
        DrawLine(canvas, y);
        for (const bool right : {false, true})
            DrawLantern(canvas, {(right ? 0.965 : 0.035) * Width(), y - 0.14 * Unit()}, 0.9 * Unit(),
                        5 * Wave(Turns(110) + 0.3 * right), 0.4 * right);
    }
}

void CFestivalSub::DrawPictures(Canvas& canvas) {
    const std::vector<ShownPicture> pictures = ShownPictures();
    const auto count = unsigned(pictures.size());
    const PictureGrid rows = Rows(count);
    if (!HasPlaces() && count) DrawLines(canvas, rows);
    // Those in their turn stand before the others.
    for (const bool lit : {false, true})
        for (const ShownPicture& picture : pictures) {
            const double light = InTurn(Phase(), picture.index, count, 0.4);
            if (lit != (light > 0)) continue;
            const Spot at = PlaceOf(picture, rows.MiddleOf(picture.index));
            const double size = 0.94 + 0.3 * light;
            const double width = size * picture.layer.Width(), height = size * picture.layer.Height();
            DrawLight(canvas, at, 1.5 * width, 1.7 * height, light);
            Show(canvas, picture,
                 Placement::Turned(at, width, height, (1 - light) * 1.6 * Wave(Turns(110) + picture.index * 0.382)),
                 Mixed(0.82, 1, light));
        }
}

FrameSize CFestivalInstruction::UsualBox() const {
    return PictureGrid::Spaced({0, 0, 0.27 * Width(), 0.5 * Height()}, 1, 1.1, 0).CellSize();
}

void CFestivalInstruction::MakeScenery() {
    CFestivalNight::MakeScenery();
    const FrameSize menu = MenuSize();
    const FrameSize size{std::max(1u, menu.width * 11 / 20), std::max(1u, menu.height * 7 / 10)};
    m_panel = PlainLayer(Kind(), size, InMood({night.red, night.green, night.blue, 205}));
    const unsigned inset = Units(0.16), thin = Units(0.02);
    if (std::min(size.width, size.height) > 4 * inset) {
        const FrameSize inner{size.width - 2 * inset, size.height - 2 * inset};
        const Layer across = PlainLayer(Kind(), {inner.width, thin}, gold);
        const Layer down = PlainLayer(Kind(), {thin, inner.height}, gold);
        LayOver(m_panel, across, inset, inset);
        LayOver(m_panel, across, inset, size.height - inset - thin);
        LayOver(m_panel, down, inset, inset);
        LayOver(m_panel, down, size.width - inset - thin, inset);
    }
    RoundCorners(m_panel, 0.25 * Unit());
    m_keys.Make(Kind(), Units(1.7), {InMood({44, 34, 84}), IsLight() ? night : gold, gold});
}

void CFestivalInstruction::DrawPictures(Canvas& canvas) {
    const double left = 0.4 * Width(), top = 0.17 * Height();
    canvas.Lay(m_panel, std::int32_t(left), std::int32_t(top));
    // Buttons have room at the panel's end.
    const Region panel = Region{left, top, 0.55 * Width(), 0.765 * Height() - top}.Shrunk(0.5 * Unit(), 0);
    m_keys.Draw(canvas, BelowTexts(Texts(), panel), Phase());
    bool isHung = false;
    ShowInTurn(0.25, [&](const ShownPicture& picture, double opacity) {
        const Pendulum hung = Hang(picture, PlaceOf(picture, {0.2 * Width(), 0.47 * Height()}), 0);
        if (!isHung) DrawHangers(canvas, hung);
        isHung = true;
        ShowHung(canvas, picture, hung, opacity);
    });
}

}  // namespace AVBased
