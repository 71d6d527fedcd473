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
        DrawProgress(canvas, turn);
    }
    DrawTexts(canvas);
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
    const Region stage = StageBesideTexts();
    const Box window = Texts().empty() ? everything
                                       : Box{unsigned(stage.left), unsigned(stage.left + stage.width),
                                             unsigned(stage.top), unsigned(stage.top + stage.height)};
    // Of what is too high, more from its upper end.
    const double lower = std::max(0.0, height - stage.height) / 4;
    const auto placeAt = [&](double steps) {
        return Spot{stage.Middle().x + way.x * (width + between) * steps,
                    stage.Middle().y + lower + way.y * (height + between) * steps};
    };
    const auto show = [&](const ShownPicture& picture, double steps) {
        Show(canvas, picture, Placement::Turned(placeAt(steps), width, height), 1, window);
    };
    show(leaving, gone);
    if (push <= 0) return;
    show(coming, gone - 1);
    // Between them, as long as their sides, what pushes.
    const double thick = 0.6 * between;
    canvas.LayTransformed(
        m_done, Placement::Turned(placeAt(gone - 0.5), way.x != 0 ? thick : width, way.x != 0 ? height : thick), 255,
        window);
}

void CPush::DrawProgress(Canvas& canvas, const Turn& turn) const {
    if (turn.count < 2) return;
    const double left = 0.62 * Width(), middle = 0.959 * Height(), high = 0.008 * Height();
    // The line goes back to its start where the loop does, without a jump.
    const double back = Passed(Phase(), 1 - 0.5 / turn.count, 1);
    const double part = 0.32 * Width() / turn.count, length = 0.86 * part;
    for (unsigned i = 0; i < turn.count; ++i) {
        const auto lay = [&](const Layer& layer, double share, double opacity) {
            const double width = share * length;
            if (width > 0)
                canvas.LayTransformed(layer, Placement::Turned({left + i * part + width / 2, middle}, width, high),
                                      ByteOf(opacity));
        };
        lay(m_track, 1, 1);
        lay(m_done, i < turn.index ? 1 : i == turn.index ? turn.part : 0, 1 - back);
    }
}

}  // namespace AVBased
