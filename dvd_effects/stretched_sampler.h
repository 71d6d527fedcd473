#pragma once

#include <algorithm>
#include <cmath>
#include <optional>

#include "dvd_effects/placement.h"
#include "dvd_effects/tile_row.h"

namespace AVBased::Blending {

/// A layer on an upright rectangle, neither turned nor mirrored nor much smaller than it is: the common case of
/// ProjectedSampler, several times as fast. Two rows of the layer are mixed for each one of the frame, in whole
/// stretches, and neighbours along the row then.
class StretchedSampler {
 public:
    /// Nothing for any other placement.
    static std::optional<StretchedSampler> Make(PackedView layer, const Placement& at, std::uint32_t opacity) {
        const Spot &least = at.topLeft, &most = at.bottomRight;
        if (at.topRight.y != least.y || at.bottomLeft.x != least.x || at.topRight.x != most.x ||
            at.bottomLeft.y != most.y || !(least.x < most.x) || !(least.y < most.y))
            return std::nullopt;
        StretchedSampler sampler;
        sampler.m_layer = layer;
        sampler.m_least = least;
        sampler.m_most = most;
        sampler.m_columnStep = layer.width / (most.x - least.x);
        sampler.m_lineStep = layer.height / (most.y - least.y);
        sampler.m_opacity = opacity + (opacity >> 7);
        if (sampler.m_columnStep > mostColumns || layer.width > mostWidth) return std::nullopt;
        return sampler;
    }

    // Whole columns of the frame that the rectangle reaches.
    Stretch Reach(unsigned, Stretch within) const {
        const auto column = [&](double place) { return unsigned(std::clamp<double>(place, within.begin, within.end)); };
        return within.IsEmpty() ? within : Stretch{column(std::floor(m_least.x)), column(std::ceil(m_most.x))};
    }
    void Fill(unsigned x, unsigned y, unsigned count, TileRow& row, unsigned at) const {
        Sample(x, y, count, std::uint32_t(m_opacity * Overlap(y, m_least.y, m_most.y)), row, at);
    }

 private:
    static constexpr int positionBits = 15;
    static constexpr unsigned mostColumns = 2, mostWidth = 16384;
    // Four sums a pixel, each of 255 * 256 at most: the colours times the coverage, and the coverage.
    struct Sums {
        std::uint16_t part[4];
    };

    // How much of the pixel at `place` lies between two edges.
    static double Overlap(unsigned place, double least, double most) {
        return std::clamp(place + 1 - least, 0.0, 1.0) * std::clamp(most - place, 0.0, 1.0);
    }

    void Sample(unsigned x, unsigned y, unsigned count, std::uint32_t shown, TileRow& row, unsigned at) const {
        constexpr double unit = 1 << positionBits;
        const auto step = std::int32_t(std::lround(m_columnStep * unit));
        const auto start = std::int32_t(std::lround(((x + 0.5 - m_least.x) * m_columnStep - 0.5) * unit));
        const std::int32_t first = start >> positionBits;
        const auto columns = unsigned(((start + step * std::int32_t(count - 1)) >> positionBits) - first) + 2;
        Sums mixed[tileColumns * mostColumns + 4], sampled[tileColumns];
        MixRows(y, first, columns, mixed);
        const std::int32_t offset = start - first * (1 << positionBits);
        if (step == 1 << positionBits) {
            const auto across = std::uint32_t(offset) >> (positionBits - 8);
            MixSums(
                mixed[0].part, mixed[1].part, count * 4, [=](unsigned) { return across; }, sampled[0].part);
        } else {
            Sums left[tileColumns], right[tileColumns], weights[tileColumns];
            for (unsigned i = 0; i < count; ++i) {
                const auto place = std::uint32_t(offset + step * std::int32_t(i));
                const auto across = std::uint16_t(place >> (positionBits - 8) & 255);
                const Sums* const from = mixed + (place >> positionBits);
                left[i] = from[0];
                right[i] = from[1];
                weights[i] = {{across, across, across, across}};
            }
            const std::uint16_t* const across = weights[0].part;
            MixSums(
                left[0].part, right[0].part, count * 4, [=](unsigned i) { return across[i]; }, sampled[0].part);
        }
        Store(sampled, count, shown, row, at);
        SmoothEnd(x, 0, row, at);
        if (count > 1) SmoothEnd(x, count - 1, row, at);
    }

    // Between 0 and 256 of the way from a to b.
    template <class Across>
    static void MixSums(const std::uint16_t* a, const std::uint16_t* b, unsigned count, Across across,
                        std::uint16_t* to) {
#pragma GCC unroll 1
        for (unsigned i = 0; i < count; ++i) {
            const std::uint32_t part = across(i);
            to[i] = std::uint16_t((a[i] * (256 - part) + b[i] * part + 128) >> 8);
        }
    }

