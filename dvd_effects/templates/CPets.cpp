#include "dvd_effects/templates/CPets.h"

#include "dvd_effects/canvas/painting.h"
#include "dvd_effects/templates/scenery.h"

namespace AVBased {

namespace {

constexpr Colour frameColours[] = {{255, 132, 108}, {255, 201, 74}, {74, 182, 190}, {164, 124, 214}};

// Parts of the loop: when the first and the last picture hop in, on the spot and away, and how long that takes.
constexpr double lastIn = 0.3, firstSpot = 0.46, lastSpot = 0.74, firstOut = 0.84, lastOut = 0.92;
constexpr double hopTime = 0.08, spotTime = 0.05, settleTime = 0.07, crouchTime = 0.025;

// How a picture stands on its place.
struct Stance {
    double above = 0;    // its foot, in heights of a hop
    double absent = 0;   // how much of the way down out of the menu its foot is
    double stretch = 0;  // of its height; what it loses in width
};

// Gives way under a landing and swings back.
double Settled(double since, double time) {
    const double left = std::clamp(1 - since / time, 0.0, 1.0);
    return since > 0 ? -0.2 * left * Wave(1.5 * (1 - left)) : 0;
}
// Gives way before a hop, as one that gathers its strength.
double Crouched(double until) { return -0.12 * Between(1 - until / crouchTime, 0, 1, 0.5); }
double Arch(double part) { return part > 0 && part < 1 ? 4 * part * (1 - part) : 0; }

Stance StanceAt(double phase, double order) {
    const double in = Mixed(0.0, lastIn, order), spot = Mixed(firstSpot, lastSpot, order);
    const double out = Mixed(firstOut, lastOut, order), lands = in + hopTime, landsAgain = spot + spotTime;
    if (phase < in || phase >= out + hopTime) return {0, 1, 0};
    Stance stance;
    const double entering = (phase - in) / hopTime, leaving = (phase - out) / hopTime;
    const double flying = entering < 1 ? 1 - entering : std::max(0.0, leaving);
    stance.absent = flying;
    stance.above = 1.3 * Arch(flying) + 0.35 * Arch((phase - spot) / spotTime);
    stance.stretch = 0.12 * Arch(flying) + 0.06 * Arch((phase - spot) / spotTime) + Settled(phase - lands, settleTime) +
                     0.5 * Settled(phase - landsAgain, settleTime) + Crouched(spot - phase) + Crouched(out - phase);
    return stance;
}

// Where the trail in front runs, by the part of the way across.
double TrailAt(double across) { return 0.92 + 0.02 * Wave(1.3 * across); }

// A paw in a square of side 1 whose toes point to the right: how much of a place it covers.
double Paw(double x, double y, double pixel) {
    constexpr struct {
        double x, y, width, height;
    } pads[] = {{0.32, 0.5, 0.25, 0.3},
                {0.56, 0.14, 0.14, 0.1},
                {0.8, 0.36, 0.16, 0.11},
                {0.8, 0.64, 0.16, 0.11},
                {0.56, 0.86, 0.14, 0.1}};
    double covered = 0;
    for (const auto& pad : pads) {
        const double across = (x - pad.x) / pad.width, down = (y - pad.y) / pad.height;
        covered = std::max(covered, (1 - across * across - down * down) * pad.height / 2 / pixel + 0.5);
    }
    return std::clamp(covered, 0.0, 1.0);
}

}  // namespace

FrameSize CPets::UsualBox() const { return BoxInRows(); }

void CPets::FinishPicture(Layer& layer, unsigned index) const {
    const unsigned side = std::min(layer.Width(), layer.Height()), border = side / 13 + 1;
    const double radius = 0.2 * side;
    layer = Framed(layer, Kind(), border, frameColours[index % std::size(frameColours)]);
    RoundCorners(layer, radius);
}

void CPets::MakeScenery() {
    m_shadow = SoftShadow(Kind(), 1);
    const unsigned side = PartOfMenu(0, 0.07).height;
    m_paw = Layer(side, side);
    Paint(m_paw, Kind(), [&](double x, double y) {
        return Tint{96, 66, 44, 200 * Paw(x / side, y / side, 1.0 / side)};
    });
    // A ball of felt with two light seams.
    m_ball = Layer(Units(0.8), Units(0.8));
    const auto disc = [](double x, double y) { return x * x + y * y; };
    PaintOver(m_ball, Kind(), {214, 226, 62}, [&](double x, double y) { return disc(x, y) < 1; });
    PaintOver(m_ball, Kind(), {250, 250, 236}, [&](double x, double y) {
        const double left = disc(x + 1.25, y), right = disc(x - 1.25, y);
        return disc(x, y) < 1 && ((left > 0.72 && left < 1) || (right > 0.72 && right < 1));
    });
}

void CPets::PaintBackground(Canvas& canvas) const {
    constexpr Tint skyTop{142, 208, 240}, skyLow{240, 248, 232};
    constexpr struct {
        double top, swing, waves, shift;
        Tint crest, foot;
    } hills[] = {{0.42, 0.06, 0.55, 0.1, {196, 226, 142}, {168, 212, 118}},
                 {0.62, 0.05, 0.7, 0.55, {162, 210, 104}, {128, 186, 82}},
                 {0.83, 0.03, 0.9, 0.2, {124, 188, 78}, {88, 154, 60}}};
    Paint(canvas, Kind(), [&](double x, double y) {
        const double across = x / Width(), down = y / Height(), wide = x / Height();
        const double cloud =
            Eased((0.65 * Noise(1, wide * 2, down * 5) + 0.35 * Noise(2, wide * 7, down * 14) - 0.55) / 0.2);
        Tint tint = Mixed(Mixed(skyTop, skyLow, Eased(down / 0.5)), Tint{255, 255, 255}, 0.7 * cloud);
        for (const auto& hill : hills) {
            const double under = down - hill.top - hill.swing * Wave(hill.waves * across + hill.shift);
            const double tufts = 0.96 + 0.07 * Noise(4, wide * 60, down * 25);
            const Tint grass = Mixed(hill.crest, hill.foot, Eased(under / 0.3)) * tufts;
            tint = Mixed(tint, grass, std::clamp(under * Height() + 0.5, 0.0, 1.0));
        }
        return tint;
    });
}

void CPets::DrawPaws(Canvas& canvas) const {
    constexpr unsigned prints = 18;
    // One trail to the right in front, one to the left farther away; a print fades some time after the step.
    for (unsigned i = 0; i < 2 * prints; ++i) {
        const bool far = i >= prints;
        const unsigned k = i % prints;
        const double part = (k + 0.5) / prints, age = Wrapped(Phase() - part + (far ? 0.35 : 0));
        const double shown = Between(age, 0, 0.55, 0.04) * Mixed(1.0, 0.5, Eased(age / 0.55));
        const double across = far ? 1 - part : part, side = (k % 2 ? 1 : -1) * (far ? 0.016 : 0.026);
        const double down = (far ? 0.655 + 0.02 * Wave(1.3 * across) : TrailAt(across)) + side;
        const double size = m_paw.Width() * (far ? 0.6 : 1);
        const double degrees = (far ? 180 : 0) + 9 * Wave(1.3 * across + 0.25) + (k % 2 ? 8 : -8);
        canvas.LayTransformed(m_paw, Placement::Turned({across * Width(), down * Height()}, size, size, degrees),
                              ByteOf(shown));
    }
}

void CPets::DrawBall(Canvas& canvas) const {
    if (!m_ball) return;  // there was no memory for it
    constexpr unsigned bounces = 9;
    // A little ahead of the prints; it comes in before the loop's end has shown the last of them.
    const double across = Mixed(-0.05, 1.05, Wrapped(Phase() + 0.07)), hop = Wrapped(across * bounces);
    const double size = m_ball.Width(), high = 1.1 * Unit() * Arch(hop), flat = 0.16 * Eased(1 - high / (0.3 * Unit()));
    const double ground = TrailAt(across) * Height() + 0.3 * size, x = across * Width();
    canvas.LayTransformed(m_shadow, Placement::Turned({x, ground}, 1.1 * size, 0.3 * size),
                          ByteOf(0.6 - 0.3 * high / Unit()));
    // It rolls as far as it goes.
    const double turned = 360 * Wrapped(across * Width() / (3.14159 * size));
    const Placement round = Placement::Turned({0, 0}, size, size, turned);
    const auto squashed = [&](Spot corner) {
        return Spot{x + corner.x * (1 + 0.5 * flat), ground - high - 0.5 * size * (1 - flat) + corner.y * (1 - flat)};
    };
    canvas.LayTransformed(m_ball, {squashed(round.topLeft), squashed(round.topRight), squashed(round.bottomRight),
                                   squashed(round.bottomLeft)});
}

void CPets::DrawScene(Canvas& canvas) {
    DrawPaws(canvas);
    DrawBall(canvas);
    const std::vector<ShownPicture> pictures = ShownPictures();
    const auto count = unsigned(pictures.size());
    const PictureRows rows = RowsOf(pictures, FreeRegion(), 0.05 * Height());
    for (const ShownPicture& picture : pictures) {
        const Region& cell = rows[picture.index];
        const double scale = ScaleOf(picture, 0.97 * cell.ScaleOf(picture.layer.Width(), picture.layer.Height()));
        const Stance stance = StanceAt(Phase(), count > 1 ? double(picture.index) / (count - 1) : 0);
        const double height = picture.layer.Height() * scale * (1 + stance.stretch);
        const double width = picture.layer.Width() * scale * (1 - 0.6 * stance.stretch);
        const Spot place = PlaceOf(picture, cell.Middle(), scale);
        const double ground = place.y + picture.layer.Height() * scale / 2;
        const double foot = ground + stance.absent * (Height() + picture.layer.Height() * scale * 1.2 - ground) -
                            stance.above * 0.3 * Height();
        const Spot middle{place.x + 3 * (Scattered(1, picture.index) - 0.5), foot - height / 2};
        const double near = std::clamp(1 - (ground - foot) / (0.3 * Height()), 0.0, 1.0) * (1 - stance.absent);
        canvas.LayTransformed(m_shadow, Placement::Turned({middle.x, ground}, width * 0.95, 0.09 * height),
                              std::uint8_t(150 * near * picture.opacity));
        const double tilt = (picture.index % 2 ? 1 : -1) * (2 + 14 * stance.absent);
        Show(canvas, picture, Placement::Turned(middle, width, height, tilt));
    }
    DrawTexts(canvas);
}

}  // namespace AVBased
