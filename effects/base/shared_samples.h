#pragma once

#include <algorithm>
#include <type_traits>

#include "effects/base/frame_views.h"

namespace AVBased {

/// One axis of a plane whose samples each serve a group of luma positions; luma itself has groups of one. A sample
/// beyond the last luma position belongs to none and is not counted.
struct SharedAxis {
    unsigned lumaSize = 0, shift = 0, size = 0;

    SharedAxis(unsigned lumaPositions, unsigned planeShift, unsigned planeSize)
        : lumaSize(lumaPositions),
          shift(planeShift),
          size(lumaPositions ? std::min(planeSize, ((lumaPositions - 1) >> planeShift) + 1) : 0) {}

    unsigned First(unsigned sample) const { return sample << shift; }
    /// The position whose write stays where each writes in turn.
    unsigned Last(unsigned sample) const { return std::min(First(sample) + (1u << shift), lumaSize) - 1; }
    unsigned Count(unsigned sample) const { return Last(sample) - First(sample) + 1; }
};

inline bool IsChroma(unsigned plane) { return plane == 1 || plane == 2; }
inline SharedAxis ColumnsOf(const PlanarView& view, unsigned plane) {
    return {view.plane[0].width, IsChroma(plane) ? view.columnShift : 0, view.plane[plane].width};
}
inline SharedAxis RowsOf(const PlanarView& view, unsigned plane) {
    return {view.plane[0].height, IsChroma(plane) ? view.rowShift : 0, view.plane[plane].height};
}
inline SharedAxis ColumnsOf(const PackedView& view) { return {view.width, 0, view.width}; }
inline SharedAxis RowsOf(const PackedView& view) { return {view.height, 0, view.height}; }

enum class Planes { Colours, All };
/// Calls work(plane, columns, rows), or work(plane), for the plane of packed pixels, or in turn for luma, both chroma
/// planes and, of all planes, alpha.
template <class Work>
void ForEachPlane(IRawVideoFrame& frame, Planes planes, Work work) {
    const auto call = [&](const auto& plane, const SharedAxis& columns, const SharedAxis& rows) {
        if constexpr (std::is_invocable_v<Work, decltype(plane)>)
            work(plane);
        else
            work(plane, columns, rows);
    };
    ForFrame([&](const PackedView& picture) { call(picture, ColumnsOf(picture), RowsOf(picture)); },
             [&](const PlanarView& picture) {
                 for (unsigned p = 0; p < (planes == Planes::All ? picture.planes : 3); ++p)
                     call(picture.plane[p], ColumnsOf(picture, p), RowsOf(picture, p));
             },
             frame);
}

/// Returns work(shift) with a chroma plane's shift, 0 to 2, as a constant: for routines that are compiled for each.
template <class Work>
auto WithConstantShift(unsigned shift, Work work) {
    if (shift == 0) return work(std::integral_constant<unsigned, 0>{});
    if (shift == 1) return work(std::integral_constant<unsigned, 1>{});
    return work(std::integral_constant<unsigned, 2>{});
}

}  // namespace AVBased
