#include "dvd_effects/templates/CVideoWall.h"

#include "dvd_effects/canvas/painting.h"

namespace AVBased {

namespace {

constexpr double large = 0.64;

// The least grid with a cell for each picture, but never less than a wall.
unsigned GridFor(unsigned count) {
    unsigned grid = 3;
    while (grid * grid < count) ++grid;
    return grid;
}

}  // namespace

FrameSize CVideoWall::UsualBox() const {
    return {std::max(1u, unsigned(MenuSize().width * large)), std::max(1u, unsigned(MenuSize().height * large))};
}

void CVideoWall::PaintBackground(Canvas& canvas) const { PaintGradient(canvas, {24, 26, 34}, {4, 5, 8}); }

CVideoWall::Screen CVideoWall::ScreenAt(unsigned cell, unsigned grid) const {
    const unsigned down = cell / grid;
    const double column = cell % grid + 0.5 - grid / 2.0, row = down + 0.5 - grid / 2.0;
    // A wave runs outwards over the wall.
    const double distance = (column * column + row * row) / (grid * grid);
    const double wall = 0.985 + 0.025 * Wave(Phase()), screen = 0.95 + 0.03 * Wave(Phase() * 2 - distance * 0.8);
    return {{Width() * (0.5 + column / grid * wall), Height() * (0.5 + row / grid * wall)},
            Width() / grid * screen * wall,
            Height() / grid * screen * wall};
}

void CVideoWall::DrawScene(Canvas& canvas) {
    const std::vector<ShownPicture> pictures = ShownPictures();
    if (!pictures.empty()) {
        const auto count = unsigned(pictures.size()), grid = GridFor(count);
        const Turn turn = TurnAt(Phase(), count);
        const double out = Between(turn.part, 0.08, 0.96, 0.3);
        // The later of its screens for every second one, so that they come from all over the wall.
        const unsigned again = turn.index + (grid * grid - 1 - turn.index) / count * count;
        const unsigned home = turn.index % 2 ? again : turn.index;
        Pile pile;
        for (unsigned cell = 0; cell < grid * grid; ++cell) {
            const Screen screen = ScreenAt(cell, grid);
            const double opacity = cell == home ? 1 - Eased(out * 4) : 1 - 0.6 * out;
            Show(pile, pictures[cell % count], Placement::Turned(screen.centre, screen.width, screen.height), opacity);
        }
        const Screen from = ScreenAt(home, grid);
        const Spot centre{Mixed(from.centre.x, Width() / 2, out), Mixed(from.centre.y, Height() / 2, out)};
        const double width = Mixed(from.width, Width() * large, out),
                     height = Mixed(from.height, Height() * large, out);
        const FrameSize shape{64, 36};
        constexpr unsigned blur = 6;
        const Layer& shadow = m_shadow.For(Kind(), shape, [&] {
            return ShadowOf(PlainLayer(Kind(), shape, {0, 0, 0}), Kind(), blur, {0, 0, 0, 200});
        });
        pile.Put(shadow,
                 Placement::Turned({centre.x, centre.y + height * 0.03}, width * shadow.Width() / shape.width,
                                   height * shadow.Height() / shape.height),
                 std::uint8_t(255 * out * pictures[turn.index].opacity));
        Show(pile, pictures[turn.index], Placement::Turned(centre, width, height));
        pile.Draw(canvas);
    }
    DrawTexts(canvas);
}

}  // namespace AVBased
