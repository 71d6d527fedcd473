#include "dvd_effects/templates/CRectangles.h"

#include "dvd_effects/canvas/painting.h"

namespace AVBased {

namespace {

constexpr unsigned emptyOnes = 9;
constexpr Colour farColour{14, 44, 66};

// How near a picture passes: 1 is the nearest. Three planes, so that neighbours in the list do not meet.
double NearnessOf(unsigned index) {
    constexpr double planes[] = {1, 0.55, 0.75};
    return planes[index % 3];
}
// Near ones cross twice in a loop.
int CrossingsOf(double nearness) { return nearness > 0.7 ? 2 : 1; }

// The middle of something on its `crossings` ways through a screen, out of sight where it starts anew.
double Crossing(double begun, int crossings, bool toTheLeft, double screen, double width) {
    const double way = Wrapped(begun * crossings), place = (screen + width) * way - width / 2;
    return toTheLeft ? screen - place : place;
}

}  // namespace

void CRectangles::FinishPicture(Layer& picture, unsigned index) const {
    // Air lies between the viewer and what is far.
    MixIn(picture, Kind(), farColour, unsigned(150 * (1 - NearnessOf(index))));
}

void CRectangles::PaintBackground(Canvas& canvas) const { PaintGradient(canvas, {10, 28, 48}, {22, 92, 110}); }

void CRectangles::DrawScene(Canvas& canvas) {
    const std::vector<ShownPicture> pictures = ShownPictures();
    const auto count = unsigned(pictures.size());
    const double thin = std::max(1.0, Height() / 360);
    const Region stage = FreeRegion();
    for (unsigned i = 0; i < emptyOnes; ++i) {
        const double nearness = 0.25 + 0.75 * Scattered(1, i), width = Width() * nearness * 0.34;
        const double begun = Wrapped(Phase() + i * 0.618);
        const Spot centre{Crossing(begun, CrossingsOf(nearness), i % 2 == 0, Width(), width + 2 * thin),
                          Height() * Scattered(2, i)};
        Outline(canvas, centre, width, width * (0.35 + 0.5 * Scattered(3, i)), thin, 0.12 + 0.3 * nearness);
    }
    for (const double plane : {0.55, 0.75, 1.0})
        for (const ShownPicture& picture : pictures) {
            if (NearnessOf(picture.index) != plane) continue;
            const double width = picture.layer.Width() * plane, height = picture.layer.Height() * plane;
            const int crossings = CrossingsOf(plane);
            // Evenly spread along the way, whatever their number.
            const double begun = Wrapped(Phase() + double(picture.index) / count / crossings);
            const double lane = Wrapped(0.15 + picture.index * 0.382);
            const Spot centre{Crossing(begun, crossings, picture.index % 2 != 0, Width(), width + 6 * thin),
                              stage.top + Mixed(height / 2, std::max(height / 2, stage.height - height / 2), lane)};
            Show(canvas, picture, Placement::Turned(centre, width, height));
            Outline(canvas, centre, width + 4 * thin, height + 4 * thin, thin, picture.opacity * plane);
        }
    DrawTexts(canvas);
}

void CRectangles::Outline(Canvas& canvas, Spot centre, double width, double height, double thickness, double opacity) {
    const Layer& ink = m_ink.For(Kind(), {1, 1}, [&] { return PlainLayer(Kind(), {1, 1}, {255, 255, 255}); });
    const auto shown = ByteOf(opacity);
    for (const int side : {-1, 1}) {
        const double dx = (width - thickness) / 2 * side, dy = (height - thickness) / 2 * side;
        canvas.LayTransformed(ink, Placement::Turned({centre.x, centre.y + dy}, width, thickness), shown);
        canvas.LayTransformed(ink, Placement::Turned({centre.x + dx, centre.y}, thickness, height - 2 * thickness),
                              shown);
    }
}

}  // namespace AVBased
