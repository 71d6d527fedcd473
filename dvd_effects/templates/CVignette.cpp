#include "dvd_effects/templates/CVignette.h"

#include <cmath>

#include "dvd_effects/canvas/painting.h"
#include "dvd_effects/templates/scenery.h"

namespace AVBased {

namespace {

constexpr double dissolve = 0.3;  // of a turn
// Places in the two columns of small ovals, from the top of the left one to the bottom of the right one.
constexpr unsigned inColumn = 4, mostPlaces = 2 * inColumn;
// How much of the menu's width the large oval may have beside them.
constexpr double widest = 0.58;

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

void CVignette::MakeScenery() {
    constexpr Tint gold{236, 196, 132}, copper{168, 116, 70}, silver{176, 200, 236};
    constexpr unsigned side = 640;
    m_ring = Layer(side, side);
    Paint(m_ring, Kind(), [&](double x, double y) {
        constexpr double radius = 0.97, thin = 0.011;
        const double across = 2 * x / side - 1, down = 2 * y / side - 1;
        const double off = std::abs(std::sqrt(across * across + down * down) - radius);
        Tint tint = !MoodColoursSet() ? gold : IsLight() ? copper : silver;
        tint.alpha = 190 * std::clamp(2 * (thin - off) / thin, 0.0, 1.0);
        return tint;
    });
    m_bead = Glow(Kind(), Units(0.5), IsLight() ? Colour{176, 84, 30} : Colour{255, 248, 226});
}

void CVignette::DrawScene(Canvas& canvas) {
    std::vector<ShownPicture> pictures = ShownPictures();
    const auto count = unsigned(pictures.size());
    const Turn turn = TurnAt(Phase(), count);
    HandOverNames(pictures, turn, dissolve);
    const double coming = (turn.part - (1 - dissolve)) / dissolve;
    if (count > 1) {
        // The old picture goes after the new one has come: so it does not darken between them.
        ShowLarge(canvas, pictures[turn.index], (turn.part + dissolve) / (1 + dissolve), 1 - Passed(coming, 0.4, 1));
        if (coming > 0)
            ShowLarge(canvas, pictures[turn.Next()], coming * dissolve / (1 + dissolve), Passed(coming, 0, 0.6));
    } else if (count) {
        ShowLarge(canvas, pictures[0], ThereAndBack(Phase()), 1);
    }
    if (count) DrawRing(canvas, pictures[turn.index], pictures[turn.Next()], turn, Passed(coming, 0, 1));
    // A single one needs none beside it.
    for (const ShownPicture& picture : pictures)
        if (count > 1) ShowSmall(canvas, picture, turn, turn.ShareOf(picture.index, dissolve));
    DrawTexts(canvas);
}

Region CVignette::Stage() const {
    constexpr double margin = 0.03;
    const Region stage = StageBesideTexts();
    return stage.Shrunk(margin * stage.width, margin * Height());
}

// How large the oval of a picture is, when it is nearest.
FrameSize CVignette::LargestOf(const ShownPicture& picture) const {
    Region stage = Stage();
    if (SourceCount() > 1) stage.width = std::min(stage.width, widest * Width());
    const double width = picture.layer.Width(), height = picture.layer.Height();
    const double scale = std::min(1.0, stage.ScaleOf(width, height));
    return {unsigned(std::max(1.0, width * scale)), unsigned(std::max(1.0, height * scale))};
}

// At `part` of its time on the screen.
void CVignette::ShowLarge(Canvas& canvas, const ShownPicture& picture, double part, double opacity) const {
    const FrameSize largest = LargestOf(picture);
    const double side = picture.index % 2 ? 1 : -1, zoom = 0.9 + 0.06 * part;
    Spot centre = Stage().Middle();
    centre.x += largest.width * side * 0.015 * (part * 2 - 1);
    Show(canvas, picture, Placement::Turned(centre, largest.width * zoom, largest.height * zoom), opacity);
}

// A fine ring around the picture, which turns into that of the next one, and a bead of light that runs round it while a
// picture is shown.
void CVignette::DrawRing(Canvas& canvas, const ShownPicture& now, const ShownPicture& next, const Turn& turn,
                         double change) const {
    const FrameSize from = LargestOf(now), to = LargestOf(next);
    const double width = Mixed(from.width, to.width, change), height = Mixed(from.height, to.height, change);
    const Spot centre = Stage().Middle();
    canvas.LayTransformed(m_ring, Placement::Turned(centre, width, height));
    const double way = turn.part - 0.25, bead = m_bead.Width();
    const Spot at{centre.x + 0.485 * width * Wave(way + 0.25), centre.y + 0.485 * height * Wave(way)};
    canvas.LayTransformed(m_bead, Placement::Turned(at, bead, bead));
}

// Of too many for all places, those about the one that is shown have one, and they move on with it; what goes over from
// one column to the other fades there.
void CVignette::ShowSmall(Canvas& canvas, const ShownPicture& picture, const Turn& turn, double share) const {
    constexpr double least = 0.82;
    const bool movesOn = turn.count > mostPlaces;
    const unsigned left = movesOn ? inColumn : (turn.count + 1) / 2, right = movesOn ? inColumn : turn.count - left;
    double place = picture.index, shown = 1;
    if (movesOn) {
        constexpr double own = inColumn - 1, between = inColumn - 0.5;  // of the one that is shown; of the two columns
        const double ahead = double(picture.index) - turn.index - (1 - turn.ShareOf(turn.index, dissolve));
        place = Wrapped((ahead + between) / turn.count) * turn.count - between + own;
        const double off = std::abs(place - between);
        shown = Eased(inColumn + 0.5 - off) * Eased(2 * off);
    }
    if (shown <= 0) return;
    const Region stage = Stage();
    const bool isLeft = place < left - 0.5;
    const double inRow = isLeft ? place : place - left, rows = isLeft ? left : right;
    // The columns bend round the large oval.
    const double room = stage.height / std::max(3.0, rows), away = (inRow - (rows - 1) / 2) * room;
    const double bend = 2 * away / stage.height, aside = stage.width * (0.37 - 0.02 * bend * bend);
    const double width = picture.layer.Width(), height = picture.layer.Height();
    const double scale =
        std::min(0.13 * stage.width / width, std::min(room * 0.92, 0.2 * Height()) / height) * Mixed(least, 1, share);
    const Spot centre{stage.Middle().x + (isLeft ? -aside : aside), stage.Middle().y + away};
    // The large one has the name.
    ShownPicture unnamed = picture;
    unnamed.caption = nullptr;
    Show(canvas, unnamed, Placement::Turned(centre, width * scale, height * scale), shown * Mixed(0.6, 1, share));
}

}  // namespace AVBased
