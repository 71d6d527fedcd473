#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "effects/base/box.h"
#include "effects/base/frame_views.h"
#include "effects/geometry/block_gather.h"
#include "effects/geometry/pixel_gather.h"
#include "effects/geometry/sorted_gather.h"

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

/// A row of `count` pixels from (xBegin, y) on, and where their sources go.
struct SourceRow {
    unsigned xBegin, y, count;
    std::uint32_t *columns, *rows;
    bool* stays;  ///< whether the pixel has no source of its own

    void Set(unsigned i, std::optional<Source> source) const {
        stays[i] = !source;
        columns[i] = source ? source->x : xBegin + i;
        rows[i] = source ? source->y : y;
    }
};

/// Fills a row. It must give the same result for a row every time; `stays` is clear beforehand.
using FillSourceRow = std::function<void(const SourceRow& row)>;

template <class Map>
FillSourceRow PixelByPixel(const Map& map) {
    return [map](const SourceRow& row) {
        for (unsigned i = 0; i < row.count; ++i) row.Set(i, map(row.xBegin + i, row.y));
    };
}

/// The sources of a box of pixels, replayed on frames of any size and layout. What is kept is the plan for the last
/// size and layout: the sources themselves would take several times its memory, and touching fresh memory is what a
/// first pass mostly waits for. Another size or layout evaluates the map again.
class CoordinateTable {
 public:
    /// Whether frames may be replayed. A valid table may still be empty: then a replay changes nothing.
    bool IsValid() const { return m_valid; }
    void SetValid(bool valid) { m_valid = valid; }

    /// Keeps a copy of a map, and changes the picture as it says. map(x, y) returns std::optional<Source>; a pixel
    /// without one is its own source but not written: a replay will copy it onto itself, which differs in the chroma
    /// that it shares with its neighbours. A map may offer Rows(box, set), a FillSourceRow for rows from the box's left
    /// edge on, which is then called instead.
    template <class Map, class Picture>
    void Build(const Box& box, const Map& map, const Picture& picture, Outside outside) {
        m_geometry = {};
        m_beginRows = [box, map](InstructionSet set) -> FillSourceRow {
            if constexpr (requires { map.Rows(box, set); })
                return map.Rows(box, set);
            else
                return PixelByPixel(map);
        };
        m_box = box;
        Place(picture, outside, true);
    }
    void UseInstructionSet(InstructionSet set) { m_instructionSet = set; }
    /// Changes a picture as the sources say, within both the box and the picture.
    void Replay(const PackedView& picture, Outside outside) { Place(picture, outside, false); }
    void Replay(const PlanarView& picture, Outside outside) { Place(picture, outside, false); }

 private:
    // What a plan was made for.
    struct Geometry {
        unsigned width = 0, height = 0, chromaWidth = 0, chromaHeight = 0, columnShift = 0, rowShift = 0;
        Outside outside = Outside::Nearest;
        InstructionSet instructionSet = InstructionSet::Baseline;
        bool operator==(const Geometry&) const = default;
    };

    // A chroma sample whose last pixel stays, so that a first pass takes it from an earlier one.
    struct RimSample {
        unsigned x, y;
        Source source;
        bool white;
    };

    void Place(const PackedView& picture, Outside outside, bool first);
    void Place(const PlanarView& picture, Outside outside, bool first);

    template <class PlacePixel>
    void PlaceEach(const PlacePixel& place, bool first) const;
    PixelPlan PlanPixels(const Geometry& geometry, PixelPlan spent) const;
    // Adds the rim that a first pass treats on its own to `rim`, unless this is null.
    void PlanSamples(const Geometry& geometry, std::vector<RimSample>* rim);

    Box m_box;
    std::function<FillSourceRow(InstructionSet)> m_beginRows;  // null as long as the table is empty
    bool m_valid = false;
    InstructionSet m_instructionSet = BestInstructionSet();
    Geometry m_geometry;  // of the plans that are there
    PixelPlan m_pixels;
    bool m_isNew = false;                // the plan of pixels, which is worth sorting when it is used again
    std::optional<SortedPlan> m_sorted;  // then in its place
    BlockPlan m_luma, m_chroma;
};

}  // namespace AVBased
