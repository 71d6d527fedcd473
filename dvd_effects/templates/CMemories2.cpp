#include "dvd_effects/templates/CMemories2.h"

#include <map>

#include "dvd_effects/templates/scenery.h"

namespace AVBased {

namespace {

// Of the menu's sides: how large a photograph is that has come forward.
constexpr double forwardAcross = 0.42, forwardDown = 0.56;
// How long a photograph is away, in turns; the next one rises while it returns.
constexpr double away = 1.08, ramp = 0.36;

// An open book whose covers show around its pages, in a square of 2 by 2 about its middle; none beside it.
Tint Album(double x, double y, double pixel) {
    constexpr Tint page{98, 86, 76}, cover{92, 26, 30};
    const double fromSpine = x < 0 ? -x : x, fromMiddle = y < 0 ? -y : y;
    const double outside = std::max(fromSpine, fromMiddle);
    if (outside > 1) return {0, 0, 0, 110 * Eased(1 - (outside - 1) / 0.06)};
    const double edge = std::max(fromSpine - 0.975, fromMiddle - 0.955);
    if (edge > 0) return cover * (0.8 + 0.5 * Noise(3, x * 60, y * 60));
    // The sheets bend down towards the spine; a fold and fibres.
    const double bend = Eased(fromSpine / 0.16), fold = fromSpine < pixel ? 0.4 : 1;
    const double fibres = 1 + 0.09 * Noise(5, x * 90, y * 50) - 0.12 * fromSpine * fromMiddle;
    return page * ((0.55 + 0.45 * bend) * fold * fibres * (edge > -0.012 ? 0.9 : 1));
}

}  // namespace

FrameSize CMemories2::UsualBox() const {
    const double smaller = 1 / (1 + 0.08 * std::max(0, int(SourceCount()) - 4));
    return PartOfMenu(forwardAcross * std::max(0.5, smaller), forwardDown * std::max(0.5, smaller));
}

void CMemories2::PaintBackground(Canvas& canvas) const {
    Paint(canvas, Kind(), [&](double x, double y) {
        const double across = (2 * x / Width() - 1) / 0.95, down = (2 * y / Height() - 1) / 0.93;
        const Tint album = Album(across, down, 2 / Width());
        const Tint wood = Wood(x / Height(), y / Height()) * 0.9;
        const double light = 1.06 - 0.14 * (across * across + down * down);
        Tint tint = Mixed(wood, album, album.alpha / 255) * light;
        tint.alpha = 255;
        return tint;
    });
}

void CMemories2::MakeScenery() {
    CPhotographs::MakeScenery();
    m_paper = PlainLayer(Kind(), {1, 1}, IsLight() ? Colour{255, 255, 255, 150} : Colour{232, 222, 204, 44});
    m_corner = Layer(24, 24);
    PaintOver(m_corner, Kind(), IsLight() ? Colour{104, 78, 58} : InMood({52, 36, 30}),
              [](double x, double y) { return x + y < 0 ? 1.0 : 0.0; });
}

// Where a photograph has its place: paper that no light has reached, and the corners that hold it.
void CMemories2::Mark(Pile& pile, const Placement& at) const {
    pile.Put(m_paper, at, 255);
    const Spot corners[] = {at.topLeft, at.topRight, at.bottomRight, at.bottomLeft};
    const double shorter = std::min(Distance(corners[0], corners[1]), Distance(corners[1], corners[2]));
    const double side = 0.2 * shorter, out = 0.035 * shorter;
    for (unsigned i = 0; i < 4; ++i) {
        const Spot own = corners[i], next = corners[(i + 1) % 4], last = corners[(i + 3) % 4];
        const auto towards = [own](Spot to) {
            const double length = std::max(1e-6, Distance(own, to));
            return Spot{(to.x - own.x) / length, (to.y - own.y) / length};
        };
        const Spot along = towards(next), down = towards(last);
        const auto place = [&](double a, double d) {
            return Spot{own.x + a * along.x + d * down.x, own.y + a * along.y + d * down.y};
        };
        const double end = side - out;
        pile.Put(m_corner, {place(-out, -out), place(end, -out), place(end, end), place(-out, end)}, 255);
    }
}

void CMemories2::DrawScene(Canvas& canvas) {
    const std::vector<ShownPicture> pictures = ShownPictures();
    const auto count = unsigned(pictures.size());
    const Region stage = FreeRegion();
    const PictureRows rows = RowsOf(pictures, stage, 0.03 * Height());
    // By how far they have come forward.
    std::multimap<double, unsigned> order;
    for (unsigned i = 0; i < count; ++i) order.emplace(ForwardInTurn(Phase(), i, count, away, ramp), i);
    Pile pile;
    std::vector<Pose> places;
    for (unsigned i = 0; i < count; ++i) {
        const Layer& picture = pictures[i].layer;
        const Region& cell = rows[i];
        const Spot usual = cell.At(0.46 + 0.08 * Scattered(1, i), 0.46 + 0.08 * Scattered(2, i));
        const double scale = ScaleOf(pictures[i], 0.92 * cell.ScaleOf(picture.Width(), picture.Height()));
        const Pose& lying = places.emplace_back(
            Within(stage, pictures[i],
                   {PlaceOf(pictures[i], usual, scale), scale, (i % 2 ? 1 : -1) * (1.5 + 5 * Scattered(3, i))}));
        Mark(pile, Placement::Turned(lying.centre, picture.Width() * lying.scale, picture.Height() * lying.scale,
                                     lying.degrees));
    }
    for (const auto& [forward, i] : order) {
        const Layer& picture = pictures[i].layer;
        const Pose& lying = places[i];
        const Region front{0, 0, forwardAcross * Width(), std::min(forwardDown * Height(), stage.height)};
        const Pose held{stage.Middle(), std::max(lying.scale, front.ScaleOf(picture.Width(), picture.Height())), 0, 1};
        ShowPhotograph(pile, pictures[i], PoseBetween(lying, held, forward));
    }
    pile.Draw(canvas);
    DrawTexts(canvas);
}

}  // namespace AVBased
