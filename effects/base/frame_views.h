#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "avbase/IRawVideoFrame.h"
#include "avbase/avbase_srcutils/pixel_formats.h"

/// A frame is taken apart here and nowhere else: routines see views, never frames.
namespace AVBased {

/// A packed pixel, in memory order.
struct Rgba32 {
    std::uint8_t blue, green, red, alpha;
    bool operator==(const Rgba32&) const = default;
};

/// A pixel as a number: blue in the low byte, then green, red and alpha, on every machine.
inline std::uint32_t LoadWord(const Rgba32* pixel) {
    std::uint32_t word;
    std::memcpy(&word, pixel, sizeof word);
    if constexpr (std::endian::native == std::endian::big) word = __builtin_bswap32(word);
    return word;
}
inline void StoreWord(Rgba32* pixel, std::uint32_t word) {
    if constexpr (std::endian::native == std::endian::big) word = __builtin_bswap32(word);
    std::memcpy(pixel, &word, sizeof word);
}
constexpr std::uint32_t Blue(std::uint32_t word) { return word & 255; }
constexpr std::uint32_t Green(std::uint32_t word) { return word >> 8 & 255; }
constexpr std::uint32_t Red(std::uint32_t word) { return word >> 16 & 255; }
inline constexpr std::uint32_t alphaMask = 0xFF000000;
/// Three colours of 0 to 255 below the alpha of another pixel.
constexpr std::uint32_t WithAlphaOf(std::uint32_t word, std::uint32_t blue, std::uint32_t green, std::uint32_t red) {
    return (word & alphaMask) | red << 16 | green << 8 | blue;
}

/// One plane: width in samples, pitch in bytes, height in rows. pitch x height bytes may be touched.
template <class Sample>
struct PlaneView {
    unsigned char* data = nullptr;
    unsigned width = 0, pitch = 0, height = 0;

    Sample* Row(std::size_t y) const { return reinterpret_cast<Sample*>(data + y * pitch); }
    unsigned char* Bytes(std::size_t y) const { return data + y * pitch; }
    std::size_t ByteCount() const { return std::size_t(pitch) * height; }
    bool Contains(unsigned x, unsigned y) const { return x < width && y < height; }
};
using PackedView = PlaneView<Rgba32>;
using ComponentView = PlaneView<std::uint8_t>;

struct PlanarView {
    ComponentView plane[4];  ///< luma, two chroma, alpha
    unsigned planes = 0, columnShift = 0, rowShift = 0;

    bool HasAlpha() const { return planes == 4; }
    /// The sample of plane p that covers luma position (x, y); null where the plane has none: chroma sizes round down,
    /// so the last column and row of an odd picture may be without.
    std::uint8_t* At(unsigned p, unsigned x, unsigned y) const {
        const bool chroma = p == 1 || p == 2;
        const unsigned column = chroma ? x >> columnShift : x, row = chroma ? y >> rowShift : y;
        return plane[p].Contains(column, row) ? plane[p].Row(row) + column : nullptr;
    }
};

/// One plane of a frame. Never wider than its pitch and empty without memory, whatever the frame says.
template <class Sample>
PlaneView<Sample> ViewPlane(IRawVideoFrame& frame, unsigned plane) {
    PlaneView<Sample> view;
    unsigned rowBytes = 0;
    view.data = frame.GetBuffer(plane, &rowBytes, &view.pitch, &view.height);
    view.width = std::min(rowBytes, view.pitch) / unsigned(sizeof(Sample));
    return view.data ? view : PlaneView<Sample>{};
}

inline PackedView ViewPacked(IRawVideoFrame& frame) { return ViewPlane<Rgba32>(frame, 0); }

inline PlanarView ViewPlanar(IRawVideoFrame& frame, const FormatInfo& info) {
    PlanarView view{{}, info.PlaneCount(), info.ColumnShift(), info.RowShift()};
    for (unsigned p = 0; p < view.planes; ++p) view.plane[p] = ViewPlane<std::uint8_t>(frame, p);
    return view;
}

/// Plane 2 for routines that step both chroma planes by the pitch of plane 1. Where its rows would then leave its
/// memory, plane 2 keeps its own pitch.
inline ComponentView WithPitchOf(const ComponentView& sibling, ComponentView plane) {
    const std::size_t end = plane.height ? std::size_t(plane.height - 1) * sibling.pitch + plane.width : 0;
    if (end <= plane.ByteCount()) plane.pitch = sibling.pitch;
    return plane;
}

/// Runs packed(view) or planar(view) on a frame of a format that the effects know, followed by the views of `more`
/// frames of the same format; any other format runs neither.
template <class Packed, class Planar, class... More>
void ForFrame(Packed&& packed, Planar&& planar, IRawVideoFrame& frame, More&... more) {
    const FormatInfo* const info = FindFormat(frame.GetPixelFormat());
    if (!info || !info->forEffects) return;
    if (info->packed)
        packed(ViewPacked(frame), ViewPacked(more)...);
    else
        planar(ViewPlanar(frame, *info), ViewPlanar(more, *info)...);
}

}  // namespace AVBased
