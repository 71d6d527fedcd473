#include "dvd_effects/templates/CBaby.h"

namespace AVBased {

namespace {

constexpr unsigned toys = 26, toysBehind = 20;

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
        const bool isToy = i % 3 == 1;
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

}  // namespace AVBased
