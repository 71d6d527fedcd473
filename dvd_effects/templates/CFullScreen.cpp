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
    DrawRound(canvas);
    DrawTexts(canvas);
}

// A part for each picture, which is drawn while that is shown.
void CFullScreen::DrawRound(Canvas& canvas) const {
    constexpr double notch = 0.004;
    const auto count = unsigned(ShownPictures().size());
    const Turn turn = TurnAt(Phase(), count);
    const double part = 1.0 / std::max(1u, count), back = Passed(Phase(), 1 - part / 2, 1);
    for (unsigned i = 0; i < count; ++i) {
        const double length = part - (count > 1 ? notch : 0);
        DrawLine(canvas, m_track, i * part, i * part + length, 1);
        // All of it goes where the loop does, before it starts anew.
        const double drawn = i < turn.index ? 1 : i == turn.index ? turn.part : 0;
        DrawLine(canvas, m_done, i * part, i * part + drawn * length, 1 - back);
    }
}

// From its part `from` to its part `to` of the line that goes round the screen clockwise, from the lower left corner.
void CFullScreen::DrawLine(Canvas& canvas, const Layer& ink, double from, double to, double opacity) const {
    const double margin = 0.045 * Height(), thick = std::max(1.0, Height() / 270);
    const double left = margin, top = margin, right = Width() - margin, bottom = Height() - margin;
    const Spot corners[] = {{left, bottom}, {left, top}, {right, top}, {right, bottom}, {left, bottom}};
    const double around = 2 * (right - left + bottom - top);
    double before = 0;
    for (unsigned i = 0; i < 4; ++i) {
        const double length = Distance(corners[i], corners[i + 1]);
        const auto at = [&](double part) {
            const double way = std::clamp((part * around - before) / length, 0.0, 1.0);
            return Spot{Mixed(corners[i].x, corners[i + 1].x, way), Mixed(corners[i].y, corners[i + 1].y, way)};
        };
        canvas.LayTransformed(ink, Placement::Along(at(from), at(to), thick), ByteOf(opacity));
        before += length;
    }
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
