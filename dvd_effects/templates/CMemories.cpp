#include "dvd_effects/templates/CMemories.h"

#include "dvd_effects/templates/scenery.h"

namespace AVBased {

namespace {

// How much larger than its cell a photograph is: they overlap.
constexpr double overlap = 1.2;
// Parts of the loop: until then all have fallen; from then on they lift off; and how long each one takes.
constexpr double lastFall = 0.46, firstLift = 0.8, lastLift = 0.93, fallTime = 0.09, liftTime = 0.07, settleTime = 0.08;

}  // namespace

FrameSize CMemories::UsualBox() const { return BoxInRows(); }

void CMemories::MakeScenery() {
    CPhotographs::MakeScenery();
    constexpr Tint sun{255, 226, 170}, moon{176, 204, 255}, shade{112, 84, 58};
    constexpr unsigned across = 96, down = 72;
    m_light = Layer(across, down);
    // Two panes by two, whose bars throw soft shadows. On a bright table these alone can be seen.
    Paint(m_light, Kind(), [&](double x, double y) {
        const double right = x / across, below = y / down;
        const double pane =
            Between(Wrapped(2 * right), 0.04, 0.96, 0.14) * Between(Wrapped(2 * below), 0.06, 0.94, 0.16);
        Tint tint = !MoodColoursSet() ? sun : IsLight() ? shade : moon;
        tint.alpha = IsLight() ? 80 * (1 - pane) * Between(right, 0, 1, 0.2) * Between(below, 0, 1, 0.2) : 60 * pane;
        return tint;
    });
}

// It wanders over the table, brighter and paler as clouds pass.
void CMemories::DrawLight(Canvas& canvas) const {
    const double shift = 0.07 * Wave(Phase());
    const auto at = [&](double x, double y) { return Spot{(x + shift) * Width(), y * Height()}; };
    canvas.LayTransformed(m_light, {at(0.46, 0.06), at(0.84, 0), at(0.92, 0.64), at(0.54, 0.7)},
                          ByteOf(0.72 + 0.28 * Wave(2 * Phase() + 0.6)));
}

void CMemories::PaintBackground(Canvas& canvas) const {
    Paint(canvas, Kind(), [&](double x, double y) {
        const double fromLightX = x / Width() - 0.42, fromLightY = y / Height() - 0.36;
        const double light = 1.25 - 1.5 * (fromLightX * fromLightX + fromLightY * fromLightY);
        return Wood(x / Height(), y / Height()) * std::max(0.25, light);
    });
}

CPhotographs::Pose CMemories::Resting(const ShownPicture& picture, const Region& cell, const Region& stage) const {
    const unsigned i = picture.index;
    const double size = std::min(overlap, 0.66 * Height() / cell.height);
    const double scale = ScaleOf(picture, cell.ScaleOf(picture.layer.Width(), picture.layer.Height()) * size);
    const Spot usual = cell.At(0.38 + 0.24 * Scattered(1, i), 0.4 + 0.2 * Scattered(2, i));
    return Within(stage, picture,
                  {PlaceOf(picture, usual, scale), scale, (i % 2 ? 1 : -1) * (3 + 11 * Scattered(3, i))});
}

CPhotographs::Pose CMemories::At(double phase, unsigned index, unsigned count, const Pose& rest, double height) const {
    const double order = count > 1 ? double(index) / (count - 1) : 0;
    const double falls = order * lastFall, lands = falls + fallTime, lifts = Mixed(lastLift, firstLift, order);
    if (phase < falls || phase >= lifts + liftTime) return {rest.centre, 1, 0, 0, 0};
    Pose above = rest;
    above.scale *= 1.9;
    above.lift = 2;
    above.degrees += (index % 2 ? -1 : 1) * (25 + 20 * Scattered(4, index));
    above.centre.y = -height;
    above.centre.x += (Scattered(5, index) - 0.5) * 0.4 * Width();
    if (phase >= lifts) {
        const double gone = (phase - lifts) / liftTime;
        return PoseBetween(rest, above, gone * gone);
    }
    // It glides down and rocks until it lies.
    const double left = std::max(0.0, 1 - (phase - falls) / fallTime);
    Pose pose = PoseBetween(rest, above, left * left * left);
    const double rocking = std::clamp(1 - (phase - lands) / settleTime, 0.0, 1.0);
    if (phase > lands) pose.degrees += 8 * (1 - rocking) * rocking * rocking * Wave(1.5 * (1 - rocking));
    return pose;
}

void CMemories::DrawScene(Canvas& canvas) {
    const std::vector<ShownPicture> pictures = ShownPictures();
    const auto count = unsigned(pictures.size());
    const Region stage = FreeRegion();
    const PictureRows heap = RowsOf(pictures, stage.Shrunk(0.02 * stage.width, 0.04 * stage.height), 0);
    Pile pile;
    for (const ShownPicture& picture : pictures) {
        const Pose rest = Resting(picture, heap[picture.index], stage);
        const double longest = std::max(picture.layer.Width(), picture.layer.Height()) * rest.scale;
        ShowPhotograph(pile, picture, At(Phase(), picture.index, count, rest, 1.5 * longest));
    }
    pile.Draw(canvas);
    DrawLight(canvas);
    DrawTexts(canvas);
}

}  // namespace AVBased
