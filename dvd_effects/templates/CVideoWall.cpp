#include "dvd_effects/templates/CVideoWall.h"

#include "dvd_effects/canvas/painting.h"

namespace AVBased {

namespace {

constexpr double large = 0.64;

}  // namespace

// The least one with a screen for each picture, but never less than a wall.
CVideoWall::Wall CVideoWall::WallOf(unsigned count) const {
    Wall wall{StageBesideTexts()};
    const FrameSize screen = UsualBox();
    const double shape = double(screen.width) / screen.height;
    do {
        ++wall.rows;
        wall.columns = unsigned(std::max(1, Rounded(wall.rows * wall.region.width / wall.region.height / shape)));
    } while (wall.rows < 3 || wall.rows * wall.columns < count);
    return wall;
}

FrameSize CVideoWall::UsualBox() const {
    return {std::max(1u, unsigned(MenuSize().width * large)), std::max(1u, unsigned(MenuSize().height * large))};
}

void CVideoWall::PaintBackground(Canvas& canvas) const { PaintGradient(canvas, {24, 26, 34}, {4, 5, 8}); }

CVideoWall::Screen CVideoWall::ScreenAt(unsigned cell, const Wall& wall) const {
    const double column = (cell % wall.columns + 0.5) / wall.columns - 0.5;
    const double row = (unsigned(cell / wall.columns) + 0.5) / wall.rows - 0.5;
    // A wave runs outwards over the wall.
    const double breath = 0.985 + 0.025 * Wave(Phase());
    const double size = 0.95 + 0.03 * Wave(Phase() * 2 - 0.8 * (column * column + row * row));
    const FrameSize own = UsualBox();
    const Region room{0, 0, wall.region.width / wall.columns, wall.region.height / wall.rows};
    const double scale = room.ScaleOf(own.width, own.height) * size * breath;
    return {wall.region.At(0.5 + column * breath, 0.5 + row * breath), own.width * scale, own.height * scale};
}

void CVideoWall::DrawScene(Canvas& canvas) {
    const std::vector<ShownPicture> pictures = ShownPictures();
    if (!pictures.empty()) {
        const auto count = unsigned(pictures.size());
        const Wall wall = WallOf(count);
        const unsigned screens = wall.rows * wall.columns;
        const Turn turn = TurnAt(Phase(), count);
        const double out = Between(turn.part, 0.08, 0.96, 0.3);
        // The later of its screens for every second one, so that they come from all over the wall.
        const unsigned again = turn.index + (screens - 1 - turn.index) / count * count;
        const unsigned home = turn.index % 2 ? again : turn.index;
        Pile pile;
        for (unsigned cell = 0; cell < screens; ++cell) {
            const Screen screen = ScreenAt(cell, wall);
            const double opacity = cell == home ? 1 - Eased(out * 4) : 1 - 0.6 * out;
            Show(pile, pictures[cell % count], Placement::Turned(screen.centre, screen.width, screen.height), opacity);
        }
        const Screen from = ScreenAt(home, wall);
        const FrameSize own = UsualBox();
        const double scale = std::min(1.0, wall.region.ScaleOf(own.width, own.height));
        const Spot middle = wall.region.Middle();
        const Spot centre{Mixed(from.centre.x, middle.x, out), Mixed(from.centre.y, middle.y, out)};
        const double width = Mixed(from.width, own.width * scale, out),
                     height = Mixed(from.height, own.height * scale, out);
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
