#include "effects/SpotlightEffect.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "effects/property_table.h"

namespace AVBased {
namespace {

constexpr Property<SpotlightSettings> spotlightProperties[] = {
    {"spotlight_x", "250", &SpotlightSettings::x},
    {"spotlight_y", "250", &SpotlightSettings::y},
    {"spotlight_r", "250", &SpotlightSettings::radius},
    {"spotlight_brightness", "250", &SpotlightSettings::brightness},
    {"spotlight_color", "250", &SpotlightSettings::colour},
    {"spotlight_density", "250", &SpotlightSettings::density},
};

// The light at one pixel: how much of the colour, in 1/65536, and how much brightness.
struct Light {
    std::uint32_t weight = 0, brightness = 0;
};

// (channel * (65536 - weight) + colour * weight) / 65536 + added, modulo 2^32: what falls below black turns white.
std::uint32_t Tint(std::uint32_t channel, std::uint32_t colour, std::uint32_t weight, std::uint32_t added) {
    return std::min((((channel << 16) + (colour - channel) * weight) >> 16) + added, 255u);
}

struct Range {
    unsigned begin, end;
};

class Disc {
 public:
    explicit Disc(const SpotlightSettings& settings)
        : m_x(settings.x), m_y(settings.y), m_radius(settings.radius), m_ring(3 * settings.radius >> 2) {
        if (m_ring == 0) return;
        const std::int32_t ring = std::int32_t(m_ring);
        const std::int32_t weight = std::int32_t(std::uint32_t(settings.density) << 16) / 100;
        m_core = {std::uint32_t(weight), std::uint32_t(settings.brightness)};
        m_step = {std::uint32_t(weight / ring),
                  std::uint32_t(std::int32_t(std::uint32_t(settings.brightness) << 8) / ring)};
    }

    bool Lights(unsigned width, unsigned height) const { return m_ring != 0 && m_x <= width && m_y <= height; }
    // The disc's box in a picture that it lights.
    Range Columns(unsigned width) const { return Extent(m_x, width); }
    Range Rows(unsigned height) const { return Extent(m_y, height); }
    // No square wraps, and the root of each in single precision truncates as in double precision.
    bool IsHandy() const { return m_radius < 2048; }

    // Calls work(x, y, light) for every lit pixel of a picture, in scan order.
    template <class Work>
    void ForEachPixel(unsigned width, unsigned height, Work work) const {
        if (!Lights(width, height)) return;
        const Range columns = Columns(width), rows = Rows(height);
        const std::uint32_t core = (m_radius - m_ring) * (m_radius - m_ring);
        for (unsigned y = rows.begin; y < rows.end; ++y)
            for (unsigned x = columns.begin; x < columns.end; ++x) {
                const std::uint32_t square = (x - m_x) * (x - m_x) + (y - m_y) * (y - m_y);
                if (square > m_radius * m_radius) continue;
                const std::uint32_t toRim = m_radius - std::uint32_t(std::sqrt(double(square)));
                work(x, y, square > core ? InRing(m_step, toRim) : m_core);
            }
    }

    // The columns of the box that row y of the box lights, for a handy disc.
    Range Chord(unsigned y, Range box) const {
        const std::int32_t dy = std::int32_t(y - m_y), radius = std::int32_t(m_radius);
        const unsigned half = unsigned(std::sqrt(double(radius * radius - dy * dy)));
        return {std::max(box.begin, m_x > half ? m_x - half : 0), std::min(box.end, m_x + half + 1)};
    }

    // The light of the columns of a chord.
    void LightChord(unsigned y, Range chord, std::uint32_t* weights, std::uint32_t* brightnesses) const {
        // Copies, which the stores below cannot change.
        const Light core = m_core, step = m_step;
        const std::int32_t centre = std::int32_t(m_x), radius = std::int32_t(m_radius), dy = std::int32_t(y - m_y);
        const std::int32_t coreSquare = std::int32_t((m_radius - m_ring) * (m_radius - m_ring));
        for (unsigned x = chord.begin; x < chord.end; ++x) {
            const std::int32_t dx = std::int32_t(x) - centre, square = dx * dx + dy * dy;
            const Light ring = InRing(step, std::uint32_t(radius - std::int32_t(std::sqrt(float(square)))));
            const std::uint32_t inCore = square <= coreSquare ? ~0u : 0u;
            weights[x] = (core.weight & inCore) | (ring.weight & ~inCore);
            brightnesses[x] = (core.brightness & inCore) | (ring.brightness & ~inCore);
        }
    }

