#pragma once

#include <algorithm>
#include <cstdint>

#include "effects/base/box.h"
#include "effects/base/shared_samples.h"

/// Rows of luma and the row of chroma that they share, for effects that mix the two. A block is the 2^shift luma
/// columns that one chroma sample serves.
namespace AVBased {

/// The luma rows that go with a row of chroma: its own, and for the last one all that is left.
inline Span LumaRowsOf(const SharedAxis& rows, unsigned chromaRow) {
    return {rows.First(chromaRow), chromaRow + 1 < rows.size ? rows.First(chromaRow + 1) : rows.lumaSize};
}

/// Adds the samples of each of `blocks` blocks of a row to its sum; the last sample stands in for missing ones.
template <unsigned shift>
void AddBlocks(std::uint16_t* __restrict sums, const std::uint8_t* __restrict luma, unsigned width, unsigned blocks) {
    constexpr unsigned columns = 1u << shift;
    const unsigned whole = std::min(blocks, width >> shift);
    for (unsigned block = 0; block < whole; ++block) {
        unsigned sum = 0;
        for (unsigned i = 0; i < columns; ++i) sum += luma[block * columns + i];
        sums[block] = std::uint16_t(sums[block] + sum);
    }
    for (unsigned block = whole; block < blocks; ++block)
        for (unsigned i = 0; i < columns; ++i)
            sums[block] = std::uint16_t(sums[block] + luma[std::min(block * columns + i, width - 1)]);
}

/// Repeats the value of each block for its columns, and the last one to the end of the row.
template <unsigned shift, class Value>
void SpreadBlocks(Value* __restrict row, unsigned width, const Value* __restrict values, unsigned blocks) {
    constexpr unsigned columns = 1u << shift;
    const unsigned whole = std::min(blocks, width >> shift);
    for (unsigned block = 0; block < whole; ++block)
        for (unsigned i = 0; i < columns; ++i) row[block * columns + i] = values[block];
    std::fill(row + whole * columns, row + width, values[blocks - 1]);
}

}  // namespace AVBased
