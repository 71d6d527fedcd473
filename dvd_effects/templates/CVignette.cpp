#include "dvd_effects/templates/CVignette.h"

#include "dvd_effects/canvas/painting.h"

namespace AVBased {

namespace {

constexpr double dissolve = 0.3;  // of a turn

}  // namespace

void CVignette::FinishPicture(Layer& picture, unsigned) const { CutEllipse(picture, 0.38); }

void CVignette::PaintBackground(Canvas& canvas) const {
    const FrameSize size{canvas.Width(), canvas.Height()};
    const Layer ground(size.width, size.height), glow = PlainLayer(Kind(), size, {118, 62, 58, 200});
    FillGradient(ground, Kind(), {34, 16, 22}, {12, 6, 10});
    CutEllipse(glow, 1);
    canvas.Lay(ground, 0, 0);
    canvas.Lay(glow, 0, -std::int32_t(size.height / 12));
}

void CVignette::DrawScene(Canvas& canvas) {
    std::vector<ShownPicture> pictures = ShownPictures();
    const auto count = unsigned(pictures.size());
    const Turn turn = TurnAt(Phase(), count);
    HandOverNames(pictures, turn, dissolve);
    if (count) {
        // The old picture goes after the new one has come: so it does not darken between them.
        const double begun = (turn.part - (1 - dissolve)) / dissolve;
        ShowLarge(canvas, pictures[turn.index], (turn.part + dissolve) / (1 + dissolve), 1 - Passed(begun, 0.4, 1));
        if (begun > 0)
            ShowLarge(canvas, pictures[turn.Next()], begun * dissolve / (1 + dissolve), Passed(begun, 0, 0.6));
    }
    // A single one needs none below it.
    for (const ShownPicture& picture : pictures)
        if (count > 1) ShowSmall(canvas, picture, turn, turn.ShareOf(picture.index, dissolve));
    DrawTexts(canvas);
}

// At `part` of its time on the screen.
void CVignette::ShowLarge(Canvas& canvas, const ShownPicture& picture, double part, double opacity) const {
    constexpr double largest = 1.04;
    const double rowTop = SourceCount() > 1 ? 0.81 : 0.96;
    const double side = picture.index % 2 ? 1 : -1, width = picture.layer.Width(), height = picture.layer.Height();
    Spot centre{0.5 * Width(), 0.41 * Height()};
    double zoom = largest - 0.07 * (1 - part);
    if (!Texts().empty()) {
        Region stage = FreeRegion(0).Shrunk(0, 0.02 * Height());
        stage.height = std::max(1.0, std::min(stage.height, rowTop * Height() - stage.top));
        zoom *= std::min(1.0, stage.ScaleOf(width * largest, height * largest));
        centre = stage.Middle();
    }
    centre.x += Width() * side * 0.02 * (part * 2 - 1);
    Show(canvas, picture, Placement::Turned(centre, width * zoom, height * zoom), opacity);
}

// Ovals of one height side by side. Of too many for that, the row shows those about the one that is shown, and moves on
// with it.
void CVignette::ShowSmall(Canvas& canvas, const ShownPicture& picture, const Turn& turn, double share) const {
    constexpr double heightOfRow = 0.14, spacing = 1.12, farthest = 0.9, least = 0.8;
    constexpr unsigned most = 7;
    const unsigned inRow = std::min(turn.count, most);
    const double step = std::min(heightOfRow * spacing * Height() * 16 / 9, farthest * Width() / inRow);
    double place = picture.index + 0.5 - turn.count / 2.0, shown = 1;
    if (turn.count > most) {
        const double half = turn.count / 2.0,
                     ahead = double(picture.index) - turn.index - (1 - turn.ShareOf(turn.index, dissolve));
        place = Wrapped((ahead + half) / turn.count) * turn.count - half;
        shown = Eased((most + 1) / 2.0 - (place < 0 ? -place : place));
    }
    if (shown <= 0) return;
    const double scale =
        std::min(step / spacing / picture.layer.Width(), heightOfRow * Height() / picture.layer.Height()) *
        Mixed(least, 1.2, share);
    const Spot centre{Width() / 2 + step * place, Height() * 0.895};
    // The large one has the name.
    ShownPicture unnamed = picture;
    unnamed.caption = nullptr;
    Show(canvas, unnamed, Placement::Turned(centre, picture.layer.Width() * scale, picture.layer.Height() * scale),
         shown * Mixed(0.6, 1, share));
}

}  // namespace AVBased