 private:
    Range Extent(std::uint32_t centre, unsigned size) const {
        return {centre > m_radius ? centre - m_radius : 0, std::min(size, centre + m_radius)};
    }
    static Light InRing(Light step, std::uint32_t toRim) {
        return {step.weight * toRim, std::uint32_t(std::int32_t(toRim * step.brightness) >> 8)};
    }

    std::uint32_t m_x, m_y, m_radius, m_ring;
    Light m_core, m_step;  // the step is that of one pixel towards the rim
};

// The light of one row at a time, dark beside the disc's chord. A few dark columns past the picture complete the last
// chroma sample's group.
class LightRow {
 public:
    explicit LightRow(unsigned width) : m_weights(width + 4), m_brightnesses(width + 4) {}

    // The columns to treat: the chord, widened to whole groups of 2^shift columns.
    Range Light(const Disc& disc, unsigned y, Range box, unsigned shift) {
        const Range chord = disc.Chord(y, box);
        const unsigned group = 1u << shift;
        const Range groups{chord.begin >> shift << shift, (chord.end + group - 1) >> shift << shift};
        for (Range gap : {Range{groups.begin, chord.begin}, Range{chord.end, groups.end}})
            for (unsigned x = gap.begin; x < gap.end; ++x) m_weights[x] = m_brightnesses[x] = 0;
        disc.LightChord(y, chord, m_weights.data(), m_brightnesses.data());
        return groups;
    }
    const std::uint32_t* weights() const { return m_weights.data(); }
    const std::uint32_t* brightnesses() const { return m_brightnesses.data(); }

