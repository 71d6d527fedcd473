#include "dvd_effects/templates/CBaby.h"

namespace AVBased {

namespace {

constexpr unsigned toys = 26, toysBehind = 20;
constexpr double trainScale = 0.8;

bool IsHeart(double x, double y) {
    const double u = 1.2 * x, v = 0.2 - 1.2 * y, round = u * u + v * v - 1;
    return round * round * round < u * u * v * v * v;
}

// Inside four of the five lines that join the tips, which are cut off round.
bool IsStar(double x, double y) {
    int inside = 0;
    for (int k = 0; k < 5; ++k) inside += x * Wave(k / 5.0) - y * Wave(k / 5.0 + 0.25) < 0.4;
    return inside >= 4 && x * x + y * y < 1;
}

double Disc(double x, double y) { return x * x + y * y < 1; }

Layer Sprite(LayerKind kind, unsigned size, Colour colour, const std::function<double(double, double)>& shown) {
    Layer sprite(size, size);
    PaintOver(sprite, kind, colour, shown);
    return sprite;
}

Layer Bubble(LayerKind kind, unsigned size) {
    Layer bubble = Sprite(kind, size, {255, 255, 255, 150}, [](double x, double y) {
        const double r = x * x + y * y;
        return r < 0.94 ? 0.2 + r * r * r * 0.8 : 0;
    });
    PaintOver(bubble, kind, {255, 255, 255, 230}, [](double x, double y) {
        const double u = (x + y + 0.72) / 0.34, v = (x - y) / 0.2, left = 1 - u * u - v * v;
        return 2 * left;
    });
    return bubble;
}

}  // namespace

const CBaby::Style CBabyGirl::style = {
    .skyTop = {255, 232, 242},
    .skyBottom = {250, 178, 206},
    .cloud = {255, 226, 238},
    .shadow = {168, 62, 112, 120},
    .toy = {240, 106, 156, 210},
    .shape = 1.2,
    .isToy = IsHeart,
    .cut = [](const Layer& layer) { CutEllipse(layer, 0); },
};

const CBaby::Style CBabyBoy::style = {
    .skyTop = {226, 243, 255},
    .skyBottom = {152, 201, 243},
    .cloud = {222, 240, 255},
    .shadow = {36, 84, 148, 120},
    .toy = {255, 214, 92, 225},
    .shape = 1.35,
    .isToy = IsStar,
    .cut = [](const Layer& layer) { RoundCorners(layer, std::min(layer.Width(), layer.Height()) * 0.28); },
};

PictureGrid CBaby::Rows(unsigned count) const {
    // As high with a title as without one, so that texts that come later change no size.
    const double top = Texts().empty() ? 0.17 : 0.29;
    return PictureGrid::Spaced({0.08 * Width(), top * Height(), 0.84 * Width(), 0.61 * Height()}, count, m_style.shape,
                               0.45 * Unit());
}

void CBaby::FinishPicture(Layer& picture, unsigned /*index*/) const {
    constexpr Colour white = {255, 255, 255};
    m_mounts.Set(picture, Kind(),
                 {white, {{Units(0.1), white}}, Units(0.18), Units(0.06), m_style.shadow, m_style.cut});
}

void CBaby::MakeScenery() {
    m_bubble = Bubble(Kind(), Units(1.2));
    m_toy = Sprite(Kind(), Units(0.7), m_style.toy, m_style.isToy);
    m_cloud = Sprite(Kind(), Units(2.6), {255, 255, 255}, Disc);
    m_backCloud = Sprite(Kind(), Units(2.6), m_style.cloud, Disc);
}

void CBaby::PaintBackground(Canvas& canvas) const {
    PaintGradient(canvas, m_style.skyTop, m_style.skyBottom);
    const double unit = Unit();
    for (unsigned row = 0; row * 0.9 < 9.9; ++row)
        for (unsigned column = 0; column * unit * 1.1 < Width() + unit; ++column)
            canvas.LayTransformed(m_cloud,
                                  Placement::Turned({(column + row % 2 * 0.5) * 1.1 * unit, row * 0.9 * Height() / 9},
                                                    0.17 * unit, 0.17 * unit),
                                  120);
    for (const Layer* cloud : {&m_backCloud, &m_cloud}) {
        const bool front = cloud == &m_cloud;
        for (unsigned i = 0; i * unit < Width() + 2 * unit; ++i) {
            const double size = unit * (1.4 + 1.2 * Scattered(5 + front, i));
            const double lift = unit * (front ? 0.25 : 0.6) + unit * 0.35 * Wave(i * (front ? 0.17 : 0.13));
            canvas.LayTransformed(*cloud, Placement::Turned({i * unit, Height() - lift + size * 0.1}, size, size));
        }
    }
}

void CBaby::DrawToys(Canvas& canvas, unsigned first, unsigned last) const {
    for (unsigned i = first; i < last; ++i) {
        // Nothing but bubbles drifts over faces.
        const bool isToy = i % 3 == 1 && i < toysBehind;
        const Layer& layer = isToy ? m_toy : m_bubble;
        const double near = i < toysBehind ? 0.2 + 0.5 * Scattered(1, i) : 0.8 + 0.2 * Scattered(1, i);
        const double size = near * layer.Width(), risen = Wrapped(Turns(460 - 260 * near) + Scattered(2, i));
        const Spot at = {(i + Scattered(3, i)) * 7 / toys * Width(), Height() + size - risen * (Height() + 2 * size)};
        const double sway = Wave(Turns(150) + Scattered(4, i));
        const double x = Wrapped(at.x / Width()) * Width() + sway * 0.3 * Unit();
        canvas.LayTransformed(layer, Placement::Turned({x, at.y}, size, size, isToy ? 14 * sway : 0));
    }
}

void CBaby::DrawScene(Canvas& canvas) {
    DrawToys(canvas, 0, toysBehind);
    DrawPlaything(canvas);
    const std::vector<ShownPicture> pictures = ShownPictures();
    const auto count = unsigned(pictures.size());
    const PictureGrid rows = Rows(count);
    for (const ShownPicture& picture : pictures) {
        const double own = picture.index * 0.382;
        Spot at = PlaceOf(picture, rows.MiddleOf(picture.index));
        at.x += 0.08 * Unit() * Wave(Turns(150) + own + 0.25);
        at.y += 0.16 * Unit() * Wave(Turns(75) + own);
        const double size = count > 1 ? 0.95 + 0.12 * InTurn(Phase(), picture.index, count, 0.6) : 1;
        Show(canvas, picture,
             Placement::Turned(at, picture.layer.Width() * size, picture.layer.Height() * size,
                               2.5 * Wave(Turns(100) + own)));
    }
    DrawToys(canvas, toysBehind, toys);
    DrawTexts(canvas);
}

void CBabyGirl::MakeScenery() {
    CBaby::MakeScenery();
    m_moon = Sprite(Kind(), Units(0.7), {255, 214, 120}, [](double x, double y) {
        return x * x + y * y < 0.96 && (x - 0.5) * (x - 0.5) + (y + 0.16) * (y + 0.16) > 0.66;
    });
    m_string = PlainLayer(Kind(), {4, 4}, {214, 150, 182});
}

void CBabyGirl::DrawMobile(Canvas& canvas, Spot hub, double turns) const {
    constexpr unsigned charms = 5;
    const double unit = Unit();
    const auto tie = [&](Spot from, Spot to) {
        canvas.LayTransformed(m_string, Placement::Along(from, to, std::max(1.0, 0.035 * unit)));
    };
    tie({hub.x, -1}, hub);
    // What hangs on the far side of the ring comes first.
    for (const bool front : {false, true}) {
        for (unsigned i = 0; i < charms; ++i) {
            const double at = turns + double(i) / charms, near = Wave(at);
            if (front != (near >= 0)) continue;
            const Spot arm = {hub.x + 0.95 * unit * Wave(at + 0.25), hub.y + 0.2 * unit * (1 + near)};
            const Spot end = {arm.x, arm.y + (0.55 + 0.3 * Scattered(7, i)) * unit};
            tie(hub, arm);
            tie(arm, end);
            // Flat things that turn about their strings.
            const double size = (0.5 + 0.08 * near) * unit, facing = 0.4 + 0.6 * Wave(0.25 + 0.18 * Wave(at + 0.1 * i));
            const Layer& charm = i % 2 ? m_moon : m_toy;
            canvas.LayTransformed(charm, Placement::Turned({end.x, end.y + 0.4 * size}, facing * size, size));
        }
        if (!front) canvas.LayTransformed(m_cloud, Placement::Turned(hub, 0.26 * unit, 0.26 * unit));
    }
}

void CBabyGirl::DrawPlaything(Canvas& canvas) const {
    DrawMobile(canvas, {1.5 * Unit(), 0.5 * Unit()}, Turns(400));
    DrawMobile(canvas, {Width() - 1.5 * Unit(), 0.4 * Unit()}, 0.13 - Turns(400));
}

void CBabyBoy::MakeScenery() {
    constexpr Colour red{232, 92, 84}, blue{58, 110, 190}, yellow{255, 206, 84}, green{98, 188, 132},
        white{255, 255, 255};
    const auto within = [](double x, double y, double left, double top, double right, double bottom) {
        return x > left && x < right && y > top && y < bottom;
    };
    CBaby::MakeScenery();
    // They run to the right; wheels come below.
    m_engine = Layer(Units(1.5 * trainScale), Units(trainScale));
    PaintOver(m_engine, Kind(), blue, [&](double x, double y) {
        const bool chimney = within(x, y, 0.48, -0.8, 0.68, 0) || within(x, y, 0.42, -0.88, 0.74, -0.7);
        return chimney || within(x, y, -0.95, 0.5, 0.98, 0.72);
    });
    PaintOver(m_engine, Kind(), red, [&](double x, double y) {
        const double u = (x - 0.7) / 0.2, v = (y - 0.12) / 0.42;
        return within(x, y, -0.2, -0.3, 0.7, 0.54) || (x > 0.6 && u * u + v * v < 1) ||
               (within(x, y, -0.92, -0.85, -0.2, 0.54) && !within(x, y, -0.76, -0.62, -0.36, -0.12));
    });
    PaintOver(m_engine, Kind(), yellow, [&](double x, double y) {
        return within(x, y, 0.12, -0.46, 0.3, -0.28) || within(x, y, -0.98, -0.98, -0.12, -0.8);
    });
    constexpr Colour sides[] = {yellow, green, red};
    for (unsigned i = 0; i < wagons; ++i) {
        m_wagons[i] = Layer(Units(1.1 * trainScale), Units(trainScale));
        PaintOver(m_wagons[i], Kind(), blue, [&](double x, double y) { return within(x, y, -1, 0.56, 1, 0.68); });
        PaintOver(m_wagons[i], Kind(), sides[i],
                  [&](double x, double y) { return within(x, y, -0.88, -0.35, 0.88, 0.58); });
        PaintOver(m_wagons[i], Kind(), white,
                  [](double x, double y) { return IsStar(2.4 * x * 1.1, 2.4 * (y - 0.1)); });
    }
    m_wheel = Sprite(Kind(), Units(0.34 * trainScale), blue, Disc);
    PaintOver(m_wheel, Kind(), white, [](double x, double y) {
        const double r = x * x + y * y;
        return r < 0.04 || (r < 0.5 && (x < 0 ? -x : x) < 0.1) || (r < 0.5 && (y < 0 ? -y : y) < 0.1);
    });
}

void CBabyBoy::DrawPlaything(Canvas& canvas) const {
    constexpr unsigned puffs = 9;
    const double unit = trainScale * Unit(), gap = 1.3 * unit, way = Width() + (wagons + 2) * gap;
    const double gone = Wrapped(Turns(600) + 0.35) * way - unit, ground = Height() - 0.1 * unit;
    // Along gentle hills of cloud.
    const auto railAt = [&](double x) { return ground - 0.14 * unit * (1 + Wave(x / (9 * unit))); };
    const auto roll = [&](const Layer& car, double x, std::initializer_list<double> wheels) {
        const double y = railAt(x), slope = railAt(x + 0.5 * unit) - railAt(x - 0.5 * unit);
        canvas.LayTransformed(car, Placement::Towards({x, y - 0.55 * unit}, {unit, slope}, car.Width(), car.Height()));
        for (const double offset : wheels)
            canvas.LayTransformed(
                m_wheel, Placement::Turned({x + offset * unit, railAt(x + offset * unit) - 0.17 * unit},
                                           m_wheel.Width(), m_wheel.Height(), 360 * Wrapped(gone / (1.07 * unit))));
    };
    for (unsigned i = 0; i < puffs; ++i) {
        const double age = Wrapped(Turns(75) + double(i) / puffs), size = (0.2 + 0.45 * age) * unit;
        const Spot at = {gone + 0.42 * unit - 2.6 * age * unit, railAt(gone) - (1.05 + 0.9 * Eased(age)) * unit};
        canvas.LayTransformed(m_cloud, Placement::Turned(at, size, size),
                              ByteOf(0.85 * Between(age, 0, 1, 0.12) * (1 - age)));
    }
    for (unsigned i = wagons; i-- > 0;) roll(m_wagons[i], gone - (i + 1.05) * gap, {-0.32, 0.32});
    roll(m_engine, gone, {-0.48, 0, 0.48});
}

}  // namespace AVBased
