#include "dvd_effects/templates/CRectangles.h"

#include <iterator>

#include "dvd_effects/canvas/painting.h"

namespace AVBased {

namespace {

constexpr unsigned emptyOnes = 9;
constexpr Colour farColour{14, 44, 66};

// Pictures pass in three planes: those of one go the same way, so that none hides another there. 1 is the nearest.
struct Plane {
    double nearness;
    int crossings;  // in a loop: near ones go faster
    bool isLeftward;
    double lane;  // from the top of the stage to its bottom
};
constexpr Plane planes[] = {{1, 2, false, 0.6}, {0.55, 1, false, 0.98}, {0.75, 2, true, 0.06}};
constexpr unsigned fromFarToNear[] = {1, 2, 0};
int CrossingsOf(double nearness) { return nearness > 0.7 ? 2 : 1; }

// The middle of something on its `crossings` ways through a screen, out of sight where it starts anew.
double Crossing(double begun, int crossings, bool toTheLeft, double screen, double width) {
    const double way = Wrapped(begun * crossings), place = (screen + width) * way - width / 2;
    return toTheLeft ? screen - place : place;
}

}  // namespace

void CRectangles::FinishPicture(Layer& picture, unsigned index) const {
    // Air lies between the viewer and what is far.
    MixIn(picture, Kind(), InMood(farColour), unsigned(150 * (1 - planes[index % std::size(planes)].nearness)));
}

void CRectangles::MakeScenery() {
    constexpr Colour chalk{255, 255, 255}, ink{40, 62, 74};
    m_ink = PlainLayer(Kind(), {1, 1}, IsLight() ? ink : chalk);
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
    for (const unsigned k : fromFarToNear) {
        const Plane& plane = planes[k];
        // Always at least two are on their way there, the same one twice where need be: so the screen is never empty.
        const unsigned own = (count + std::size(planes) - 1 - k) / std::size(planes);
        const unsigned inPlane = own ? std::max(2u, own) : 0;
        for (unsigned inOrder = 0; inOrder < inPlane; ++inOrder) {
            const unsigned i = k + inOrder % own * unsigned(std::size(planes));
            const ShownPicture& picture = pictures[i];
            const double width = picture.layer.Width() * plane.nearness,
                         height = picture.layer.Height() * plane.nearness;
            // Evenly spread along the way, whatever their number, and the planes apart from each other.
            const double order = (inOrder + 0.3 * k) / inPlane;
            const double begun = Wrapped(Phase() + order / plane.crossings);
            const double lane = plane.lane + 0.12 * (Scattered(4, i) - 0.5), room = stage.height - height;
            const Spot centre{Crossing(begun, plane.crossings, plane.isLeftward, Width(), width + 6 * thin),
                              stage.top + height / 2 + std::max(0.0, room) * std::clamp(lane, 0.0, 1.0)};
            Show(canvas, picture, Placement::Turned(centre, width, height));
            Outline(canvas, centre, width + 4 * thin, height + 4 * thin, thin, picture.opacity * plane.nearness);
        }
    }
    DrawTexts(canvas);
}

void CRectangles::Outline(Canvas& canvas, Spot centre, double width, double height, double thickness, double opacity) {
    const auto shown = ByteOf(opacity);
    for (const int side : {-1, 1}) {
        const double dx = (width - thickness) / 2 * side, dy = (height - thickness) / 2 * side;
        canvas.LayTransformed(m_ink, Placement::Turned({centre.x, centre.y + dy}, width, thickness), shown);
        canvas.LayTransformed(m_ink, Placement::Turned({centre.x + dx, centre.y}, thickness, height - 2 * thickness),
                              shown);
    }
}

}  // namespace AVBased
