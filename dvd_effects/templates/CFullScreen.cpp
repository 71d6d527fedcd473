#include "dvd_effects/templates/CFullScreen.h"

#include "dvd_effects/canvas/painting.h"

namespace AVBased {

void CFullScreen::PaintBackground(Canvas& canvas) const { PaintGradient(canvas, {38, 44, 56}, {10, 11, 15}); }

void CFullScreen::DrawScene(Canvas& canvas) {
    constexpr double dissolve = 0.35;
    ShowDissolving(dissolve, [&](ShownPicture picture, double part, double opacity) {
        picture.caption = nullptr;
        Show(canvas, picture, PlaceAt(picture, part), opacity);
    });
    if (!ShownPictures().empty()) canvas.Lay(m_shade, 0, std::int32_t(MenuSize().height - m_shade.Height()));
    // The names stand over the shade.
    ShowDissolving(dissolve, [&](const ShownPicture& picture, double part, double opacity) {
        ShowCaption(canvas, picture, PlaceAt(picture, part), opacity);
    });
    DrawProgress(canvas, {0.06 * Width(), 0.962 * Height(), 0.88 * Width(), 0.005 * Height()}, m_track, m_done);
    DrawTexts(canvas);
}

// At `part` of its time on the screen. It drifts no farther than it is larger than the screen.
Placement CFullScreen::PlaceAt(const ShownPicture& picture, double part) const {
    constexpr double least = 1.02, more = 0.12;
    const bool comesNearer = picture.index % 2 == 0, toTheRight = picture.index / 2 % 2 == 0;
    const double zoom = least + more * (comesNearer ? part : 1 - part);
    const double drift = (zoom - 1) / 2 * (part * 2 - 1);
    const Spot centre{Width() * (0.5 + (toTheRight ? drift : -drift)),
                      Height() * (0.5 + (comesNearer ? drift : -drift) / 2)};
    return Placement::Turned(centre, Width() * zoom, Height() * zoom);
}

void CFullScreen::MakeScenery() {
    m_shade = Layer(MenuSize().width, std::max(1u, MenuSize().height * 2 / 5));
    FillGradient(m_shade, Kind(), InMood({0, 0, 0, 0}), InMood({0, 0, 0, 170}));
    const Colour line = IsLight() ? Colour{60, 52, 46} : Colour{255, 255, 255};
    m_track = PlainLayer(Kind(), {1, 1}, {line.red, line.green, line.blue, 90});
    m_done = PlainLayer(Kind(), {1, 1}, line);
}

}  // namespace AVBased