 private:
    std::vector<std::uint32_t> m_weights, m_brightnesses;
};

void TintPixels(Rgba32* row, Range range, const LightRow& light, std::uint32_t colour) {
    const std::uint32_t *weights = light.weights(), *brightnesses = light.brightnesses();
    for (unsigned x = range.begin; x < range.end; ++x) {
        const std::uint32_t p = LoadWord(row + x), weight = weights[x], added = brightnesses[x];
        StoreWord(row + x,
                  WithAlphaOf(p, Tint(Blue(p), Blue(colour), weight, added),
                              Tint(Green(p), Green(colour), weight, added), Tint(Red(p), Red(colour), weight, added)));
    }
}

void TintLuma(std::uint8_t* row, Range range, const LightRow& light, std::uint32_t colour) {
    const std::uint32_t *weights = light.weights(), *brightnesses = light.brightnesses();
    for (unsigned x = range.begin; x < range.end; ++x)
        row[x] = std::uint8_t(Tint(row[x], colour, weights[x], brightnesses[x]));
}

// Deliberate: shared chroma is tinted once for each luma position, and never brightened.
template <unsigned shift>
void TintChroma(std::uint8_t* row, Range range, const LightRow& light, std::uint32_t colour) {
    const std::uint32_t* weights = light.weights();
    for (unsigned i = 0; i < 1u << shift; ++i)
        for (std::size_t x = range.begin; x < range.end; ++x)
            row[x] = std::uint8_t(Tint(row[x], colour, weights[(x << shift) + i], 0));
}

void LightPackedRows(const SpotlightSettings& settings, const Disc& disc, LightRow& light, const PackedView& picture) {
    const Range box = disc.Columns(picture.width), rows = disc.Rows(picture.height);
    for (unsigned y = rows.begin; y < rows.end; ++y)
        TintPixels(picture.Row(y), light.Light(disc, y, box, 0), light, settings.colour);
}

template <unsigned shift>
void LightPlanarRows(const SpotlightSettings& settings, const Disc& disc, LightRow& light, const PlanarView& picture) {
    const ComponentView& luma = picture.plane[0];
    const Range box = disc.Columns(luma.width), rows = disc.Rows(luma.height);
    for (unsigned y = rows.begin; y < rows.end; ++y) {
        const Range range = light.Light(disc, y, box, shift);
        TintLuma(luma.Row(y), {range.begin, std::min(range.end, luma.width)}, light, settings.yuv[0]);
        for (unsigned p = 1; p < 3; ++p) {
            const ComponentView& chroma = picture.plane[p];
            const Range samples{range.begin >> shift, std::min(range.end >> shift, chroma.width)};
            if (y >> picture.rowShift < chroma.height)
                TintChroma<shift>(chroma.Row(y >> picture.rowShift), samples, light, settings.yuv[p]);
        }
    }
}

std::array<std::uint8_t, 3> YuvOf(std::uint32_t colour) {
    const double red = Red(colour), green = Green(colour), blue = Blue(colour);
    return {std::uint8_t(0.257 * red + 0.504 * green + 0.098 * blue + 16),
            std::uint8_t(-0.148 * red - 0.291 * green + 0.439 * blue + 128),
            std::uint8_t(0.439 * red - 0.368 * green - 0.071 * blue + 128)};
}

}  // namespace

void SpotlightRgba32Effect(const SpotlightSettings& settings, const PackedView& picture) {
    const std::uint32_t colour = settings.colour;
    Disc(settings).ForEachPixel(picture.width, picture.height, [&](unsigned x, unsigned y, Light light) {
        Rgba32& p = picture.Row(y)[x];
        p.blue = std::uint8_t(Tint(p.blue, Blue(colour), light.weight, light.brightness));
        p.green = std::uint8_t(Tint(p.green, Green(colour), light.weight, light.brightness));
        p.red = std::uint8_t(Tint(p.red, Red(colour), light.weight, light.brightness));
    });
}

void SpotlightComponentEffect(const SpotlightSettings& settings, const PlanarView& picture) {
    const ComponentView& luma = picture.plane[0];
    Disc(settings).ForEachPixel(luma.width, luma.height, [&](unsigned x, unsigned y, Light light) {
        for (unsigned p = 0; p < 3; ++p)
            if (std::uint8_t* const sample = picture.At(p, x, y))
                *sample = std::uint8_t(Tint(*sample, settings.yuv[p], light.weight, p == 0 ? light.brightness : 0));
    });
}

CSpotlightVideoImageEffect::CSpotlightVideoImageEffect() : CBasedVideoImageEffect(effectNameSpotlight) {
    DeclareProperties(*this, spotlightProperties);
}

void CSpotlightVideoImageEffect::OnSetProperty(const std::string& name, PropertyNode& node) {
    CBasedVideoImageEffect::OnSetProperty(name, node);
    StoreProperty(m_settings, spotlightProperties, name, node);
    if (name == "spotlight_color") std::ranges::copy(YuvOf(m_settings.colour), m_settings.yuv);
    if (name == "spotlight_brightness")
        m_settings.brightness = std::int32_t(std::uint32_t(m_settings.brightness) << 8) / 100;
}

void CSpotlightVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    const Disc disc(m_settings);
    ForFrame(
        [&](const PackedView& picture) {
            if (!disc.Lights(picture.width, picture.height)) return;
            if (!disc.IsHandy()) return SpotlightRgba32Effect(m_settings, picture);
            LightRow light(picture.width);
            Pick<LightPackedRows>()(m_settings, disc, light, picture);
        },
        [&](const PlanarView& picture) {
            const ComponentView& luma = picture.plane[0];
            if (!disc.Lights(luma.width, luma.height)) return;
            if (!disc.IsHandy()) return SpotlightComponentEffect(m_settings, picture);
            LightRow light(luma.width);
            const auto lightRows = picture.columnShift == 0   ? Pick<LightPlanarRows<0>>()
                                   : picture.columnShift == 1 ? Pick<LightPlanarRows<1>>()
                                                              : Pick<LightPlanarRows<2>>();
            lightRows(m_settings, disc, light, picture);
        },
        *frame);
}

}  // namespace AVBased
