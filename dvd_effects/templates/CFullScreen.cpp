#include "dvd_effects/templates/CFullScreen.h"

#include "dvd_effects/canvas/painting.h"

namespace AVBased {

namespace {

// In turns.
constexpr double dissolve = 0.35;

}  // namespace

void CFullScreen::PaintBackground(Canvas& canvas) const {
    const Layer ground(canvas.Width(), canvas.Height());
    FillGradient(ground, Kind(), {38, 44, 56}, {10, 11, 15});
    canvas.Lay(ground, 0, 0);
}

void CFullScreen::DrawScene(Canvas& canvas) {
    const std::vector<Actor> actors = Actors();
    if (!actors.empty()) {
        const auto count = unsigned(actors.size());
        const Turn turn = TurnAt(Phase(), count);
        // Both pictures of a dissolve are on their way: each moves for longer than its turn.
        ShowMoving(canvas, actors[turn.index], (turn.part + dissolve) / (1 + dissolve), 1);
        const double begun = turn.part - (1 - dissolve);
        if (begun > 0)
            ShowMoving(canvas, actors[(turn.index + 1) % count], begun / (1 + dissolve), Eased(begun / dissolve));
        DrawShade(canvas);
    }
    DrawTexts(canvas);
}

// At `part` of its time on the screen. It drifts no farther than it is larger than the screen.
void CFullScreen::ShowMoving(Canvas& canvas, const Actor& actor, double part, double opacity) const {
    constexpr double least = 1.02, more = 0.12;
    const bool comesNearer = actor.index % 2 == 0, toTheRight = actor.index / 2 % 2 == 0;
    const double zoom = least + more * (comesNearer ? part : 1 - part);
    const double drift = (zoom - 1) / 2 * (part * 2 - 1);
    const Spot centre{Width() * (0.5 + (toTheRight ? drift : -drift)),
                      Height() * (0.5 + (comesNearer ? drift : -drift) / 2)};
    Show(canvas, actor, Placement::Turned(centre, Width() * zoom, Height() * zoom), opacity);
}

void CFullScreen::DrawShade(Canvas& canvas) {
    const FrameSize size{MenuSize().width, std::max(1u, MenuSize().height * 2 / 5)};
    const Layer& shade = m_shade.For(Kind(), size, [&] {
        Layer layer(size.width, size.height);
        FillGradient(layer, Kind(), {0, 0, 0, 0}, {0, 0, 0, 170});
        return layer;
    });
    canvas.Lay(shade, 0, std::int32_t(MenuSize().height - size.height));
}

}  // namespace AVBased