    // The layer's columns from `first` on; outside the layer its outermost pixels go on.
    void MixRows(unsigned y, std::int32_t first, unsigned count, Sums* to) const {
        const double line = (y + 0.5 - m_least.y) * m_lineStep - 0.5, upper = std::floor(line);
        const auto down = std::uint32_t((line - upper) * 256);
        const double lastLine = m_layer.height - 1.0;
        const Rgba32* const rows[2] = {m_layer.Row(std::size_t(std::clamp(upper, 0.0, lastLine))),
                                       m_layer.Row(std::size_t(std::clamp(upper + 1, 0.0, lastLine)))};
        const std::int32_t last = std::int32_t(m_layer.width) - 1;
        const std::int32_t begin = std::clamp(-first, 0, std::int32_t(count) - 1);
        const std::int32_t end = std::clamp(last + 1 - first, begin + 1, std::int32_t(count));
        const std::int32_t from = std::clamp(first + begin, 0, last);
        MixPixels(rows[0] + from, rows[1] + from, unsigned(end - begin), down, to + begin);
        std::fill(to, to + begin, to[begin]);
        std::fill(to + end, to + count, to[end - 1]);
    }

    static void MixPixels(const Rgba32* upper, const Rgba32* lower, unsigned count, std::uint32_t down, Sums* to) {
        std::uint32_t alphas = alphaMask;
        for (unsigned i = 0; i < count; ++i) alphas &= LoadWord(upper + i) & LoadWord(lower + i);
        if (alphas == alphaMask) {
            const auto *const above = &upper->blue, *const below = &lower->blue;
            std::uint16_t* const sums = to->part;
#pragma GCC unroll 1
            for (unsigned i = 0; i < count * 4; ++i) sums[i] = std::uint16_t(above[i] * (256 - down) + below[i] * down);
            return;
        }
        for (unsigned i = 0; i < count; ++i) {
            const std::uint32_t a = LoadWord(upper + i), b = LoadWord(lower + i);
            const auto mix = [&](std::uint32_t above, std::uint32_t below) {
                // 256 / 255 of each, so that opaque pixels come out as above.
                const std::uint32_t wideAbove = above + Over255(above), wideBelow = below + Over255(below);
                return std::uint16_t((wideAbove * (256 - down) + wideBelow * down + 128) >> 8);
            };
            to[i] = {{mix(Blue(a) * (a >> 24), Blue(b) * (b >> 24)), mix(Green(a) * (a >> 24), Green(b) * (b >> 24)),
                      mix(Red(a) * (a >> 24), Red(b) * (b >> 24)),
                      std::uint16_t((a >> 24) * (256 - down) + (b >> 24) * down)}};
        }
    }

    static void Store(const Sums* sampled, unsigned count, std::uint32_t shown, TileRow& row, unsigned at) {
        std::uint16_t *const firsts = row.colour[0] + at, *const seconds = row.colour[1] + at,
                             *const thirds = row.colour[2] + at, *const coverages = row.coverage + at;
#pragma GCC unroll 1
        for (unsigned i = 0; i < count; ++i) {
            const auto part = [&](int k) { return sampled[i].part[k] * shown >> 8; };
            const std::uint32_t covered = (part(3) + 128) >> 8;
            // Rounded by itself, a colour might come out brighter than its coverage allows.
            const auto colour = [&](int k) {
                return std::uint16_t(std::min((part(k) * 255 + 128) >> 8, covered * 255));
            };
            coverages[i] = std::uint16_t(covered);
            firsts[i] = colour(0);
            seconds[i] = colour(1);
            thirds[i] = colour(2);
        }
    }

    // Thins out the entry `i` of a stretch from x on, if an end of the rectangle lies in its pixel.
    void SmoothEnd(unsigned x, unsigned i, TileRow& row, unsigned at) const {
        const auto shown = std::uint32_t(256 * Overlap(x + i, m_least.x, m_most.x));
        if (shown == 256) return;
        row.ForEachPart([&](std::uint16_t* part) {
            std::uint16_t& entry = part[at + i];
            entry = std::uint16_t(entry * shown >> 8);
        });
        for (auto& colour : row.colour)
            colour[at + i] = std::min(colour[at + i], std::uint16_t(row.coverage[at + i] * 255));
    }

    PackedView m_layer;
    Spot m_least, m_most;
    double m_columnStep = 0, m_lineStep = 0;
    std::uint32_t m_opacity = 0;
};

}  // namespace AVBased::Blending
