#include "dvd_effects/templates/CStacking.h"

#include "dvd_effects/templates/scenery.h"

namespace AVBased {

namespace {

// Parts of the loop: until then all have set out; from then on the pile is swept; and how long each one takes.
constexpr double lastStart = 0.66, slideTime = 0.11, firstSweep = 0.86, lastSweep = 0.91, sweepTime = 0.09;

double OrderOf(unsigned index, unsigned count) { return count > 1 ? double(index) / (count - 1) : 0; }
// Where a photograph comes from: clockwise from the left, each from the side opposite to the last one but one.
Spot SideOf(unsigned index) {
    constexpr Spot sides[] = {{-1.1, 0.15}, {1.1, -0.15}, {0.25, -1.2}, {-0.25, 1.2}};
    return sides[index % 4];
}

}  // namespace

void CStacking::PaintBackground(Canvas& canvas) const {
    constexpr Tint lit{104, 128, 138}, dark{17, 25, 35};
    Paint(canvas, Kind(), [&](double x, double y) {
        const double fromMiddleX = x / Width() - 0.5, fromMiddleY = y / Height() - 0.46;
        const double light = Eased(1 - 1.9 * (fromMiddleX * fromMiddleX + fromMiddleY * fromMiddleY));
        // Threads across and down.
        const double scale = 500 / Height();
        const double weave = Noise(1, x * scale, y * scale * 0.15) + Noise(2, x * scale * 0.15, y * scale);
        return Mixed(dark, lit, light) * (0.88 + 0.12 * weave);
    });
}

CPhotographs::Pose CStacking::At(double phase, const ShownPicture& picture, unsigned count, const Region& stage) const {
    const unsigned i = picture.index;
    const double order = OrderOf(i, count), starts = order * lastStart, sweeps = Mixed(lastSweep, firstSweep, order);
    const double height = std::min(0.7 * Height(), 0.9 * stage.height);
    const double scale =
        ScaleOf(picture, std::min(0.5 * Width() / picture.layer.Width(), height / picture.layer.Height()));
    const Spot usual = stage.At(0.5 + 0.1 * (Scattered(1, i) - 0.5), 0.5 + 0.08 * (Scattered(2, i) - 0.5));
    Pose rest =
        Within(stage, picture, {PlaceOf(picture, usual, scale), scale, (i % 2 ? 1 : -1) * (2 + 8 * Scattered(3, i))});
    if (phase < starts || phase >= sweeps + sweepTime) return {rest.centre, rest.scale, 0, 0, 0};
    // Whatever lands on it pushes it a little further.
    for (unsigned above = i + 1; above < count; ++above) {
        const double lands = OrderOf(above, count) * lastStart + 0.5 * slideTime;
        const double pushed = Passed(phase, lands, lands + 0.6 * slideTime);
        rest.centre.x -= 0.012 * Height() * pushed * SideOf(above).x;
        rest.centre.y -= 0.012 * Height() * pushed * SideOf(above).y;
        rest.degrees += (above % 2 ? 1.2 : -1.2) * pushed;
    }
    Pose away = rest;
    if (phase >= sweeps) {
        const double gone = (phase - sweeps) / sweepTime;
        away.centre = {1.7 * Width(), rest.centre.y + 0.25 * (Scattered(4, i) - 0.5) * Height()};
        away.degrees += 30 + 25 * Scattered(5, i);
        return PoseBetween(rest, away, gone * gone);
    }
    const Spot side = SideOf(i);
    away.centre.x += side.x * Width();
    away.centre.y += side.y * Height();
    away.degrees += (i % 2 ? 1 : -1) * 40;
    away.scale *= 1.25;
    away.lift = 1;
    const double left = std::max(0.0, 1 - (phase - starts) / slideTime);
    return PoseBetween(rest, away, left * left * left);
}

void CStacking::DrawScene(Canvas& canvas) {
    const std::vector<ShownPicture> pictures = ShownPictures();
    const Region stage = FreeRegion();
    Pile pile;
    for (const ShownPicture& picture : pictures)
        ShowPhotograph(pile, picture, At(Phase(), picture, unsigned(pictures.size()), stage));
    pile.Draw(canvas);
    DrawTexts(canvas);
}

}  // namespace AVBased
