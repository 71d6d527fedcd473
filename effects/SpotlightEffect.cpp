#include "effects/SpotlightEffect.h"

#include <algorithm>
#include <array>
#include <cmath>

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
    std::uint32_t weight, brightness;

    // Unsigned throughout: what would be negative is past every limit.
    std::uint8_t Tint(std::uint32_t channel, std::uint32_t colour, std::uint32_t added) const {
        return std::uint8_t(std::min(((channel * (65536 - weight) + colour * weight) >> 16) + added, 255u));
    }
};

class Disc {
 public:
    explicit Disc(const SpotlightSettings& settings)
        : m_x(settings.x),
          m_y(settings.y),
          m_radius(settings.radius),
          m_ring(3 * settings.radius >> 2),
          m_core{(settings.density << 16) / 100, std::uint32_t(settings.brightness)} {
        if (m_ring == 0) return;
        m_step = {m_core.weight / m_ring, (m_core.brightness << 8) / m_ring};
    }

    // Calls work(x, y, light) for every lit pixel of a picture, in scan order.
    template <class Work>
    void ForEachPixel(unsigned width, unsigned height, Work work) const {
        if (m_ring == 0 || m_x > width || m_y > height) return;
        const std::uint32_t xBegin = m_x > m_radius ? m_x - m_radius : 0, xEnd = std::min(width, m_x + m_radius);
        const std::uint32_t yBegin = m_y > m_radius ? m_y - m_radius : 0, yEnd = std::min(height, m_y + m_radius);
        const std::uint32_t core = (m_radius - m_ring) * (m_radius - m_ring);
        for (unsigned y = yBegin; y < yEnd; ++y)
            for (unsigned x = xBegin; x < xEnd; ++x) {
                const std::uint32_t square = (x - m_x) * (x - m_x) + (y - m_y) * (y - m_y);
                if (square <= m_radius * m_radius) work(x, y, square > core ? InRing(square) : m_core);
            }
    }

 private:
    Light InRing(std::uint32_t square) const {
        const std::uint32_t toRim = m_radius - std::uint32_t(std::sqrt(double(square)));
        return {m_step.weight * toRim, toRim * m_step.brightness >> 8};
    }

    std::uint32_t m_x, m_y, m_radius, m_ring;
    Light m_core, m_step{};  // the step is that of one pixel towards the rim
};

void SpotlightRgba32Effect(const SpotlightSettings& settings, const PackedView& picture) {
    const std::uint32_t colour = settings.colour;
    Disc(settings).ForEachPixel(picture.width, picture.height, [&](unsigned x, unsigned y, Light light) {
        Rgba32& p = picture.Row(y)[x];
        p.blue = light.Tint(p.blue, Blue(colour), light.brightness);
        p.green = light.Tint(p.green, Green(colour), light.brightness);
        p.red = light.Tint(p.red, Red(colour), light.brightness);
    });
}

void SpotlightComponentEffect(const SpotlightSettings& settings, const PlanarView& picture) {
    const ComponentView& luma = picture.plane[0];
    Disc(settings).ForEachPixel(luma.width, luma.height, [&](unsigned x, unsigned y, Light light) {
        // Deliberate: shared chroma is tinted once for each luma position, and never brightened.
        for (unsigned p = 0; p < 3; ++p)
            if (std::uint8_t* const sample = picture.At(p, x, y))
                *sample = light.Tint(*sample, settings.yuv[p], p == 0 ? light.brightness : 0);
    });
}

std::array<std::uint8_t, 3> YuvOf(std::uint32_t colour) {
    const double red = Red(colour), green = Green(colour), blue = Blue(colour);
    return {std::uint8_t(0.257 * red + 0.504 * green + 0.098 * blue + 16),
            std::uint8_t(-0.148 * red - 0.291 * green + 0.439 * blue + 128),
            std::uint8_t(0.439 * red - 0.368 * green - 0.071 * blue + 128)};
}

}  // namespace

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
    ForFrame([&](const PackedView& picture) { SpotlightRgba32Effect(m_settings, picture); },
             [&](const PlanarView& picture) { SpotlightComponentEffect(m_settings, picture); }, *frame);
}

}  // namespace AVBased
