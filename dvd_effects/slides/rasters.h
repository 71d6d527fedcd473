#pragma once

#include "effects/base/frame_views.h"

namespace AVBased {

/// A plane of a frame as bytes, for arithmetic that treats every component alike: with 1 byte a sample, or the 4 of a
/// packed pixel. All of a slide's pictures are opaque, so an alpha mixes as a colour does.
template <class Sample>
struct Raster {
    static constexpr unsigned lanes = sizeof(Sample);

    PlaneView<Sample> view;
    unsigned columnShift = 0, rowShift = 0;             ///< from positions on the frame to samples
    std::uint8_t black[lanes] = {}, white[lanes] = {};  ///< the bytes of a sample in that colour

    std::uint8_t* Row(std::size_t y) const { return reinterpret_cast<std::uint8_t*>(view.Row(y)); }
};

namespace Rasters {

inline Raster<Rgba32> Of(const PackedView& view, unsigned) {
    return {view, 0, 0, {0, 0, 0, 255}, {255, 255, 255, 255}};
}
inline Raster<std::uint8_t> Of(const PlanarView& view, unsigned p) {
    switch (p) {
        case 0:
            return {view.plane[0], 0, 0, {16}, {235}};
        case 3:
            return {view.plane[3], 0, 0, {255}, {255}};
        default:
            return {view.plane[p], view.columnShift, view.rowShift, {128}, {128}};
    }
}

}  // namespace Rasters

/// Runs work(raster, rasters of `more` frames...) on every plane of a frame of a format that the effects know; the
/// other frames are of the same format.
template <class Work, class... More>
void ForEachRaster(Work work, IRawVideoFrame& frame, More&... more) {
    ForFrame(
        [&](const PackedView& view, const auto&... others) { work(Rasters::Of(view, 0), Rasters::Of(others, 0)...); },
        [&](const PlanarView& view, const auto&... others) {
            for (unsigned p = 0; p < view.planes; ++p) work(Rasters::Of(view, p), Rasters::Of(others, p)...);
        },
        frame, more...);
}

template <class Sample>
void FillBlack(const Raster<Sample>& raster) {
    for (unsigned y = 0; y < raster.view.height; ++y)
        for (unsigned x = 0; x < raster.view.width; ++x)
            std::memcpy(raster.Row(y) + std::size_t(x) * raster.lanes, raster.black, raster.lanes);
}

/// Makes a frame opaque black.
inline void FillBlack(IRawVideoFrame& frame) {
    ForEachRaster([](const auto& raster) { FillBlack(raster); }, frame);
}

}  // namespace AVBased
