#pragma once

#include <algorithm>
#include <cstdint>

#include "dvd_effects/byte_fractions.h"
#include "effects/frame_views.h"
#include "effects/instruction_sets.h"

/// What is laid on a frame, in the form that all blending takes: straight from a layer, through a map, turned or bent.
namespace AVBased::Blending {

/// Columns worked on at a time: a multiple of every chroma block, small enough for a few rows to stay in the cache.
inline constexpr unsigned tileColumns = 512;
/// Entries of a row behind its tile, for vectors that do not end with it.
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

/// Columns of a frame's row.
struct Stretch {
    unsigned begin = 0, end = 0;

    bool IsEmpty() const { return begin >= end; }
    Stretch Within(Stretch other) const { return {std::max(begin, other.begin), std::min(end, other.end)}; }
};

namespace Details {

template <class Kind>
Stretch Reach(const void* sampler, unsigned y, Stretch within) {
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
/// lie within that reach. It may spoil tileSlack entries behind them.
class SamplerRef {
 public:
    template <class Kind>
    SamplerRef(const Kind& sampler, InstructionSet set)
        : m_sampler(&sampler),
          m_reach(variantsOf<Details::Reach<Kind>>.For(set)),
          m_fill(variantsOf<Details::Fill<Kind>>.For(set)) {}

    Stretch Reach(unsigned y, Stretch within) const { return m_reach(m_sampler, y, within); }
    void Fill(unsigned x, unsigned y, unsigned count, TileRow& row, unsigned at) const {
        m_fill(m_sampler, x, y, count, row, at);
    }

 private:
    const void* m_sampler;
    Stretch (*m_reach)(const void*, unsigned, Stretch);
    void (*m_fill)(const void*, unsigned, unsigned, unsigned, TileRow&, unsigned);
};

}  // namespace AVBased::Blending
