#pragma once

#include <cmath>

#include "dvd_effects/blending.h"
#include "dvd_effects/placement.h"
#include "effects/fixed_point.h"

namespace AVBased::Blending {

/// A layer through a projection: four neighbours weighed by their distance and coverage, edges smooth over a pixel.
/// Places are projected first; from there on all is in whole numbers.
struct ProjectedSampler {
    PackedView layer;
    Projection projection;
    std::uint32_t opacity;

    void operator()(unsigned x, unsigned y, unsigned count, TileRow& row, unsigned at) const {
        unsigned begin = 0, end = count;
        for (const EdgeDistance& edge : projection.edges) Narrow(edge, x, y, begin, end);
        end = std::max(begin, end);
        row.Uncover(at, at + begin);
        row.Uncover(at + end, at + count);
        if (begin < end) Sample(x + begin, y, end - begin, row, at + begin);
    }

 private:
    static constexpr int positionBits = 15, distanceBits = 16;

    // Keeps of the pixels from begin to end - 1 those that reach over an edge.
    static void Narrow(const EdgeDistance& edge, unsigned x, unsigned y, unsigned& begin, unsigned& end) {
        const double first = edge.At(x + 0.5, y + 0.5) + 0.5;
        if (edge.a == 0) {
            if (first <= 0) end = begin;
            return;
        }
        const double crossing = std::clamp(-first / edge.a, -1.0, double(tileColumns) + 1);
        if (edge.a > 0)
            begin = std::max(begin, unsigned(std::max(0.0, std::ceil(crossing))));
        else
            end = std::min(end, unsigned(std::max(0.0, std::floor(crossing) + 1)));
        begin = std::min(begin, end);
    }

    // A value that goes straight from one end of a stretch to the other.
    struct Ramp {
        std::int32_t start, step;
        Ramp(double first, double last, double limit, int bits, unsigned count) {
            const double scale = double(1 << bits);
            start = std::int32_t(std::lround(std::clamp(first, -limit, limit) * scale));
            const auto target = std::int32_t(std::lround(std::clamp(last, -limit, limit) * scale));
            step = count > 1 ? (target - start) / std::int32_t(count - 1) : 0;
        }
        std::int32_t At(unsigned i) const { return start + step * std::int32_t(i); }
    };

    // Where the pixels of a stretch are on the layer, in parts of its pixels from the middle of its first one.
    struct Positions {
        std::int32_t column[tileColumns], line[tileColumns];
    };
    void Locate(double left, double middle, unsigned count, Positions& to) const {
        constexpr double farthest = 32767;
        if (projection.IsAffine()) {
            const Spot first = projection.At(left, middle), last = projection.At(left + count - 1, middle);
            const Ramp columns(first.x - 0.5, last.x - 0.5, farthest, positionBits, count);
            const Ramp lines(first.y - 0.5, last.y - 0.5, farthest, positionBits, count);
            for (unsigned i = 0; i < count; ++i) {
                to.column[i] = columns.At(i);
                to.line[i] = lines.At(i);
            }
            return;
        }
        const auto fixed = [](double place) {
            // In this order, what is not a number becomes a limit too.
            return std::int32_t(std::min(0x1p30, std::max(-0x1p30, (place - 0.5) * (1 << positionBits))));
        };
        for (unsigned i = 0; i < count; ++i) {
            const Spot at = projection.At(left + int(i), middle);
            to.column[i] = fixed(at.x);
            to.line[i] = fixed(at.y);
        }
    }

    void Sample(unsigned x, unsigned y, unsigned count, TileRow& row, unsigned at) const {
        constexpr double farFromEdge = 512;
        const double left = x + 0.5, right = x + count - 0.5, middle = y + 0.5;
        Positions positions;
        Locate(left, middle, count, positions);
        const auto distance = [&](int i) {
            const EdgeDistance& edge = projection.edges[i];
            return Ramp(edge.At(left, middle) + 0.5, edge.At(right, middle) + 0.5, farFromEdge, distanceBits, count);
        };
        const Ramp distances[4] = {distance(0), distance(1), distance(2), distance(3)};

        std::uint32_t corner[4][tileColumns];
        Gather(positions, count, corner);
        const std::uint32_t most = opacity + (opacity >> 7);
        std::uint16_t *const firsts = row.colour[0] + at, *const seconds = row.colour[1] + at,
                             *const thirds = row.colour[2] + at, *const coverages = row.coverage + at;
#pragma GCC unroll 1
        for (unsigned i = 0; i < count; ++i) {
            std::uint32_t shown = most;
            for (const Ramp& ramp : distances)
                shown = shown * std::uint32_t(std::clamp(ramp.At(i) >> (distanceBits - 8), 0, 256)) >> 8;
            const std::uint32_t across = Fraction(positions.column[i]), down = Fraction(positions.line[i]);
            const std::uint32_t weights[4] = {(256 - across) * (256 - down), across * (256 - down),
                                              (256 - across) * down, across * down};
            std::uint32_t covered = 0, sums[3] = {};
            for (int k = 0; k < 4; ++k) {
                const std::uint32_t pixel = corner[k][i], weight = weights[k] * (pixel >> 24);
                covered += weight;
                sums[0] += weight * Blue(pixel);
                sums[1] += weight * Green(pixel);
                sums[2] += weight * Red(pixel);
            }
            covered = (Rounded16(covered) * shown + 128) >> 8;
            // Rounded by itself, a colour might come out brighter than its coverage allows.
            const auto part = [&](std::uint32_t sum) {
                return std::uint16_t(std::min((Rounded16(sum) * shown + 128) >> 8, covered * 255));
            };
            coverages[i] = std::uint16_t(covered);
            firsts[i] = part(sums[0]);
            seconds[i] = part(sums[1]);
            thirds[i] = part(sums[2]);
        }
    }

    static std::uint32_t Fraction(std::int32_t position) { return std::uint32_t(position) >> (positionBits - 8) & 255; }
    // The weights sum up to 65536. A full sum of full colours leaves no room for a rounding bit: halves come first.
    static std::uint32_t Rounded16(std::uint32_t sum) { return ((sum >> 15) + 1) >> 1; }

    // The four neighbours of every position; outside the layer its outermost pixels go on.
    void Gather(const Positions& positions, unsigned count, std::uint32_t (&corner)[4][tileColumns]) const {
        const std::int32_t lastColumn = std::int32_t(layer.width) - 1, lastLine = std::int32_t(layer.height) - 1;
        for (unsigned i = 0; i < count; ++i) {
            const std::int32_t column = positions.column[i] >> positionBits, line = positions.line[i] >> positionBits;
            const Rgba32* const upper = layer.Row(std::size_t(std::clamp(line, 0, lastLine)));
            const Rgba32* const lower = layer.Row(std::size_t(std::clamp(line + 1, 0, lastLine)));
            const std::int32_t left = std::clamp(column, 0, lastColumn), right = std::clamp(column + 1, 0, lastColumn);
            corner[0][i] = LoadWord(upper + left);
            corner[1][i] = LoadWord(upper + right);
            corner[2][i] = LoadWord(lower + left);
            corner[3][i] = LoadWord(lower + right);
        }
    }
};

}  // namespace AVBased::Blending
