#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "effects/base/box.h"

namespace AVBased {

struct SpotlightSettings {
    std::uint32_t x = 250, y = 250, radius = 200;
    std::int32_t brightness = 128;  ///< in 1/256 of full scale; the property is in per cent
    std::uint32_t colour = 0xFFFFFF;
    std::int32_t density = 40;              ///< per cent
    std::uint8_t yuv[3] = {235, 128, 128};  ///< the colour in planar frames
};

/// The light at one pixel: how much of the colour, in 1/65536, and how much brightness.
struct SpotLight {
    std::uint32_t weight = 0, brightness = 0;
};

/// A spotlight's disc: where it is, and the light of its core and ring.
class SpotDisc {
 public:
    explicit SpotDisc(const SpotlightSettings& settings)
        : m_x(settings.x), m_y(settings.y), m_radius(settings.radius), m_ring(3 * settings.radius >> 2) {
        if (m_ring == 0) return;
        const std::int32_t ring = std::int32_t(m_ring);
        const std::int32_t weight = std::int32_t(std::uint32_t(settings.density) << 16) / 100;
        m_core = {std::uint32_t(weight), std::uint32_t(settings.brightness)};
        m_step = {std::uint32_t(weight / ring),
                  std::uint32_t(std::int32_t(std::uint32_t(settings.brightness) << 8) / ring)};
    }

    bool Lights(unsigned width, unsigned height) const { return m_ring != 0 && m_x <= width && m_y <= height; }
    /// The disc's box in a picture that it lights.
    Span Columns(unsigned width) const { return Extent(m_x, width); }
    Span Rows(unsigned height) const { return Extent(m_y, height); }

    /// Distances, what their squares leave and a darkening fit 16 bits: all but huge discs.
    bool Fits16Bits() const { return m_radius < 2048 && std::int32_t(m_core.brightness) >= -0x8000; }
    /// Weights and a slope of brightness fit 16 bits too.
    bool IsWeak() const {
        return m_core.weight < 0x8000 && std::abs(std::int64_t(std::int32_t(m_step.brightness))) < 2048;
    }
    /// The columns of the box that row y of the box lights, for a disc that fits 16 bits.
    Span Chord(unsigned y, Span box) const {
        const std::int32_t dy = std::int32_t(y - m_y), radius = std::int32_t(m_radius);
        const unsigned half = unsigned(std::sqrt(double(radius * radius - dy * dy)));
        return {std::max(box.begin, m_x > half ? m_x - half : 0), std::min(box.end, m_x + half + 1)};
    }

    /// Calls work(x, y, light) for every lit pixel of a picture, in scan order.
    template <class Work>
    void ForEachPixel(unsigned width, unsigned height, Work work) const {
        if (!Lights(width, height)) return;
        const Span columns = Columns(width), rows = Rows(height);
        const std::uint32_t core = CoreRadius() * CoreRadius();
        for (unsigned y = rows.begin; y < rows.end; ++y)
            for (unsigned x = columns.begin; x < columns.end; ++x) {
                const std::uint32_t square = (x - m_x) * (x - m_x) + (y - m_y) * (y - m_y);
                if (square > m_radius * m_radius) continue;
                work(x, y, square > core ? InRing(m_radius - std::uint32_t(std::sqrt(double(square)))) : m_core);
            }
    }

    std::uint32_t X() const { return m_x; }
    std::uint32_t Y() const { return m_y; }
    std::uint32_t Radius() const { return m_radius; }
    std::uint32_t CoreRadius() const { return m_radius - m_ring; }
    SpotLight Core() const { return m_core; }
    /// What a pixel further from the rim gains in the ring; of the brightness, in 1/256.
    SpotLight Step() const { return m_step; }
    SpotLight InRing(std::uint32_t toRim) const {
        return {m_step.weight * toRim, std::uint32_t(std::int32_t(toRim * m_step.brightness) >> 8)};
    }

 private:
    Span Extent(std::uint32_t centre, unsigned size) const {
        return {centre > m_radius ? centre - m_radius : 0, std::min(size, centre + m_radius)};
    }

    std::uint32_t m_x, m_y, m_radius, m_ring;
    SpotLight m_core, m_step;
};

}  // namespace AVBased
