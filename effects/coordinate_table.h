#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "effects/block_gather.h"
#include "effects/box.h"
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

/// For each pixel of a part of a packed picture, the pixel that it is taken from: ready for one size of picture.
struct GatherPlan {
    struct Span {
        unsigned begin = 0, end = 0;
    };

    Box target;
    Box source;                             ///< what the copied pixels lie in
    std::unique_ptr<std::uint32_t[]> from;  ///< y x width + x, row by row over the target; width x height means white
    std::vector<Span> spans;                ///< the columns of each row of the target that change
};

/// The sources of a box of pixels, computed once and replayed on later frames of any size and layout.
class CoordinateTable {
 public:
    /// Whether frames may be replayed. A valid table may still be empty: then a replay changes nothing.
    bool IsValid() const { return m_valid; }
    void SetValid(bool valid) { m_valid = valid; }

    /// Fills the table from map(x, y), which answers std::optional<Source>, and changes the picture accordingly. A
    /// pixel without an answer is stored as its own source but not written: a replay will copy it onto itself, which
    /// differs in the chroma that it shares with its neighbours. A map that answers for every pixel may offer
    /// FillRow(xBegin, y, count, columns, rows), which is then asked for whole rows.
    template <class Map, class Picture>
    void Build(const Box& box, const Map& map, const Picture& picture, Outside outside) {
        const Stays stays = Fill(box, map);
        PlaceFirst(picture, outside, stays.get());
    }
    void UseInstructionSet(InstructionSet set) { m_instructionSet = set; }
    /// Changes a picture as the stored sources say, within both the box and the picture.
    void Replay(const PackedView& picture, Outside outside);
    void Replay(const PlanarView& picture, Outside outside);

 private:
    // One flag for each pixel of the box: not written by the first pass. Null where every pixel is written.
    using Stays = std::unique_ptr<bool[]>;

    // What a plan was made for.
    struct Geometry {
        unsigned width = 0, height = 0, chromaWidth = 0, chromaHeight = 0, columnShift = 0, rowShift = 0;
        Outside outside = Outside::Nearest;
        InstructionSet instructionSet = InstructionSet::Baseline;
        bool operator==(const Geometry&) const = default;
    };

    template <class Map>
    Stays Fill(const Box& box, const Map& map) {
        const std::size_t count = box.Width() * box.Height();
        auto columns = std::make_unique_for_overwrite<std::uint32_t[]>(count);
        auto rows = std::make_unique_for_overwrite<std::uint32_t[]>(count);
        Stays stays;
        std::size_t i = 0;
        for (unsigned y = box.yBegin; y < box.yEnd; ++y) {
            if constexpr (requires { map.FillRow(box.xBegin, y, 0u, &columns[i], &rows[i]); }) {
                map.FillRow(box.xBegin, y, unsigned(box.Width()), &columns[i], &rows[i]);
                i += box.Width();
                continue;
            }
            for (unsigned x = box.xBegin; x < box.xEnd; ++x, ++i) {
                const std::optional<Source> source = map(x, y);
                columns[i] = source ? source->x : x;
                rows[i] = source ? source->y : y;
                if (source) continue;
                if (!stays) stays = std::make_unique<bool[]>(count);
                stays[i] = true;
            }
        }
        m_columns = std::move(columns);
        m_rows = std::move(rows);
        m_box = box;
        Forget();
        return stays;
    }
    void PlaceFirst(const PackedView& picture, Outside outside, const bool* stays);
    void PlaceFirst(const PlanarView& picture, Outside outside, const bool* stays);

    void Forget();
    template <class Place>
    void PlaceEach(const Place& place, const bool* stays) const;
    GatherPlan PlanPixels(const Geometry& geometry) const;
    BlockPlan PlanLuma(const Geometry& geometry) const;
    BlockPlan PlanChroma(const Geometry& geometry, const bool* stays) const;

    Box m_box;
    std::unique_ptr<std::uint32_t[]> m_columns, m_rows;
    bool m_valid = false;
    InstructionSet m_instructionSet = BestInstructionSet();
    Geometry m_geometry;  // of the plans that are there
    GatherPlan m_pixels;
    BlockPlan m_luma, m_chroma;
};

/// The routines of an effect with a table, for packed and planar pictures.
template <class Effect>
struct TableRoutines {
    void (Effect::*firstPacked)(const PackedView& picture);
    void (Effect::*firstPlanar)(const PlanarView& picture);
    void (Effect::*replayPacked)(const PackedView& picture);
    void (Effect::*replayPlanar)(const PlanarView& picture);
};

/// Replays the effect's table if it is valid; computes it otherwise.
template <class Effect>
void ProcessWithTable(Effect& effect, CoordinateTable& table, const TableRoutines<Effect>& routines, InstructionSet set,
                      IRawVideoFrame& frame) {
    table.UseInstructionSet(set);
    const auto run = [&](auto packed, auto planar) {
        ForFrame([&](const PackedView& picture) { (effect.*packed)(picture); },
                 [&](const PlanarView& picture) { (effect.*planar)(picture); }, frame);
    };
    if (table.IsValid()) return run(routines.replayPacked, routines.replayPlanar);
    run(routines.firstPacked, routines.firstPlanar);
    // Deliberate: also after a frame of a format that no routine knows.
    table.SetValid(true);
}

}  // namespace AVBased
