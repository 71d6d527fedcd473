#include "dvd_effects/templates/CResizingPanels.h"

#include <cmath>

#include "dvd_effects/canvas/painting.h"

namespace AVBased {

namespace {

// In turns.
constexpr double growing = 0.55;
// How much more room than the others the large panel's row has, and the panel in its row.
constexpr double moreHeight = 1.5, moreWidth = 2;

// Divides a length by weights: the part from `before` to `before` + `own` of `all`, in whole pixels.
struct Part {
    std::int32_t begin, end;
    Part(double length, double before, double own, double all, std::int32_t line)
        : begin(Rounded(length * before / all) + (before > 0 ? line - line / 2 : 0)),
          end(Rounded(length * (before + own) / all) - (before + own < all - 1e-9 ? line / 2 : 0)) {}
};

}  // namespace

FrameSize CResizingPanels::UsualBox() const {
    const FrameSize menu = MenuSize();
    return {std::max(1u, menu.width * 7 / 10), std::max(1u, menu.height * 7 / 10)};
}

void CResizingPanels::PaintBackground(Canvas& canvas) const {
    const Layer ground(canvas.Width(), canvas.Height());
    FillGradient(ground, Kind(), {20, 22, 28}, {8, 9, 12});
    canvas.Lay(ground, 0, 0);
}

void CResizingPanels::DrawScene(Canvas& canvas) {
    const std::vector<Actor> actors = Actors();
    const auto count = unsigned(actors.size());
    const Turn turn = TurnAt(Phase(), count);
    const auto share = [&](unsigned i) { return ShareOf(i, turn, count, growing); };
    const auto rows = unsigned(std::max(1, Rounded(std::sqrt(0.75 * count))));
    const auto line = std::int32_t(std::max(2u, MenuSize().height / 120));
    double above = 0;
    for (unsigned row = 0; row < rows && count; ++row) {
        const unsigned first = row * count / rows, end = (row + 1) * count / rows;
        double grown = 0;
        for (unsigned i = first; i < end; ++i) grown += share(i);
        const Part lines(Height(), above, 1 + moreHeight * grown, rows + moreHeight, line);
        above += 1 + moreHeight * grown;
        double before = 0;
        for (unsigned i = first; i < end; ++i) {
            const double weight = 1 + moreWidth * share(i);
            const Part columns(Width(), before, weight, end - first + moreWidth * grown, line);
            before += weight;
            if (columns.begin < columns.end && lines.begin < lines.end)
                DrawPanel(canvas, actors[i], {columns.begin, lines.begin, columns.end, lines.end}, share(i));
        }
    }
    DrawTexts(canvas);
}

void CResizingPanels::DrawPanel(Canvas& canvas, const Actor& actor, Window panel, double share) {
    ShowWithin(canvas, actor, panel, 1.06 + 0.05 * Wave(Phase() + actor.index * 0.37));
    const Layer& shade = m_shade.For(Kind(), {1, 1}, [&] { return PlainLayer(Kind(), {1, 1}, {8, 10, 14}); });
    const auto dark = std::uint8_t((1 - share) * actor.opacity * 130);
    if (!dark) return;
    const Spot least{double(panel.left), double(panel.top)}, most{double(panel.right), double(panel.bottom)};
    canvas.LayTransformed(shade, {least, {most.x, least.y}, most, {least.x, most.y}}, dark);
}

}  // namespace AVBased
