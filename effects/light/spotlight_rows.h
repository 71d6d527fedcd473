#pragma once

#include <type_traits>
#include <vector>

#include "effects/light/spotlight_disc.h"

/// The light of a disc that fits 16 bits row by row, in 16 bits: straight loops that become vector code.
namespace AVBased {

/// The light at one pixel. Its weight is a signed part and so many times 65536, of which weak light has none.
struct SpotLevel {
    std::int16_t part = 0, times = 0, brightness = 0;
};

/// The light at a distance from a disc's centre: the whole part, and what the square exceeds the whole part's by.
template <bool weak>
class SpotLevels {
 public:
    explicit SpotLevels(const SpotDisc& disc)
        : m_disc(disc),
          m_radius(std::int16_t(disc.Radius())),
          m_coreRadius(std::int16_t(disc.CoreRadius())),
          m_coreBrightness(std::int16_t(std::min(std::int32_t(disc.Core().brightness), 255))) {}

    /// Rows that pass the core by need no look at it.
    template <bool crossesCore>
    SpotLevel operator()(std::int16_t whole, std::int16_t rest, std::bool_constant<crossesCore>) const {
        const bool inCore = crossesCore && std::int16_t(whole + (rest > 0)) <= m_coreRadius;
        const std::int16_t toRim = std::max<std::int16_t>(std::int16_t(m_radius - whole), 0);
        SpotLevel level;
        if constexpr (weak) {
            const auto weight = std::int16_t(m_disc.Step().weight), slope = std::int16_t(m_disc.Step().brightness << 4);
            const auto part = std::int16_t(toRim * weight);
            const auto brightness = std::int16_t(std::int16_t(toRim << 4) * slope >> 16);
            level.part = inCore ? std::int16_t(m_disc.Core().weight) : part;
            level.brightness = inCore ? m_coreBrightness : brightness;
        } else {
            const SpotLight ring = m_disc.InRing(std::uint32_t(toRim));
            const std::uint32_t weight = inCore ? m_disc.Core().weight : ring.weight;
            const auto brightness = std::int16_t(std::clamp(std::int32_t(ring.brightness), -0x8000, 255));
            level.part = std::int16_t(weight);
            level.times = std::int16_t((weight + 0x8000) >> 16);
            level.brightness = inCore ? m_coreBrightness : brightness;
        }
        return level;
    }

 private:
    SpotDisc m_disc;
    std::int16_t m_radius, m_coreRadius, m_coreBrightness;
};

/// Tints samples of one colour. Modulo 2^16 nothing differs from 2^32, but that what is above white must not wrap round
/// when it is brightened; what is below black must, for it turns white.
template <bool weak>
class SpotTint {
 public:
    SpotTint(std::uint32_t colour, bool darkens)
        : m_colour(std::int16_t(colour & 255)), m_highest(darkens ? 0xFFFF : 255) {}

    std::uint16_t operator()(std::uint16_t sample, SpotLevel level) const {
        const std::uint16_t mixed = Mixed(sample, level);
        return weak ? mixed : std::min<std::uint16_t>(mixed, 255);
    }
    std::uint16_t Brightened(std::uint16_t sample, SpotLevel level) const {
        const std::uint16_t mixed = weak ? Mixed(sample, level) : std::min(Mixed(sample, level), m_highest);
        return std::min<std::uint16_t>(std::uint16_t(mixed + level.brightness), 255);
    }

 private:
    std::uint16_t Mixed(std::uint16_t sample, SpotLevel level) const {
        const auto difference = std::int16_t(m_colour - sample);
        const auto mixed = std::uint16_t(sample + std::uint16_t(difference * level.part >> 16));
        return weak ? mixed : std::uint16_t(mixed + std::uint16_t(difference * level.times));
    }

    std::int16_t m_colour;
    std::uint16_t m_highest;
};

/// The distances of a row's columns from a disc's centre. From one row to the next a whole part changes by one at most:
/// no row needs a root. The columns stand in the order of the samples that 2^shift of them share: all first ones of a
/// group, then all second ones.
class SpotDistances {
 public:
    /// Columns past the picture are far from any light.
    SpotDistances(const SpotDisc& disc, Span columns, unsigned width, unsigned shift, unsigned y)
        : m_dy(std::int32_t(y - disc.Y())),
          m_shift(shift),
          m_first(columns.begin >> shift),
          m_apart((columns.end - columns.begin) >> shift),
          m_whole(columns.end - columns.begin),
          m_rest(m_whole.size()) {
        constexpr std::int32_t farAway = 10000;
        for (unsigned x = columns.begin; x < columns.end; ++x) {
            const std::int32_t dx = x < width ? std::int32_t(x - disc.X()) : farAway, square = dx * dx + m_dy * m_dy;
            const auto whole = std::int32_t(std::sqrt(double(square)));
            const std::size_t i = (x & ((1u << shift) - 1)) * m_apart + (x >> shift) - m_first;
            m_whole[i] = std::int16_t(whole);
            m_rest[i] = std::int16_t(square - whole * whole);
        }
    }

    bool Approaches() const { return m_dy < 0; }
    bool CrossesCore(const SpotDisc& disc) const { return std::uint32_t(std::abs(m_dy)) <= disc.CoreRadius(); }
    /// To the next row, once all columns have been walked or skipped that are still wanted.
    void NextRow() { ++m_dy; }
    void Skip(Span columns) {
        const auto walk = FromHere<true, false>();
        for (unsigned i = 0; i < m_whole.size() / m_apart; ++i)
#pragma GCC ivdep  // the whole parts and the rests share no memory
            for (std::size_t x = columns.begin >> m_shift; x < columns.end >> m_shift; ++x)
                walk(x, i, [](std::int16_t, std::int16_t, auto) { return SpotLevel(); });
    }

    /// What a loop over samples needs, free of anything that its stores could change.
    template <bool approaches, bool crossesCore>
    struct Walk {
        std::int16_t *whole, *rest;
        std::size_t apart;
        std::int16_t change;

        /// The light of the i-th column of sample x's group, whose distance moves on to the next row.
        template <class Levels>
        SpotLevel operator()(std::size_t x, unsigned i, const Levels& levels) const {
            const std::int16_t n = whole[x + i * apart], r = rest[x + i * apart];
            const auto moved = std::int16_t(r + change);
            if constexpr (approaches) {
                const std::int16_t passed = moved < 0 ? -1 : 0;
                rest[x + i * apart] = std::int16_t(moved + (std::int16_t(2 * n - 1) & passed));
                whole[x + i * apart] = std::int16_t(n + passed);
            } else {
                const std::int16_t passed = moved > std::int16_t(2 * n) ? -1 : 0;
                rest[x + i * apart] = std::int16_t(moved - (std::int16_t(2 * n + 1) & passed));
                whole[x + i * apart] = std::int16_t(n - passed);
            }
            return levels(n, r, std::bool_constant<crossesCore>());
        }
    };
    template <bool approaches, bool crossesCore>
    Walk<approaches, crossesCore> FromHere() {
        return {m_whole.data() - m_first, m_rest.data() - m_first, m_apart, std::int16_t(2 * m_dy + 1)};
    }

 private:
    std::int32_t m_dy;
    unsigned m_shift;
    std::size_t m_first, m_apart;
    std::vector<std::int16_t> m_whole, m_rest;
};

}  // namespace AVBased
