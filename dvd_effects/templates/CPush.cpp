#include "dvd_effects/templates/CPush.h"

namespace AVBased {

void CPush::PaintBackground(Canvas& canvas) const { PaintGradient(canvas, {236, 238, 240}, {176, 184, 194}); }

void CPush::DrawScene(Canvas& canvas) {
    const std::vector<ShownPicture> pictures = ShownPictures();
    if (!pictures.empty()) {
        constexpr double rest = 0.45;  // of a turn
        const Turn turn = TurnAt(Phase(), unsigned(pictures.size()));
        DrawPush(canvas, pictures[turn.index], pictures[turn.Next()], (turn.part - rest) / (1 - rest));
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
    const auto show = [&](const ShownPicture& picture, double steps) {
        const Spot centre{Width() / 2 + way.x * (width + between) * steps,
                          Height() / 2 + way.y * (height + between) * steps};
        Show(canvas, picture, Placement::Turned(centre, width, height));
    };
    show(leaving, gone);
    if (push > 0) show(coming, gone - 1);
}

}  // namespace AVBased
