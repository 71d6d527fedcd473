#include "dvd_effects/templates/CResizingPanels.h"

#include <cmath>

#include "dvd_effects/canvas/painting.h"

namespace AVBased {

namespace {

// In turns.
constexpr double growing = 0.55;
// How much more room than the others the large panel's row has, and the panel in its row.
constexpr double moreHeight = 1.6, moreWidth = 1.4;

// Divides a length by weights: the part from `before` to `before` + `own` of `all`, in whole pixels.
Span PartOf(double length, double before, double own, double all, int line) {
    const int begin = Rounded(length * before / all) + (before > 0 ? line - line / 2 : 0);
    const int end = Rounded(length * (before + own) / all) - (before + own < all - 1e-9 ? line / 2 : 0);
    return {unsigned(begin), unsigned(std::max(end, 0))};
}

}  // namespace

void CResizingPanels::MakeScenery() { m_shade = PlainLayer(Kind(), {1, 1}, InMood({8, 10, 14})); }

void CResizingPanels::PaintBackground(Canvas& canvas) const { PaintGradient(canvas, {20, 22, 28}, {8, 9, 12}); }

void CResizingPanels::DrawScene(Canvas& canvas) {
    const std::vector<ShownPicture> pictures = ShownPictures();
    const auto count = unsigned(pictures.size());
    const Turn turn = TurnAt(Phase(), count);
    const auto share = [&](unsigned i) { return turn.ShareOf(i, growing); };
    const auto line = int(std::max(2u, MenuSize().height / 120));
    const Region stage = StageBesideTexts();
    const auto rows = unsigned(std::max(1, Rounded(std::sqrt(0.75 * count * stage.height / Height()))));
    const auto left = unsigned(stage.left), top = unsigned(stage.top);
    double above = 0;
    for (unsigned row = 0; row < rows && count; ++row) {
        const unsigned first = row * count / rows, end = (row + 1) * count / rows;
        double grown = 0;
        for (unsigned i = first; i < end; ++i) grown += share(i);
        const Span lines = PartOf(stage.height, above, 1 + moreHeight * grown, rows + moreHeight, line);
        above += 1 + moreHeight * grown;
        double before = 0;
        for (unsigned i = first; i < end; ++i) {
            const double weight = 1 + moreWidth * share(i);
            const Span columns = PartOf(stage.width, before, weight, end - first + moreWidth * grown, line);
            before += weight;
            if (!columns.IsEmpty() && !lines.IsEmpty())
                DrawPanel(canvas, pictures[i],
                          {left + columns.begin, left + columns.end, top + lines.begin, top + lines.end}, share(i));
        }
    }
    DrawTexts(canvas);
}

void CResizingPanels::DrawPanel(Canvas& canvas, const ShownPicture& picture, const Box& panel, double share) {
    ShowWithin(canvas, picture, panel, 1.04 + 0.03 * Wave(Phase() + picture.index * 0.37));
    const auto dark = std::uint8_t((1 - share) * picture.opacity * 130);
    if (!dark) return;
    const Spot least{double(panel.xBegin), double(panel.yBegin)}, most{double(panel.xEnd), double(panel.yEnd)};
    canvas.LayTransformed(m_shade, {least, {most.x, least.y}, most, {least.x, most.y}}, dark);
}

}  // namespace AVBased
