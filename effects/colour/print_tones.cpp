#include "effects/colour/print_tones.h"

#include <cstring>
#include <utility>

#include "effects/base/shared_samples.h"
#include "effects/colour/print_tones_avx2.h"

namespace AVBased {
namespace {

// Cool colours become darker, warm ones a little lighter.
std::int16_t WithWarmth(std::int16_t tone, std::int16_t warmth) {
    const auto warm = std::int16_t(std::max<std::int16_t>(warmth, 0) >> 2);
    return std::int16_t(std::int16_t(tone + warm) + std::min<std::int16_t>(warmth, 0));
}

void TonesOfPixels(std::int16_t* __restrict tones, const Rgba32* upper, const Rgba32* lower, unsigned cells) {
    for (std::size_t x = 0; x < cells; ++x) {
        const std::uint32_t a = LoadWord(upper + 2 * x), b = LoadWord(upper + 2 * x + 1), c = LoadWord(lower + 2 * x),
                            d = LoadWord(lower + 2 * x + 1);
        // Red and blue in one sum.
        constexpr std::uint32_t outer = 0xFF00FF;
        const std::uint32_t redBlue = (a & outer) + (b & outer) + (c & outer) + (d & outer);
        const int green = int(Green(a) + Green(b) + Green(c) + Green(d)), red = int(redBlue >> 16),
                  blue = int(redBlue & 0xFFFF);
        tones[x] = WithWarmth(std::int16_t(((66 * red + 129 * green + 25 * blue) >> 5) + 16 * toneUnit),
                              std::int16_t((150 * red - 20 * green - 130 * blue) >> 5));
    }
}

// Chroma of each cell.
void TonesOfSamples(std::int16_t* __restrict tones, const std::uint8_t* __restrict upper,
                    const std::uint8_t* __restrict lower, const std::uint8_t* __restrict u,
                    const std::uint8_t* __restrict v, unsigned cells) {
    // Two samples as the halves of one lane, so that none needs to be moved to another.
    const auto sum = [](const std::uint8_t* pair) {
        std::uint16_t lane;
        std::memcpy(&lane, pair, sizeof lane);
        return std::int16_t((lane & 255) + (lane >> 8));
    };
    for (std::size_t x = 0; x < cells; ++x) {
        const auto tone = std::int16_t(std::int16_t(sum(upper + 2 * x) + sum(lower + 2 * x)) * (toneUnit / 4));
        tones[x] = WithWarmth(tone, std::int16_t(std::int16_t(v[x] - u[x]) * toneUnit));
    }
}

std::int16_t Median(std::int16_t a, std::int16_t b, std::int16_t c) {
    return std::max(std::min(a, b), std::min(std::max(a, b), c));
}

void MedianOfFive(std::int16_t* __restrict medians, const std::int16_t* const* around, unsigned width) {
    const std::int16_t *const a = around[0], *const b = around[1], *const c = around[2], *const d = around[3],
                              *const e = around[4];
    for (std::size_t x = 0; x < width; ++x)
        medians[x] = Median(std::max(std::min(a[x], b[x]), std::min(c[x], d[x])),
                            std::min(std::max(a[x], b[x]), std::max(c[x], d[x])), e[x]);
}

// With the weights 1, 4, 6, 4, 1.
void MeanOfFive(std::int16_t* __restrict means, const std::int16_t* const* around, unsigned width) {
    const std::int16_t *const a = around[0], *const b = around[1], *const c = around[2], *const d = around[3],
                              *const e = around[4];
    for (std::size_t x = 0; x < width; ++x)
        means[x] = std::int16_t(c[x] + (std::int16_t(Half(a[x], e[x]) - c[x]) >> 3) +
                                (std::int16_t(Half(b[x], d[x]) - c[x]) >> 1));
}

// What was lost of strong contrast comes back: eyes stay eyes.
void RestoreDetail(std::int16_t* __restrict soft, const std::int16_t* __restrict raw, unsigned width) {
    constexpr std::int16_t weak = 24 * toneUnit;
    for (std::size_t x = 0; x < width; ++x) {
        const auto lost = std::int16_t(raw[x] - soft[x]);
        soft[x] = std::int16_t(raw[x] - std::clamp<std::int16_t>(lost, -weak, weak));
    }
}

}  // namespace

void ReadTones(const PackedView& picture, unsigned y, std::int16_t* tones, InstructionSet set) {
    const Rgba32 *const upper = picture.Row(2 * y), *const lower = picture.Row(std::min(2 * y + 1, picture.height - 1));
    const unsigned whole = picture.width / 2;
    variantsOf<TonesOfPixels, TonesOfPixelsAvx2>.For(set)(tones, upper, lower, whole);
    if (picture.width % 2 == 0) return;
    const Rgba32 above[] = {upper[2 * whole], upper[2 * whole]}, below[] = {lower[2 * whole], lower[2 * whole]};
    TonesOfPixels(tones + whole, above, below, 1);
}

void ReadTones(const PlanarView& picture, unsigned y, std::int16_t* tones, InstructionSet set) {
    const ComponentView& luma = picture.plane[0];
    const std::uint8_t *const upper = luma.Row(2 * y), *const lower = luma.Row(std::min(2 * y + 1, luma.height - 1));
    const unsigned whole = luma.width / 2, cells = luma.width - whole, shift = picture.columnShift;
    const unsigned chromaWidth = std::min(ColumnsOf(picture, 1).size, ColumnsOf(picture, 2).size);
    const unsigned chromaHeight = std::min(picture.plane[1].height, picture.plane[2].height);
    // Where the planes have no sample for each cell in turn, this row has.
    std::vector<std::uint8_t> copies;
    const auto chroma = [&](unsigned p) -> const std::uint8_t* {
        const unsigned row = chromaHeight ? std::min(2 * y >> picture.rowShift, chromaHeight - 1) : 0;
        if (chromaHeight && shift == 1 && chromaWidth >= cells) return picture.plane[p].Row(row);
        copies.resize(2 * std::size_t(cells), 128);
        std::uint8_t* const copy = &copies[(p - 1) * std::size_t(cells)];
        for (unsigned x = 0; chromaHeight && chromaWidth && x < cells; ++x)
            copy[x] = picture.plane[p].Row(row)[std::min(2 * x >> shift, chromaWidth - 1)];
        return copy;
    };
    const std::uint8_t *const u = chroma(1), *const v = chroma(2);
    variantsOf<TonesOfSamples>.For(set)(tones, upper, lower, u, v, whole);
    if (whole == cells) return;
    const std::uint8_t above[] = {upper[2 * whole], upper[2 * whole]}, below[] = {lower[2 * whole], lower[2 * whole]};
    TonesOfSamples(tones + whole, above, below, u + whole, v + whole, 1);
}

PrintTones::PrintTones(unsigned columns, unsigned rows, unsigned kept, InstructionSet set, Read read)
    : m_columns(columns),
      m_rows(rows),
      m_clean(variantsOf<MedianOfFive>.For(set)),
      m_smooth(variantsOf<MeanOfFive>.For(set)),
      m_restore(variantsOf<RestoreDetail>.For(set)),
      m_readRow(std::move(read)),
      m_raw(columns, 8),
      m_clear(columns, 8),
      m_soft(columns, kept),
      m_line(columns, 1) {}

const std::int16_t* PrintTones::Row(int y) {
    const unsigned row = unsigned(std::clamp(y, 0, int(m_rows) - 1));
    for (; m_smoothed <= row; ++m_smoothed) {
        for (; m_cleaned < std::min(m_smoothed + 3, m_rows); ++m_cleaned) {
            for (; m_read < std::min(m_cleaned + 3, m_rows); ++m_read) m_readRow(m_read, m_raw.Row(m_read));
            Apply(m_clean, m_raw, m_cleaned, m_clear);
        }
        Apply(m_smooth, m_clear, m_smoothed, m_soft);
        m_restore(m_soft.Row(m_smoothed), m_raw.Row(m_smoothed), m_columns);
        m_soft.RepeatEnds(m_smoothed);
    }
    return m_soft.Row(row);
}

// Down the columns, then along the row.
void PrintTones::Apply(Filter filter, CellRows& from, unsigned y, CellRows& to) {
    const std::int16_t* around[5];
    for (unsigned i = 0; i < 5; ++i) around[i] = from.Row(std::min(std::max(y + i, 2u) - 2, m_rows - 1));
    std::int16_t* const line = m_line.Row(0);
    filter(line, around, m_columns);
    m_line.RepeatEnds(0);
    for (unsigned i = 0; i < 5; ++i) around[i] = line + i - 2;
    filter(to.Row(y), around, m_columns);
}

}  // namespace AVBased
