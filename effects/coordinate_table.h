#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <vector>

#include "effects/frame_copy.h"
#include "effects/frame_views.h"

/// Geometric effects: each destination pixel takes a source pixel, and the pieces below do the rest. The placers serve
/// effects with and without a table.
namespace AVBased {

/// The luma or packed position that a destination pixel is taken from. It may lie outside the picture.
struct Source {
    std::uint32_t x, y;
    bool operator==(const Source&) const = default;
};

/// What a destination pixel becomes when its source lies outside the picture that is read.
enum class Outside { Unchanged, White, Nearest };

inline constexpr std::uint32_t whiteRgba32 = 0xFFFFFFFF;
inline constexpr std::uint8_t whiteYuv[] = {235, 128, 128};

/// The nearest position inside; `plane` must not be empty.
template <class Sample>
Source NearestInside(const PlaneView<Sample>& plane, Source source) {
    return {std::min(source.x, plane.width - 1), std::min(source.y, plane.height - 1)};
}

/// Copies one pixel of `from`, an untouched picture, to (x, y) of `to`. A position outside `to` is dropped.
struct PlacePacked {
    PackedView to, from;
    Outside outside = Outside::Nearest;

    void operator()(unsigned x, unsigned y, Source source) const {
        if (!to.Contains(x, y)) return;
        if (!from.Contains(source.x, source.y)) {
            if (outside == Outside::White) StoreWord(to.Row(y) + x, whiteRgba32);
            if (outside != Outside::Nearest || !from.Contains(0, 0)) return;
            source = NearestInside(from, source);
        }
        to.Row(y)[x] = from.Row(source.y)[source.x];
    }
};

/// The same for the luma sample and the two chroma samples that cover it; alpha stays. Chroma that several luma
/// positions share is written for each of them, so the last one wins. Where `to` has no chroma sample, at an odd edge,
/// that write is dropped; where `from` has none, the nearest one is read.
struct PlacePlanar {
    PlanarView to, from;
    Outside outside = Outside::Nearest;

    void operator()(unsigned x, unsigned y, Source source) const {
        if (!to.plane[0].Contains(x, y)) return;
        if (!from.plane[0].Contains(source.x, source.y)) {
            if (outside == Outside::White)
                for (unsigned p = 0; p < 3; ++p)
                    if (std::uint8_t* const sample = to.At(p, x, y)) *sample = whiteYuv[p];
            if (outside != Outside::Nearest || !from.plane[0].Contains(0, 0)) return;
            source = NearestInside(from.plane[0], source);
        }
        to.plane[0].Row(y)[x] = from.plane[0].Row(source.y)[source.x];
        for (unsigned p = 1; p < 3; ++p) {
            std::uint8_t* const sample = to.At(p, x, y);
            const ComponentView& chroma = from.plane[p];
            if (!sample || !chroma.Contains(0, 0)) continue;
            const Source near = NearestInside(chroma, {source.x >> from.columnShift, source.y >> from.rowShift});
            *sample = chroma.Row(near.y)[near.x];
        }
    }
};

/// The part of a picture that a table covers; the ends are exclusive.
struct Box {
    unsigned xBegin = 0, xEnd = 0, yBegin = 0, yEnd = 0;
};

/// The sources of a box of pixels, computed once and replayed on later frames of any size and layout.
class CoordinateTable {
 public:
    /// Whether frames may be replayed. A valid table may still be empty: then a replay changes nothing.
    bool IsValid() const { return m_valid; }
    void SetValid(bool valid) { m_valid = valid; }

    /// Fills the table from map(x, y), which answers std::optional<Source>, and places each pixel on the way. A pixel
    /// without an answer is stored as its own source and not placed: a replay will copy it onto itself, which differs
    /// in the chroma that it shares with its neighbours.
    template <class Map, class Place>
    void Build(const Box& box, Map map, Place place) {
        std::vector<Source> sources;
        sources.reserve(std::size_t(box.xEnd - box.xBegin) * (box.yEnd - box.yBegin));
        for (unsigned y = box.yBegin; y < box.yEnd; ++y)
            for (unsigned x = box.xBegin; x < box.xEnd; ++x) {
                const std::optional<Source> source = map(x, y);
                sources.push_back(source.value_or(Source{x, y}));
                if (source) place(x, y, *source);
            }
        m_sources = std::move(sources);
        m_box = box;
    }

    /// Places every stored pixel, in the order in which they were stored.
    template <class Place>
    void Replay(Place place) const {
        const Source* source = m_sources.data();
        for (unsigned y = m_box.yBegin; y < m_box.yEnd; ++y)
            for (unsigned x = m_box.xBegin; x < m_box.xEnd; ++x) place(x, y, *source++);
    }

 private:
    Box m_box;
    std::vector<Source> m_sources;
    bool m_valid = false;
};

/// The routines of an effect with a table, for packed and planar pictures: `to` is the frame, `from` a copy of it.
template <class Effect>
struct TableRoutines {
    void (Effect::*firstPacked)(const PackedView& to, const PackedView& from);
    void (Effect::*firstPlanar)(const PlanarView& to, const PlanarView& from);
    void (Effect::*replayPacked)(const PackedView& to, const PackedView& from);
    void (Effect::*replayPlanar)(const PlanarView& to, const PlanarView& from);
};

/// Replays the effect's table if it is valid; computes it otherwise.
template <class Effect>
void ProcessWithTable(Effect& effect, CoordinateTable& table, const TableRoutines<Effect>& routines,
                      IRawVideoFrame& frame) {
    const FrameCopy source(frame);
    const auto run = [&](auto packed, auto planar) {
        ForFrame([&](const PackedView& to, const PackedView& from) { (effect.*packed)(to, from); },
                 [&](const PlanarView& to, const PlanarView& from) { (effect.*planar)(to, from); }, frame, *source);
    };
    if (table.IsValid()) return run(routines.replayPacked, routines.replayPlanar);
    run(routines.firstPacked, routines.firstPlanar);
    // Deliberate: also after a frame of a format that no routine knows.
    table.SetValid(true);
}

}  // namespace AVBased
