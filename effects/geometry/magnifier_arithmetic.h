#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "effects/base/box.h"
#include "effects/base/fixed_point.h"

/// What the magnifier makes of samples: where each pixel under the glass reads, and how it mixes what lies there.
namespace AVBased {

struct MagnifierSettings {
    std::uint32_t radius = 0, x = 0, y = 0;
    double scale = 0;

    /// Whether the glass shows at all. A factor that is not a number passes.
    bool IsVisible(unsigned width, unsigned height) const {
        return !(x > width || y > height || scale <= 1.0 || radius > width / 2 || radius > height / 2);
    }
    bool TakesNearest() const { return scale <= 2.0; }
};

/// Where a position of an axis reads: a sample, and how far on towards the next one in 1/256.
struct GlassPlace {
    unsigned whole;
    std::uint8_t share;
};

/// One axis of the rectangle around the glass: positions from begin on, and where each reads.
struct GlassAxis {
    std::uint32_t begin, count, offset, step;
    bool nearest;

    /// `edge` is where a rectangle begins that the picture cuts off. Nearest positions step in 1/256, mixed ones in
    /// 1/65536.
    GlassAxis(const MagnifierSettings& s, std::uint32_t centre, unsigned size, unsigned edge) {
        nearest = s.TakesNearest();
        const bool cut = centre < s.radius;
        begin = cut ? edge : centre - s.radius;
        count = cut ? centre + s.radius : std::min(2 * s.radius, size - begin);
        step = TruncateToUint32((nearest ? 256.0 : 65536.0) / s.scale);
        offset = (TruncateToUint32(count * s.scale) - count) * step >> 1;
    }
    unsigned End() const { return begin + count; }
    GlassPlace At(unsigned position) const {
        const std::uint32_t accumulator = (position - begin) * step;
        if (nearest) return {(accumulator >> 8) + (offset >> 8) + begin, 0};
        const std::uint32_t place = accumulator + offset + (begin << 16);
        return {place >> 16, std::uint8_t(place >> 8)};
    }
};

/// The rows of a glass: which of their columns lie inside it.
struct Glass {
    const MagnifierSettings& settings;
    GlassAxis across, down;

    std::vector<Span> chords = Chords();  ///< of all rows from down.begin on

    Span At(unsigned y) const { return chords[y - down.begin]; }

 private:
    std::vector<Span> Chords() const {
        std::vector<Span> all;
        for (unsigned y = down.begin; y < down.End(); ++y) all.push_back(ChordOf(y));
        return all;
    }
    Span ChordOf(unsigned y) const {
        const std::int64_t dy = std::int64_t(y) - settings.y, radius = settings.radius;
        const std::int64_t square = radius * radius - dy * dy;
        if (square <= 0) return {};
        auto reach = std::int64_t(std::sqrt(double(square)));  // the largest distance whose square lies below
        while (reach * reach >= square) --reach;
        while ((reach + 1) * (reach + 1) < square) ++reach;
        const std::int64_t begin = std::max<std::int64_t>(across.begin, settings.x - reach),
                           end = std::min<std::int64_t>(across.End(), settings.x + reach + 1);
        return begin < end ? Span{unsigned(begin), unsigned(end)} : Span{};
    }
};

/// How a pixel is mixed of its four neighbours: by their weights at once, or in two steps, each of which truncates.
enum class Mixing { Nearest, FourWeights, FourWeightsExchanged, TwoSteps };

inline std::uint8_t MixTwo(std::uint16_t a, std::uint16_t b, std::uint16_t share) {
    return std::uint8_t(std::uint16_t(std::uint16_t(a * std::uint16_t(256 - share)) + std::uint16_t(b * share)) >> 8);
}

/// to = a and b mixed by each byte's share of b, in 1/256.
inline void MixColumns(std::uint8_t* __restrict to, const std::uint8_t* __restrict a, const std::uint8_t* __restrict b,
                       const std::uint8_t* __restrict shares, unsigned count) {
    for (unsigned x = 0; x < count; ++x) to[x] = MixTwo(a[x], b[x], shares[x]);
}

/// to = a and b mixed by one share of b.
inline void MixRows(std::uint8_t* __restrict to, const std::uint8_t* __restrict a, const std::uint8_t* __restrict b,
                    unsigned share, unsigned count) {
    for (unsigned x = 0; x < count; ++x) to[x] = MixTwo(a[x], b[x], std::uint16_t(share));
}

/// to = four neighbours mixed by the distances towards the right ones and the lower ones, in 1/256.
template <bool exchanged>
void MixFour(std::uint8_t* __restrict to, const std::uint8_t* __restrict own, const std::uint8_t* __restrict right,
             const std::uint8_t* __restrict below, const std::uint8_t* __restrict belowRight,
             const std::uint8_t* __restrict columnShares, unsigned rowShare, unsigned count) {
    const std::uint16_t fy = std::uint16_t(rowShare);
    for (unsigned x = 0; x < count; ++x) {
        const std::uint16_t fx = columnShares[x], both = std::uint16_t(fx * fy) >> 8;
        // Written in differences, the weights (1 - u - v + uv), (u - uv), (v - uv) and uv take a product less.
        const std::uint16_t toRight = std::uint16_t(right[x] - own[x]), toBelow = std::uint16_t(below[x] - own[x]),
                            turn = std::uint16_t(belowRight[x] - right[x] - toBelow);
        const auto sides = std::uint16_t(std::uint16_t(toRight * (exchanged ? fy : fx)) +
                                         std::uint16_t(toBelow * (exchanged ? fx : fy)));
        const auto sum = std::uint16_t(std::uint16_t(own[x] << 8) + sides + std::uint16_t(turn * both));
        to[x] = std::uint8_t(sum >> 8);
    }
}

}  // namespace AVBased
