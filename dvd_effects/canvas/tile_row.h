#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "dvd_effects/canvas/byte_fractions.h"
#include "effects/base/box.h"
#include "effects/base/frame_views.h"
#include "effects/base/instruction_sets.h"

/// What is laid on a frame, in the form that all blending takes: straight from a layer, through a map, turned or bent.
namespace AVBased::Blending {

/// Columns worked on at a time: a multiple of every chroma block, small enough for a few rows to stay in the cache.
inline constexpr unsigned tileColumns = 512;
/// Entries of a row past its tile, for vectors that do not end with it.
inline constexpr unsigned tileSlack = 8;

/// What a sampler says of a stretch of a row: coverages of 0 to 255, and each colour times the coverage.
struct TileRow {
    std::uint16_t colour[3][tileColumns + tileSlack], coverage[tileColumns + tileSlack];

    /// Entries from `at` on: pixel(i) is the colour of the i-th, covered(i, pixel) how much of the frame it covers.
    template <class Pixel, class Covered>
    void SetPixels(unsigned at, unsigned count, Pixel pixel, Covered covered) {
        std::uint16_t *const first = colour[0] + at, *const second = colour[1] + at, *const third = colour[2] + at;
        std::uint16_t* const coverages = coverage + at;
#pragma GCC unroll 1
        for (unsigned i = 0; i < count; ++i) {
            const std::uint32_t word = pixel(i), by = covered(i, word);
            first[i] = std::uint16_t(Blue(word) * by);
            second[i] = std::uint16_t(Green(word) * by);
            third[i] = std::uint16_t(Red(word) * by);
            coverages[i] = std::uint16_t(by);
        }
    }
    template <class Work>
    void ForEachPart(Work work) {
        for (auto& part : colour) work(part);
        work(coverage);
    }
    void Uncover(unsigned begin, unsigned end) {
        ForEachPart([&](std::uint16_t* part) { std::fill(part + begin, part + end, std::uint16_t(0)); });
    }
    /// Entries from `begin` on repeat the one before them.
    void Extend(unsigned begin, unsigned end) {
        ForEachPart([&](std::uint16_t* part) { std::fill(part + begin, part + end, part[begin - 1]); });
    }
};

/// Keeps of a stretch what is not below 0, where a value begins with `first` and grows by `step` a pixel.
inline Span WhereNotNegative(double first, double step, Span within) {
    if (within.IsEmpty()) return within;
    const double count = within.end - within.begin;
    if (step == 0) return first < 0 ? Span{within.begin, within.begin} : within;
    const double crossing = std::clamp(-first / step, -1.0, count + 1);
    if (step > 0)
        within.begin += unsigned(std::max(0.0, std::ceil(crossing)));
    else
        within.end = within.begin + unsigned(std::clamp(std::floor(crossing) + 1, 0.0, count));
    return within;
}

constexpr unsigned WholeVectors(unsigned count) { return (count + tileSlack - 1) / tileSlack * tileSlack; }

/// Whole numbers that grow evenly along a row of a frame, by `step` a pixel from `atZero` on: those of the pixels from
/// x on, and up to tileSlack more. They begin anew at fixed places of the row, so that a pixel's number is the same in
/// whatever stretch it is asked for; where step is above 0, none is less than the one before it.
inline void FillRamp(double atZero, double step, unsigned x, unsigned count, std::int32_t* to) {
    constexpr unsigned block = 256;
    constexpr double farthest = 0x1p30;
    // In this order, what is not a number becomes a limit too.
    const auto within = [](double limit, double value) {
        return std::int32_t(std::floor(std::min(limit, std::max(-limit, value))));
    };
    // Beyond this, the numbers of a block might not fit.
    constexpr double steepest = farthest / (2 * block);
    if (!(std::abs(step) <= steepest)) {
        for (unsigned i = 0; i < WholeVectors(count); ++i) to[i] = within(farthest, atZero + (x + i) * step);
        return;
    }
    const std::int32_t each = within(steepest, step);
    for (unsigned done = 0; done < count;) {
        const unsigned part = (x + done) % block, end = std::min(count, done + block - part);
        const std::int32_t start = within(farthest, atZero + (x + done - part) * step) + each * std::int32_t(part);
        std::int32_t* const from = to + done;
#pragma GCC unroll 1
        for (unsigned i = 0; i < WholeVectors(end - done); ++i) from[i] = start + each * std::int32_t(i);
        done = end;
    }
}

namespace Details {

template <class Kind>
Span Reach(const void* sampler, unsigned y, Span within) {
    return static_cast<const Kind*>(sampler)->Reach(y, within);
}
template <class Kind>
void Fill(const void* sampler, unsigned x, unsigned y, unsigned count, TileRow& row, unsigned at) {
    static_cast<const Kind*>(sampler)->Fill(x, y, count, row, at);
}

}  // namespace Details

/// A sampler of any kind. It is asked through pointers, once a tile, so that blending is compiled once and
/// not again for everything that can be blended. The sampler is borrowed and has two functions:
/// Reach(y, within) is the part of a stretch of row y beyond which nothing shows;
/// Fill(x, y, count, row, at) fills `count` entries of `row` from entry `at` on for the pixels from (x, y) on, which
/// lie within that reach. It may overwrite tileSlack entries after them.
class SamplerRef {
 public:
    template <class Kind>
    SamplerRef(const Kind& sampler, InstructionSet set)
        : m_sampler(&sampler),
          m_reach(variantsOf<Details::Reach<Kind>>.For(set)),
          m_fill(variantsOf<Details::Fill<Kind>>.For(set)) {}

    Span Reach(unsigned y, Span within) const { return m_reach(m_sampler, y, within); }
    void Fill(unsigned x, unsigned y, unsigned count, TileRow& row, unsigned at) const {
        m_fill(m_sampler, x, y, count, row, at);
    }

 private:
    const void* m_sampler;
    Span (*m_reach)(const void*, unsigned, Span);
    void (*m_fill)(const void*, unsigned, unsigned, unsigned, TileRow&, unsigned);
};

}  // namespace AVBased::Blending
