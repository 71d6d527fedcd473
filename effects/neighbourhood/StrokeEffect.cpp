#include "effects/neighbourhood/StrokeEffect.h"

#include <vector>

#include "effects/base/place_hash.h"
#include "effects/base/row_loops.h"
#include "effects/neighbourhood/pixel_tones.h"

namespace AVBased {
namespace {

constexpr Property<StrokeSettings> strokeProperties[] = {
    {"stroke_strength", "50", &StrokeSettings::strength},
    {"stroke_color", "0", &StrokeSettings::colour},
};

// Parallel strokes, each two pixels wide and of random darkness at knots 32 pixels apart, with an even change between.
class Streaks {
 public:
    explicit Streaks(unsigned kind) {
        for (unsigned stroke = 0; stroke < strokes; ++stroke)
            for (unsigned knot = 0; knot < knots; ++knot)
                m_darkness[stroke][knot] = FrameHash(0, 0).Row(kind, stroke)(knot) >> 24;
    }
    std::uint8_t operator()(unsigned across, unsigned along) const {
        const unsigned* const stroke = m_darkness[across / 2 % strokes];
        const unsigned knot = along / knotDistance % knots, part = along % knotDistance;
        const unsigned sum = stroke[knot] * (knotDistance - part) + stroke[(knot + 1) % knots] * part;
        return std::uint8_t(sum / knotDistance);
    }

