#include "dvd_effects/templates/CPush.h"

#include "dvd_effects/canvas/painting.h"

namespace AVBased {

void CPush::MakeScenery() {
    m_track = PlainLayer(Kind(), {1, 1}, InMood({150, 160, 172}));
    m_done = PlainLayer(Kind(), {1, 1}, {222, 92, 48});
}

void CPush::PaintBackground(Canvas& canvas) const { PaintGradient(canvas, {236, 238, 240}, {176, 184, 194}); }

void CPush::DrawScene(Canvas& canvas) {
    const std::vector<ShownPicture> pictures = ShownPictures();
    if (!pictures.empty()) {
        constexpr double rest = 0.45;  // of a turn
        const Turn turn = TurnAt(Phase(), unsigned(pictures.size()));
        DrawPush(canvas, pictures[turn.index], pictures[turn.Next()], (turn.part - rest) / (1 - rest));
        DrawProgress(canvas, {0.62 * Width(), 0.955 * Height(), 0.32 * Width(), 0.008 * Height()}, m_track, m_done);
    }
    DrawTexts(canvas);
}

// What the texts leave free, with a little room beside them.
Region CPush::Stage() const {
    Region stage = FreeRegion(0);
    const double gap = 0.02 * Height(), right = stage.left + stage.width, bottom = stage.top + stage.height;
    if (stage.left > 0) stage.left += gap;
    if (stage.top > 0) stage.top += gap;
    stage.width = std::max(1.0, (right < Width() ? right - gap : right) - stage.left);
    stage.height = std::max(1.0, (bottom < Height() ? bottom - gap : bottom) - stage.top);
    return stage;
}

void CPush::DrawPush(Canvas& canvas, const ShownPicture& leaving, const ShownPicture& coming, double push) const {
    // Where pictures go.
    constexpr Spot ways[] = {{-1, 0}, {0, -1}, {1, 0}, {0, 1}};
    constexpr double shrinking = 0.3, back = 0.12, gap = 0.03;
    const double small = Between(push, 0, 1, shrinking), scale = 1 - back * small;
    const double width = Width() * scale, height = Height() * scale, between = Height() * gap * small;
    const double gone = Passed(push, 0.12, 0.88);
    const Spot way = ways[coming.index % std::size(ways)];
    // Of the pictures, the middle is seen that the texts leave room for.
    const Region stage = Stage();
    const Box window = Texts().empty() ? everything
                                       : Box{unsigned(stage.left), unsigned(stage.left + stage.width),
                                             unsigned(stage.top), unsigned(stage.top + stage.height)};
    const auto show = [&](const ShownPicture& picture, double steps) {
        // Of what is too high, more from its upper end.
        const double lower = std::max(0.0, height - stage.height) / 4;
        const Spot centre{stage.Middle().x + way.x * (width + between) * steps,
                          stage.Middle().y + lower + way.y * (height + between) * steps};
        Show(canvas, picture, Placement::Turned(centre, width, height), 1, window);
    };
    show(leaving, gone);
    if (push > 0) show(coming, gone - 1);
}

}  // namespace AVBased
