#pragma once

#include <cstring>
#include <utility>

#include "TarvoBased/res_keeper.h"
#include "effects/base/frame_views.h"

/// How blur and sharpen walk a plane.
namespace AVBased {

// Both kernels are sums along the row, then down the column, so each row's sums serve the three rows around it.
struct BlurKernel {
    static constexpr int centreWeight = 2;
    static constexpr bool sharpens = false;
};
struct SharpenKernel {
    static constexpr int centreWeight = 1;
    static constexpr bool sharpens = true;
};

/// A sum along a row, at most 1020; every value down the column fits as well.
using RowSum = std::int16_t;

/// The samples of a row that are filtered, in bytes: how many, and how many before the first whose address in the
/// plane's first rows suits vectors.
struct FilteredBytes {
    std::size_t count, head;
};

/// Filters a plane in place. `Rows<Kernel, step>`, where `step` is the distance of neighbours in bytes, provides
///   Sum(sums, row, filtered): the sums of the samples at row + step, and
///   Filter(row, below, above, same, filtered): the samples at row + step from the sums of the row above, its own, and
///   those of the untouched row below; these then replace the sums of the row above.
/// Both may keep the sums in any order that they agree on, and 96 more than there are samples.
template <template <class, std::size_t> class Rows, class Kernel, class Pixel>
void FilterPlane(PlaneView<Pixel> plane) {
    constexpr int lineNoRows = 194;
    if (plane.width <= 2 || plane.height <= 2) return;
    constexpr std::size_t step = sizeof(Pixel);
    // Whole cache lines, from the start of one.
    constexpr std::size_t lineSums = 64 / sizeof(RowSum);
    const std::size_t count = (plane.width - 2) * step, room = (count + 96 + lineSums - 1) / lineSums * lineSums;
    const TarvoBased::ResKeeper<RowSum> memory(2 * room + lineSums, lineNoRows);
    RowSum* above = memory.get() + lineSums - std::uintptr_t(memory.get()) / sizeof(RowSum) % lineSums;
    RowSum* same = above + room;
    const auto row = [&](std::size_t y) { return reinterpret_cast<std::uint8_t*>(plane.Row(y)); };
    const FilteredBytes filtered{count, -(std::uintptr_t(row(1)) + step) % 32};

    Rows<Kernel, step>::Sum(above, row(0), filtered);
    Rows<Kernel, step>::Sum(same, row(1), filtered);
    const unsigned lastFiltered = plane.height % 2 ? plane.height - 2 : plane.height - 3;
    for (unsigned y = 1; y <= lastFiltered; ++y) {
        Rows<Kernel, step>::Filter(row(y), row(y + 1), above, same, filtered);
        std::swap(above, same);
    }
    // Deliberate: of an even height, the last row inside repeats the one above it.
    if (lastFiltered != plane.height - 2) std::memcpy(row(plane.height - 2) + step, row(lastFiltered) + step, count);
}

}  // namespace AVBased
