#include "dvd_effects/templates/CCommonSub.h"

namespace AVBased {

namespace {

constexpr Colour white = {255, 255, 255}, accent = {255, 176, 64};
constexpr double shadowRadius = 0.14, shadowDrop = 0.05;

}  // namespace

void CCommonSheet::FinishPicture(Layer& picture, unsigned /*index*/) const {
    m_mounts.Set(picture, Kind(),
                 {{222, 228, 236}, {{Units(0.04), white}}, Units(shadowRadius), Units(shadowDrop), {0, 0, 0, 150}});
}

void CCommonSheet::PaintBackground(Canvas& canvas) const {
    PaintGradient(canvas, {62, 80, 106}, {20, 26, 38});
    const Layer light = Glow(Kind(), Units(3), {150, 186, 226});
    canvas.LayTransformed(light, Placement::Turned({0.3 * Width(), 0}, 1.5 * Width(), 1.3 * Height()), 90);
    // Broad slanted beams, hardly to be seen.
    const Layer beam = PlainLayer(Kind(), {4, 4}, white);
    for (unsigned i = 0; i < 5; ++i) {
        const double x = (0.04 + 0.24 * i) * Width(), width = (0.06 + 0.1 * Scattered(91, i)) * Width();
        canvas.LayTransformed(
            beam, Placement::Along({x + 0.25 * Width(), -0.1 * Height()}, {x - 0.25 * Width(), 1.1 * Height()}, width),
            9);
    }
}

void CCommonSheet::MakeScenery() {
    const Colour light = IsLight() ? Colour{255, 206, 120} : Colour{214, 232, 255};
    m_beam = Layer(64, 128);
    PaintOver(m_beam, Kind(), light, [](double x, double y) { return 0.42 * (1 - x * x) * (0.72 - 0.28 * y); });
    m_dust = Glow(Kind(), Units(0.14), light);
}

void CCommonSheet::DrawBeam(Canvas& canvas, Spot at, double width, double height) const {
    constexpr unsigned specks = 36;
    // The projector stands beyond the corner, so that the beam leaves titles alone.
    const Spot lamp = {1.03 * Width(), -0.06 * Height()};
    const double away = Distance(lamp, at);
    if (!(away > 0)) return;
    const Spot aim = {(at.x - lamp.x) / away, (at.y - lamp.y) / away};
    // What a picture is across the beam.
    const double reach = 0.5 * (width * (aim.y < 0 ? -aim.y : aim.y) + height * (aim.x < 0 ? -aim.x : aim.x));
    const auto in = [&](double along, double aside) {
        const double across = aside * Mixed(0.12 * Unit(), reach, along);
        return Spot{Mixed(lamp.x, at.x, along) - across * aim.y, Mixed(lamp.y, at.y, along) + across * aim.x};
    };
    canvas.LayTransformed(m_beam, {in(0, -1), in(0, 1), in(1, 1), in(1, -1)});
    for (unsigned i = 0; i < specks; ++i) {
        const double along = Wrapped(Scattered(95, i) + Turns(900)),
                     aside = 0.9 * Wave(Turns(500) * (1 + i % 2) + Scattered(96, i));
        const double size = (0.4 + 0.6 * Scattered(97, i)) * Mixed(0.7, 1.5, along) * m_dust.Width();
        canvas.LayTransformed(m_dust, Placement::Turned(in(along, aside), size, size),
                              ByteOf(Between(along, 0, 1, 0.2) * (0.55 + 0.3 * Wave(Turns(120) + Scattered(98, i)))));
    }
}

PictureGrid CCommonSub::Rows(unsigned count) const {
    const double top = Texts().empty() ? 0.13 : 0.23;
    return PictureGrid::Spaced({0.07 * Width(), top * Height(), 0.86 * Width(), 0.7 * Height()}, count, 1.4,
                               0.5 * Unit());
}

FrameSize CCommonSub::UsualBox() const {
    const FrameSize cell = Rows(SourceCount()).CellSize();
    return {cell.width, unsigned(std::max(1.0, cell.height - StripHeight()))};
}

void CCommonSub::MakeScenery() {
    CCommonSheet::MakeScenery();
    m_strip = PlainLayer(Kind(), {Units(3.5), Units(0.42)}, InMood({8, 12, 20, 130}));
    RoundCorners(m_strip, 0.06 * Unit());
    m_accent = PlainLayer(Kind(), {16, 16}, accent);
}

void CCommonSub::DrawCard(Canvas& canvas, const ShownPicture& picture, Spot at, double lit) const {
    const double size = 1 + 0.05 * lit, width = size * picture.layer.Width(), height = size * picture.layer.Height();
    // The layer without the room for its shadow.
    const double shadow = 2 * size * (Units(shadowRadius) + Units(shadowDrop)), outer = 0.1 * Unit();
    const double framedWidth = width - shadow, framedHeight = height - shadow;
    const auto lay = [&](const Layer& layer, Spot middle, double layerWidth, double layerHeight, double opacity) {
        canvas.LayTransformed(layer, Placement::Turned(middle, layerWidth, layerHeight),
                              std::uint8_t(255 * opacity * picture.opacity));
    };
    const double stripTop = at.y + framedHeight / 2 + 0.07 * Unit(), stripHeight = StripHeight() - 0.08 * Unit();
    const Spot strip = {at.x, stripTop + stripHeight / 2};
    lay(m_strip, strip, framedWidth, stripHeight, 1);
    lay(m_accent, {at.x - framedWidth / 2 + 0.04 * Unit(), strip.y}, 0.08 * Unit(), stripHeight, 0.4 + 0.6 * lit);
    if (lit > 0) lay(m_accent, at, framedWidth + outer, framedHeight + outer, lit);
    ShownPicture unnamed = picture;
    unnamed.caption = nullptr;
    Show(canvas, unnamed, Placement::Turned(at, width, height));
    // The strip is for the name.
    constexpr double higher = 3.2, below = 0.635;
    ShowCaption(
        canvas, picture,
        Placement::Turned({strip.x, strip.y + (below - higher / 2) * stripHeight}, framedWidth, higher * stripHeight));
}

void CCommonSub::DrawScene(Canvas& canvas) {
    const std::vector<ShownPicture> pictures = ShownPictures();
    const auto count = unsigned(pictures.size());
    const PictureGrid rows = Rows(count);
    const auto place = [&](const ShownPicture& picture) {
        Spot at = rows.MiddleOf(picture.index);
        at.y -= StripHeight() / 2;
        return PlaceOf(picture, at);
    };
    if (count) {
        // On its way from one to the next it is between both.
        Spot at;
        double width = 0, height = 0;
        for (const ShownPicture& picture : pictures) {
            const double share = InTurn(Phase(), picture.index, count, 0.3);
            const Spot own = place(picture);
            at = {at.x + share * own.x, at.y + share * own.y};
            width += share * picture.layer.Width();
            height += share * picture.layer.Height();
        }
        DrawBeam(canvas, at, width, height);
    }
    for (const bool isLit : {false, true})
        for (const ShownPicture& picture : pictures) {
            const double lit = (0.88 + 0.12 * Wave(Turns(75))) * InTurn(Phase(), picture.index, count, 0.3);
            if (isLit == (lit > 0)) DrawCard(canvas, picture, place(picture), lit);
        }
    DrawTexts(canvas);
}

FrameSize CCommomInstrction::UsualBox() const {
    return PictureGrid::Spaced({0, 0, 0.32 * Width(), 0.6 * Height()}, 1, 1.15, 0).CellSize();
}

void CCommomInstrction::MakeScenery() {
    CCommonSheet::MakeScenery();
    const FrameSize menu = MenuSize();
    m_panel = PlainLayer(Kind(), {std::max(1u, menu.width * 21 / 40), std::max(1u, menu.height * 3 / 4)},
                         InMood({246, 249, 252, 232}));
    RoundCorners(m_panel, 0.14 * Unit());
    m_panel = Shaded(m_panel, Kind(), Units(0.2), Units(0.06), {0, 0, 0, 140});
    m_keys.Make(Kind(), Units(1.9),
                {InMood({27, 48, 72}), IsLight() ? Colour{27, 48, 72} : Colour{228, 236, 244}, accent});
}

void CCommomInstrction::DrawScene(Canvas& canvas) {
    const double left = 0.0667 * Width(), top = 0.125 * Height(), border = Units(0.2) + Units(0.06);
    canvas.Lay(m_panel, std::int32_t(left - border), std::int32_t(top - border));
    // Buttons have room at the panel's end.
    const Region panel = Region{left, top, 0.525 * Width(), 0.765 * Height() - top}.Shrunk(0.4 * Unit(), 0);
    m_keys.Draw(canvas, BelowTexts(Texts(), panel), Phase());
    bool isLit = false;
    ShowInTurn(0.25, [&](const ShownPicture& picture, double opacity) {
        const double size = 0.985 + 0.025 * Wave(Turns(300) + 0.25), width = size * picture.layer.Width();
        const Spot at = PlaceOf(picture, {0.785 * Width(), 0.5 * Height()});
        if (!isLit) DrawBeam(canvas, at, 0.3 * Width(), 0.5 * Height());
        isLit = true;
        Show(canvas, picture, Placement::Turned(at, width, size * picture.layer.Height(), 1.2 * Wave(Turns(300))),
             opacity);
    });
    DrawTexts(canvas);
}

}  // namespace AVBased
