#pragma once

#include <span>

#include "effects/geometry/mirage_arithmetic.h"

/// Rows of a plane that the plane's enlarged copy is laid over.
namespace AVBased {

/// How many rows are blended side by side, since a core keeps more lines in flight on two streams.
inline constexpr unsigned rowsTogether = 2;

/// A plane's enlarged copy.
template <class Sample>
struct Overlay {
    RowSampler<Sample> sampler;
    SharedAxis across;
    std::uint16_t weight;  ///< in 1/256
    Sample* enlarged;      ///< room for a row
    /// Samples that all serve as many positions: only the last one may serve fewer.
    unsigned regular = across.Count(across.size - 1) == across.Count(0) ? across.size : across.size - 1;
    unsigned blocks = std::min(sampler.SingleLoadBlocks(), regular / RowSampler<Sample>::blockSamples);
};

/// A row, the one that it shows enlarged, which is another, and how many rows of luma it serves.
template <class Sample>
struct RowInWork {
    Sample* row;
    const Sample* from;
    std::ptrdiff_t ahead;  ///< from `from` to what is fetched
    unsigned lumaRows;
};
/// At most as many as go together, which serve as many rows of luma each.
template <class Sample>
using RowsInWork = std::span<const RowInWork<Sample>>;

/// Blends a row from x on.
template <class Sample>
void BlendRest(const Overlay<Sample>& overlay, const RowInWork<Sample>& work, unsigned x) {
    const unsigned size = overlay.across.size;
    if (x == size) return;
    overlay.sampler(overlay.enlarged, work.from, x, size, work.ahead);
    for (unsigned end : {overlay.regular, size}) {
        if (x >= end) continue;
        const unsigned times = overlay.across.Count(x) * work.lumaRows;
        BlendSamples(work.row + x, overlay.enlarged + x, end - x, overlay.weight, times);
        x = end;
    }
}

template <class Sample>
void BlendRows(const Overlay<Sample>& overlay, RowsInWork<Sample> rows) {
    for (const RowInWork<Sample>& work : rows) BlendRest(overlay, work, 0);
}

}  // namespace AVBased
