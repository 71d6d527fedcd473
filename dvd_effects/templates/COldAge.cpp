#include "dvd_effects/templates/COldAge.h"

#include <map>

#include "dvd_effects/canvas/painting.h"
#include "dvd_effects/templates/scenery.h"
#include "effects/base/row_loops.h"

namespace AVBased {

namespace {

// Exposures in a loop: each has a dust, a flicker and a place of its own.
constexpr unsigned exposures = 144;
// White, and a middle grey, seen through the old film: brown, on bright paper, or blue.
struct Sepia {
    Colour white, grey;
};
constexpr Sepia brown{{255, 232, 190}, {170, 146, 112}}, pale{{255, 248, 234}, {150, 142, 130}},
    blue{{206, 228, 255}, {112, 138, 170}};

// Turns all of a frame that the menu covers into sepia.
void TurnSepia(IRawVideoFrame& frame, LayerKind kind, FrameSize menu, const Sepia& sepia) {
    ForFrame(
        [&](const PackedView& view) {
            ForEachPixel(view, [white = sepia.white](std::uint32_t pixel) {
                const std::uint32_t grey = (Red(pixel) * 77 + Green(pixel) * 150 + Blue(pixel) * 29 + 128) >> 8;
                return WithAlphaOf(pixel, grey * white.blue >> 8, grey * white.green >> 8, grey * white.red >> 8);
            });
        },
        [&](const PlanarView& view) {
            const std::uint32_t tone = PixelOf(kind, sepia.grey);
            const std::uint32_t chroma[] = {Green(tone), Red(tone)};
            const auto reach = [](unsigned side, unsigned shift) { return (side + (1u << shift) - 1) >> shift; };
            for (unsigned p = 1; p < 3; ++p) {
                const ComponentView& plane = view.plane[p];
                const unsigned width = std::min(plane.width, reach(menu.width, view.columnShift));
                const unsigned height = std::min(plane.height, reach(menu.height, view.rowShift));
                for (unsigned y = 0; y < height; ++y) std::fill_n(plane.Row(y), width, std::uint8_t(chroma[p - 1]));
            }
        },
        frame);
}

}  // namespace

FrameSize COldAge::UsualBox() const { return BoxInRows(); }

void COldAge::FinishPicture(Layer& layer, unsigned) const {
    const unsigned side = std::min(layer.Width(), layer.Height()), mat = side / 16 + 1, wood = side / 28 + 1;
    CutEllipse(layer, 0.1);
    layer = Framed(layer, Kind(), mat, {236, 226, 204});
    CutEllipse(layer, 0);
    layer = Framed(layer, Kind(), wood, {58, 40, 26});
    CutEllipse(layer, 0);
}

void COldAge::MakeScenery() {
    m_shadow = SoftShadow(Kind(), 1);
    const FrameSize menu = MenuSize();
    m_vignette = Layer(menu.width, menu.height);
    const Colour edge = InMood({20, 12, 6});
    const Tint shade{double(edge.red), double(edge.green), double(edge.blue)};
    Paint(m_vignette, Kind(), [&](double x, double y) {
        const double across = 2 * x / Width() - 1, down = 2 * y / Height() - 1;
        return Tint{shade.red, shade.green, shade.blue, 20 + 200 * Eased((across * across + down * down - 0.4) / 1.6)};
    });
    const unsigned pixel = PartOfMenu(0, 1.0 / 500).height;
    m_scratch = PlainLayer(Kind(), {pixel, menu.height}, {255, 246, 224, 170});
    m_speck = PlainLayer(Kind(), {5 * pixel, 4 * pixel}, {28, 18, 10, 190});
    CutEllipse(m_speck, 0.5);
    m_hair = Layer(40 * pixel, 16 * pixel);
    Paint(m_hair, Kind(), [&](double x, double y) {
        const double across = x / m_hair.Width(), arch = 0.9 - 3.2 * across * (1 - across);
        const double off = y / m_hair.Height() - arch - 0.1 * (across - 0.5);
        return Tint{28, 18, 10, 200 * Eased(1.6 - (off < 0 ? -off : off) * 14)};
    });
}

void COldAge::PaintBackground(Canvas& canvas) const {
    constexpr Tint dark{104, 86, 60}, light{176, 152, 114};
    Paint(canvas, Kind(), [&](double x, double y) {
        const double across = x / Height() * 9, down = y / Height() * 9;
        // Wallpaper: stripes, and a lozenge of leaves in every second one; stains over it.
        const double inStripe = Wrapped(across), stripe = Between(inStripe, 0.03, 0.97, 0.04);
        const bool leafy = WholePart(across / 2) * 2 == WholePart(across);
        const double shift = Wrapped(down * 0.7 + 0.5) - 0.5, bow = 0.5 - inStripe;
        const double leaf =
            leafy
                ? Eased((0.34 - (bow < 0 ? -bow : bow) - (shift < 0 ? -shift : shift) * 0.8 + 0.06 * Wave(8 * shift)) /
                        0.06)
                : 0;
        const double stains = Noise(1, across * 0.35, down * 0.35) * 0.6 + Noise(2, across * 3, down * 3) * 0.2;
        const double tone = 0.25 + 0.4 * stains + (leafy ? 0.08 : 0.2) * stripe + 0.16 * leaf;
        return Mixed(dark, light, tone) * (0.95 + 0.08 * Noise(3, x, y));
    });
}

void COldAge::DrawPortraits(Canvas& canvas, unsigned step) const {
    const std::vector<ShownPicture> pictures = ShownPictures();
    const auto count = unsigned(pictures.size());
    const Region stage = FreeRegion();
    const PictureRows rows = RowsOf(pictures, stage, 0.05 * Height());
    const double weave = Height() / 500;
    const Spot shift{weave * (Scattered(1, step) - 0.5), weave * (Scattered(2, step) - 0.5)};
    // The one that comes nearer hangs before its neighbours.
    std::multimap<double, unsigned> order;
    for (unsigned i = 0; i < count; ++i) order.emplace(ForwardInTurn(Phase(), i, count, 1.4, 0.5), i);
    for (const auto& [near, i] : order) {
        const ShownPicture& picture = pictures[i];
        const Region& cell = rows[i];
        const auto fit = [&](const Region& room) {
            return room.ScaleOf(picture.layer.Width(), picture.layer.Height());
        };
        const double nearest = ScaleOf(picture, std::min(1.18 * fit(cell), fit(stage)));
        const double scale = nearest * Mixed(std::min(0.9, 0.92 * fit(cell) / nearest), 1, near);
        const double width = picture.layer.Width() * scale, height = picture.layer.Height() * scale;
        const Spot middle = PlaceOf(picture, cell.Middle(), nearest), at{middle.x + shift.x, middle.y + shift.y};
        canvas.LayTransformed(m_shadow,
                              Placement::Turned({at.x + 0.02 * height, at.y + 0.05 * height}, width * shadowStretch,
                                                height * shadowStretch),
                              std::uint8_t(150 * picture.opacity));
        Show(canvas, picture, Placement::Turned(at, width, height));
    }
}

void COldAge::DrawFilm(Canvas& canvas, unsigned step) const {
    const auto place = [](double part, double side) { return std::int32_t(part * side); };
    // A scratch stays for a few exposures and trembles.
    for (unsigned i = 0; i < 3; ++i) {
        const unsigned held = (step + 2 * i) / 6;
        if (Scattered(10 + i, held) > 0.55) continue;
        const double x = Scattered(20 + i, held) + 0.003 * Scattered(30 + i, step);
        canvas.Lay(m_scratch, place(x, Width()), 0, std::uint8_t(90 + 120 * Scattered(40 + i, step)));
    }
    for (unsigned i = 0; i < 12; ++i)
        canvas.LayTransformed(
            m_speck,
            Placement::Turned({Scattered(50 + i, step) * Width(), Scattered(60 + i, step) * Height()},
                              m_speck.Width() * (0.5 + 1.3 * Scattered(70 + i, step)),
                              m_speck.Height() * (0.5 + 1.5 * Scattered(80 + i, step)), 360 * Scattered(90 + i, step)));
    if (Scattered(4, step) < 0.3)
        canvas.LayTransformed(m_hair, Placement::Turned({Scattered(5, step) * Width(), Scattered(6, step) * Height()},
                                                        m_hair.Width(), m_hair.Height(), 360 * Scattered(7, step)));
    canvas.Lay(m_vignette, 0, 0, std::uint8_t(205 + 50 * Scattered(8, step)));
}

void COldAge::DrawScene(Canvas& canvas) {
    const auto step = unsigned(Phase() * exposures);
    DrawPortraits(canvas, step);
    DrawTexts(canvas);
    TurnSepia(canvas.Frame(), Kind(), MenuSize(), !MoodColoursSet() ? brown : IsLight() ? pale : blue);
    DrawFilm(canvas, step);
}

}  // namespace AVBased
