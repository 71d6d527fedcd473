#include "dvd_effects/templates/CLayeredTitles.h"

#include "dvd_effects/canvas/painting.h"

namespace AVBased {

namespace {

constexpr Colour inks[] = {{16, 78, 102}, {168, 52, 60}, {176, 96, 18}, {52, 62, 120}};

}  // namespace

void CLayeredTitles::FinishPicture(Layer& picture, unsigned) const {
    constexpr unsigned patches = 144;
    SpreadOver(picture, Coarse(picture, patches), Instructions());
    MixIn(picture, Kind(), InMood({20, 26, 38}), 90);
}

void CLayeredTitles::MakeScenery() {
    const MoodColours* const mood = MoodColoursSet();
    for (unsigned i = 0; i < colours; ++i)
        m_inks[i] = PlainLayer(Kind(), {1, 1}, !mood ? inks[i] : i % 2 ? mood->dark : mood->bright);
}

void CLayeredTitles::PaintBackground(Canvas& canvas) const { PaintGradient(canvas, {58, 74, 98}, {22, 28, 42}); }

std::vector<CLayeredTitles::Title> CLayeredTitles::Titles() const {
    std::vector<Title> titles;
    for (const MenuText& text : Texts()) {
        if (!IsShown(text.item, FrameNumber())) continue;
        const point_t at = PositionOf(text.item, FrameNumber());
        titles.push_back(
            {double(at.x), double(at.y), double(text.layer.Width()), double(text.layer.Height()), &text.layer});
    }
    if (Texts().empty())
        for (const double top : {0.56, 0.68, 0.8})
            titles.push_back({Width() * (top - 0.45), Height() * top, Width() * 0.42, Height() * 0.06, nullptr});
    return titles;
}

void CLayeredTitles::DrawScene(Canvas& canvas) {
    ShowDissolving(0.5, [&](const ShownPicture& picture, double part, double opacity) {
        const double zoom = 1.03 + 0.08 * part;
        Show(canvas, picture, Placement::Turned({Width() / 2, Height() / 2}, Width() * zoom, Height() * zoom), opacity);
    });
    const std::vector<Title> titles = Titles();
    for (unsigned i = 0; i < titles.size(); ++i) DrawBands(canvas, titles[i], i, unsigned(titles.size()));
}

// Two bands as long as the screen, the text on the one in front, each at its own pace on the way from one side of the
// screen to the other; at rest they end behind the text.
void CLayeredTitles::DrawBands(Canvas& canvas, const Title& title, unsigned index, unsigned count) {
    const double side = index % 2 ? 1 : -1, late = 0.2 * index / count, phase = Phase();
    // 1 out of sight on the side where it comes from, 0 at its place, -1 beyond the other side.
    const auto away = [&](double delay) {
        const double in = late + delay, out = 0.8 + 0.3 * late + delay;
        return 1 - Passed(phase, in, in + 0.13) - Passed(phase, out, out + 0.11);
    };
    const double padding = title.height * 0.6, length = Width() * 1.2, high = title.height + padding;
    const double end = title.left + title.width / 2 - side * (title.width / 2 + padding);
    const double centre = end + side * length / 2, middle = title.top + title.height / 2;
    const double far = side * (Width() + length), drift = side * Width() * 0.02 * Wave(phase * 2 + 0.17 * index);
    // At rest it stands still, and so its letters are sharp.
    const double front = far * away(0.03);
    Band(canvas, index + 1, centre + far * away(0) - drift - side * padding * 1.5, middle + high * 0.24, length, high,
         0.55);
    Band(canvas, index, centre + front, middle, length, high, 0.8);
    if (title.text)
        canvas.LayTransformed(
            *title.text, Placement::Turned({title.left + title.width / 2 + front, middle}, title.width, title.height));
}

void CLayeredTitles::Band(Canvas& canvas, unsigned colour, double centre, double middle, double width, double height,
                          double opacity) {
    canvas.LayTransformed(m_inks[colour % colours], Placement::Turned({centre, middle}, width, height),
                          ByteOf(opacity));
}

}  // namespace AVBased
