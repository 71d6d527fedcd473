#include "dvd_effects/templates/CPerformance.h"

#include "dvd_effects/canvas/painting.h"
#include "dvd_effects/menu/menu_motion.h"
#include "dvd_effects/templates/scenery.h"

namespace AVBased {

namespace {

// Where the curtain ends, in heights of the menu, and how much of a panel the floor mirrors.
constexpr double horizon = 0.58, mirrored = 0.55;

// A line through two points that are apart in x; level for points that are not.
formula_t LineThrough(double x0, double y0, double x1, double y1) {
    const double slope = x1 != x0 ? (y1 - y0) / (x1 - x0) : 0;
    return {slope, y0 - slope * x0};
}

}  // namespace

FrameSize CPerformance::UsualBox() const {
    const FrameSize most = PartOfMenu(0.36, 0.44);
    return {most.width, std::clamp(most.width * 9 / 16, 1u, most.height)};
}

CPerformance::Panel CPerformance::MirroredOf(const Panel& panel) {
    const auto under = [](double top, double bottom, double part) {
        return bottom + (bottom - top) * (0.07 + part * mirrored);
    };
    return {panel.left,
            panel.right,
            under(panel.leftTop, panel.leftBottom, 0),
            under(panel.rightTop, panel.rightBottom, 0),
            under(panel.leftTop, panel.leftBottom, 1),
            under(panel.rightTop, panel.rightBottom, 1)};
}

CPerformance::Warp CPerformance::WarpOf(const Panel& panel, FrameSize size, bool upsideDown) {
    const std::size_t pixels = std::size_t(size.width) * size.height;
    Warp warp{std::vector<unsigned char>(pixels),
              std::vector<unsigned char>(pixels),
              std::vector<int>(pixels),
              std::vector<int>(pixels),
              std::int32_t(panel.left),
              std::int32_t(std::min(panel.leftTop, panel.rightTop)),
              size};
    const auto x = [&](double at) { return std::int32_t(at) - warp.x; };
    const auto y = [&](double at) { return std::int32_t(at) - warp.y; };
    const position_t upright{{x(panel.left), y(panel.leftTop), x(panel.right), y(panel.rightTop), x(panel.left),
                              y(panel.leftBottom), x(panel.right), y(panel.rightBottom)}};
    const auto& at = upright.at;
    const position_t reversed{{at[4], at[5], at[6], at[7], at[0], at[1], at[2], at[3]}};
    // Empty, so that no border becomes soft: the screens' frames lie over them.
    const position_t noBorders{{1, 1, 0, 1, 1, 0, 0, 0}};
    const formula_t everything{0, -1e9}, top = LineThrough(at[0], at[1], at[2], at[3]),
                                         bottom = LineThrough(at[4], at[5], at[6], at[7]);
    const formula_t edges[] = {everything, top, bottom, everything};
    CondinateChange(warp.coverage.data(), warp.side.data(), warp.columns.data(), warp.rows.data(),
                    upsideDown ? reversed : upright, noBorders, edges, size.width, size.height);
    // Nothing lies below the panel.
    warp.size.height = std::min(size.height, unsigned(std::max({at[5], at[7], 0})) + 1);
    if (!upsideDown) return warp;
    // What the floor mirrors fades downwards.
    for (unsigned row = 0; row < warp.size.height; ++row)
        for (unsigned column = 0; column < size.width; ++column) {
            const double above = top.slope * column + top.intercept, under = bottom.slope * column + bottom.intercept;
            const double shown = std::clamp(1 - (row - above) / std::max(1.0, under - above), 0.0, 1.0);
            unsigned char& coverage = warp.coverage[std::size_t(row) * size.width + column];
            coverage = static_cast<unsigned char>(coverage * shown + Scattered(row, column) * (coverage > 0));
        }
    return warp;
}

void CPerformance::Warp::Lay(Canvas& canvas, const Layer& picture, double opacity) const {
    canvas.LayWarped(picture, {coverage.data(), columns.data(), rows.data(), size.width, size.height}, x, y,
                     ByteOf(opacity));
}

// Transparent pictures have a dark screen behind them.
void CPerformance::FinishPicture(Layer& layer, unsigned) const { layer = Framed(layer, Kind(), 0, {22, 18, 38}); }

void CPerformance::MakeScenery() {
    const FrameSize size = UsualBox();
    const double width = size.width, height = size.height, gap = 0.02 * Width();
    const double left = (Width() - width) / 2, right = left + width, top = 0.45 * Height() - height / 2;
    const double reach = 0.72 * width, slant = 0.13 * height, bottom = top + height;
    const Panel panels[] = {
        {left - gap - reach, left - gap, top, top + slant, bottom, bottom - slant},
        {left, right, top, top, bottom, bottom},
        {right + gap, right + gap + reach, top + slant, top, bottom - slant, bottom},
    };
    m_screens.clear();
    for (const Panel& panel : panels)
        m_screens.push_back({panel, WarpOf(panel, size, false), WarpOf(MirroredOf(panel), size, true)});

    constexpr Tint lights[] = {{255, 120, 220}, {120, 170, 255}, {180, 120, 255}};
    for (unsigned i = 0; i < 3; ++i) {
        m_beams[i] = Layer(64, 128);
        Paint(m_beams[i], Kind(), [&](double x, double y) {
            const double across = 1 - (x - 32) * (x - 32) / (32 * 32), down = 1 - y / 128;
            Tint light = lights[i];
            light.alpha = 255 * across * across * (0.3 + 0.7 * down) * Eased(down / 0.4);
            return light;
        });
    }
    m_metal = PlainLayer(Kind(), {8, 8}, {14, 13, 20});
}

void CPerformance::PaintBackground(Canvas& canvas) const {
    constexpr Tint night{10, 8, 26}, violet{96, 42, 168}, rose{224, 92, 190};
    const auto curtain = [&](double across, double down) {
        const double fold = 0.5 + 0.5 * Wave(across * 15 + 0.35 * Wave(across * 4 + 0.1 * down));
        const double off = across < 0.5 ? 0.5 - across : across - 0.5;
        const double light = (0.25 + 0.75 * fold * fold) * (1 - 1.1 * off) * (0.7 + 0.3 * down);
        const Tint lit = Mixed(violet, rose, Eased(down * 1.2 - 0.3) * (1 - off));
        return Mixed(night, lit, std::clamp(light, 0.0, 1.0));
    };
    Paint(canvas, Kind(), [&](double x, double y) {
        const double across = x / Width(), down = y / Height();
        if (down < horizon) return curtain(across, down / horizon);
        const double depth = (down - horizon) / (1 - horizon);
        return Mixed(night * 0.6, curtain(across, 1 - 0.6 * depth), 0.75 * Eased(1 - 0.8 * depth));
    });
}

void CPerformance::DrawBeams(Canvas& canvas) const {
    constexpr unsigned count = 4;
    for (unsigned i = 0; i < count; ++i) {
        const double swing = Wave((i % 2 ? 1 : 2) * Phase() + 0.3 * i), from = (i + 0.5) / count * Width();
        const double to = from + 0.13 * swing * Width(), top = -0.02 * Height(), bottom = 0.66 * Height();
        const double narrow = 0.01 * Width(), wide = 0.06 * Width();
        canvas.LayTransformed(m_beams[i % 3],
                              {{from - narrow, top}, {from + narrow, top}, {to + wide, bottom}, {to - wide, bottom}},
                              ByteOf(0.55 + 0.2 * Wave(Phase() * 3 + 0.25 * i)));
    }
}

void CPerformance::ShowPictures(Canvas& canvas, std::vector<ShownPicture> pictures, unsigned screen) const {
    constexpr double dissolve = 0.25, behind = 0.14;
    const auto count = unsigned(pictures.size());
    const Screen& shown = m_screens[screen];
    const auto lay = [&](const ShownPicture& picture, double opacity) {
        shown.reflection.Lay(canvas, picture.layer, 0.6 * opacity * picture.opacity);
        shown.picture.Lay(canvas, picture.layer, opacity * picture.opacity);
        ShowCaption(canvas, picture, shown.panel.Grown(0), opacity);
    };
    // From the right one on, each takes over what the one beside it shows.
    Turn turn = TurnAfter(Phase() * count + 1 - behind * (2 - screen), count);
    turn.index = (turn.index + 3 - screen) % count;
    HandOverNames(pictures, turn, dissolve);
    lay(pictures[turn.index], 1);
    const double fade = Passed(turn.part, 1 - dissolve, 1);
    if (count > 1 && fade > 0) lay(pictures[turn.Next()], fade);
}

void CPerformance::DrawFrame(Canvas& canvas, const Panel& panel) const {
    const double out = std::max(1.0, 0.007 * Width()), in = std::max(0.5, 0.0012 * Width());
    const Placement outer = panel.Grown(out), inner = panel.Grown(-in);
    canvas.LayTransformed(m_metal, {outer.topLeft, outer.topRight, inner.topRight, inner.topLeft});
    canvas.LayTransformed(m_metal, {outer.topRight, outer.bottomRight, inner.bottomRight, inner.topRight});
    canvas.LayTransformed(m_metal, {outer.bottomRight, outer.bottomLeft, inner.bottomLeft, inner.bottomRight});
    canvas.LayTransformed(m_metal, {outer.bottomLeft, outer.topLeft, inner.topLeft, inner.bottomLeft});
}

void CPerformance::DrawScene(Canvas& canvas) {
    const std::vector<ShownPicture> pictures = ShownPictures();
    DrawBeams(canvas);
    for (unsigned i = 0; i < m_screens.size(); ++i) {
        const Panel& panel = m_screens[i].panel;
        if (pictures.empty())
            canvas.LayTransformed(m_metal, panel.Grown(0));
        else
            ShowPictures(canvas, pictures, i);
        DrawFrame(canvas, panel);
    }
    DrawTexts(canvas);
}

}  // namespace AVBased
