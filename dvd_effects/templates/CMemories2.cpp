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

void CMemories2::DrawScene(Canvas& canvas) {
    const std::vector<ShownPicture> pictures = ShownPictures();
    const auto count = unsigned(pictures.size());
    const Region stage = FreeRegion();
    const PictureRows rows = RowsOf(pictures, stage, 0.03 * Height());
    // By how far they have come forward.
    std::multimap<double, unsigned> order;
    for (unsigned i = 0; i < count; ++i) order.emplace(ForwardInTurn(Phase(), i, count, away, ramp), i);
    Pile pile;
    for (const auto& [forward, i] : order) {
        const Layer& picture = pictures[i].layer;
        const Region& cell = rows[i];
        const Spot usual = cell.At(0.46 + 0.08 * Scattered(1, i), 0.46 + 0.08 * Scattered(2, i));
        const double scale = ScaleOf(pictures[i], 0.96 * cell.ScaleOf(picture.Width(), picture.Height()));
        const Pose lying =
            Within(stage, pictures[i],
                   {PlaceOf(pictures[i], usual, scale), scale, (i % 2 ? 1 : -1) * (1.5 + 5 * Scattered(3, i))});
        const Region front{0, 0, forwardAcross * Width(), std::min(forwardDown * Height(), stage.height)};
        const Pose held{stage.Middle(), std::max(lying.scale, front.ScaleOf(picture.Width(), picture.Height())), 0, 1};
        ShowPhotograph(pile, pictures[i], PoseBetween(lying, held, forward));
    }
    pile.Draw(canvas);
    DrawTexts(canvas);
}

}  // namespace AVBased