 private:
    static constexpr unsigned strokes = StrokePaper::side / 2, knotDistance = 32,
                              knots = StrokePaper::side / knotDistance;
    unsigned m_darkness[strokes][knots];
};

constexpr unsigned reach = 3, side = 2 * reach + 1;

// In 16 bits, so that many fit a vector.
std::uint16_t Excess(std::uint16_t value, std::uint16_t limit) { return std::uint16_t(std::max(value, limit) - limit); }

// A product's part above its lower 16 bits.
std::uint16_t Upper(std::uint16_t a, std::uint16_t b) { return std::uint16_t(std::uint32_t(a) * b >> 16); }

// `sums` of columns, from `reach` before the first pixel on.
void DrawRow(std::uint8_t* __restrict drawn, const std::uint8_t* __restrict tones, const std::uint16_t* __restrict sums,
             const std::uint8_t* __restrict strokes, const std::uint8_t* __restrict crossStrokes,
             const std::uint8_t* __restrict grain, unsigned width, std::uint16_t strength) {
    for (std::size_t x = 0; x < width; ++x) {
        std::uint16_t sum = 0;
        for (unsigned i = 0; i < side; ++i) sum = std::uint16_t(sum + sums[x + i]);
        const std::uint16_t mean = Upper(sum, 1338);
        const auto darkness = std::uint16_t(255 - mean);
        const auto hatched =
            std::uint16_t(Excess(darkness, strokes[x]) + Excess(darkness, std::uint16_t(112 + crossStrokes[x])));
        const auto shade = std::uint16_t(std::uint16_t(hatched * strength) >> 5);
        const std::uint16_t contour = Excess(mean, std::uint16_t(tones[x] + 5 + grain[x]));
        const auto pressure = std::uint16_t(32 * (96 + (darkness >> 1)));
        const std::uint16_t line = Upper(std::uint16_t(contour * strength), pressure);
        // The more graphite there is, the less comes on top.
        const auto graphite = std::min<std::uint16_t>(std::uint16_t(line + shade), 511);
        const std::uint16_t black = Upper(std::uint16_t(graphite << 6), std::uint16_t(1024 - graphite));
        drawn[x] = std::uint8_t(255 - grain[x] - std::uint16_t(std::uint16_t(black * 230) >> 8));
    }
}

void TonesOfLuma(const std::uint8_t* row, std::uint8_t* __restrict tones, unsigned width) {
    for (unsigned x = 0; x < width; ++x) tones[x] = ClampToByte((row[x] - 16) * 298 >> 8);
}

void DrawLuma(std::uint8_t* row, const std::uint8_t* __restrict drawn, unsigned width) {
    for (unsigned x = 0; x < width; ++x) row[x] = std::uint8_t(16 + (drawn[x] * 220 >> 8));
}

void KeepColour(ComponentView plane, int colour) {
    ForEachSample(plane, [colour](std::uint8_t chroma) { return std::uint8_t(128 + ((chroma - 128) * colour >> 8)); });
}

void AddRow(std::uint16_t* __restrict sums, const std::uint8_t* __restrict row, unsigned width) {
    for (unsigned x = 0; x < width; ++x) sums[x] = std::uint16_t(sums[x] + row[x]);
}
void SubtractRow(std::uint16_t* __restrict sums, const std::uint8_t* __restrict row, unsigned width) {
    for (unsigned x = 0; x < width; ++x) sums[x] = std::uint16_t(sums[x] - row[x]);
}

// Reads each row's tones once, `reach` rows before it is drawn.
template <class Read, class Write>
void Draw(unsigned width, unsigned height, const StrokePaper& paper, std::uint16_t strength, InstructionSet set,
          Read read, Write write) {
    if (width == 0 || height == 0) return;
    const auto add = variantsOf<AddRow>.For(set), subtract = variantsOf<SubtractRow>.For(set);
    const auto draw = variantsOf<DrawRow>.For(set);
    std::vector<std::uint8_t> ring(std::size_t(side) * width), drawn(width);
    std::vector<std::uint16_t> sums(width + 2 * reach);
    std::uint16_t* const inside = &sums[reach];
    const auto tones = [&](unsigned y) { return &ring[std::size_t(y % side) * width]; };
    const auto nearest = [&](unsigned y, unsigned up, unsigned down) {
        return tones(std::min(y + down - std::min(y + down, up), height - 1));
    };
    for (unsigned y = 0; y < std::min(reach + 1, height); ++y) read(y, tones(y));
    for (unsigned i = 0; i < side; ++i) add(inside, nearest(0, reach, i), width);
    for (unsigned y = 0; y < height; ++y) {
        std::fill_n(&sums[0], reach, *inside);
        std::fill_n(inside + width, reach, inside[width - 1]);
        for (unsigned x = 0; x < width; x += StrokePaper::side)
            draw(&drawn[x], tones(y) + x, &sums[x], paper.Strokes(y), paper.CrossStrokes(y), paper.Grain(y),
                 std::min(StrokePaper::side, width - x), strength);
        write(y, drawn.data(), tones(y));
        subtract(inside, nearest(y, reach, 0), width);
        if (height - y > reach + 1) read(y + reach + 1, tones(y + reach + 1));
        add(inside, nearest(y, 0, reach + 1), width);
    }
}

}  // namespace

StrokePaper::StrokePaper() : m_places(3 * side * side) {
    const Streaks lines(0), crossLines(1);
    const auto random = [](unsigned x, unsigned y) { return int(FrameHash(0, 0).Row(2, y % side)(x % side) >> 24); };
    for (unsigned y = 0; y < side; ++y)
        for (unsigned x = 0; x < side; ++x) {
            // Fibres are a little wider than pixels.
            const int sum = random(x, y) + random(x + 1, y) + random(x, y + 1) + random(x + 1, y + 1);
            const unsigned tooth = ClampToByte(sum / 2 - 127);
            const auto place = [&](unsigned plane) -> std::uint8_t& { return m_places[(plane * side + y) * side + x]; };
            place(0) = std::uint8_t(34 + (lines(x + y, x - y) * 150u >> 8) + (tooth * 70 >> 8));
            place(1) = std::uint8_t((crossLines(2 * x - y, x + 2 * y) * 110u >> 8) + (tooth * 70 >> 8));
            place(2) = std::uint8_t(tooth * 10 >> 8);
        }
}

CStrokeVideoImageEffect::CStrokeVideoImageEffect() : CSettingsEffect(effectNameStroke, strokeProperties) {}

void CStrokeVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    const auto strength = std::uint16_t(std::clamp(m_settings.strength, 0, 100));
    const int colour = std::clamp(m_settings.colour, 0, 100) * 256 / 100;
    ForFrame(
        [&](const PackedView& picture) {
            Draw(
                picture.width, picture.height, m_paper, strength, Instructions(),
                [&](unsigned y, std::uint8_t* tones) {
                    variantsOf<TonesOfPixels>.For(Instructions())(picture.Row(y), tones, picture.width);
                },
                [&](unsigned y, const std::uint8_t* drawn, const std::uint8_t* tones) {
                    variantsOf<ChangeTones>.For(Instructions())(picture.Row(y), drawn, tones, picture.width, colour);
                });
        },
        [&](const PlanarView& picture) {
            const ComponentView& luma = picture.plane[0];
            Draw(
                luma.width, luma.height, m_paper, strength, Instructions(),
                [&](unsigned y, std::uint8_t* tones) {
                    variantsOf<TonesOfLuma>.For(Instructions())(luma.Row(y), tones, luma.width);
                },
                [&](unsigned y, const std::uint8_t* drawn, const std::uint8_t*) {
                    variantsOf<DrawLuma>.For(Instructions())(luma.Row(y), drawn, luma.width);
                });
            for (unsigned p = 1; p < 3; ++p) variantsOf<KeepColour>.For(Instructions())(picture.plane[p], colour);
        },
        *frame);
}

}  // namespace AVBased
