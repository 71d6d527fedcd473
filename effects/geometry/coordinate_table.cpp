#include "effects/geometry/coordinate_table.h"

#include <cstring>
#include <limits>
#include <utility>

#include "effects/base/instruction_sets.h"
#include "effects/base/row_loops.h"
#include "effects/base/shared_samples.h"

namespace AVBased {
namespace {

template <class Sample>
std::unique_ptr<unsigned char[]> CopyOf(const PlaneView<Sample>& plane, PlaneView<Sample>& view) {
    auto bytes = std::make_unique_for_overwrite<unsigned char[]>(plane.ByteCount());
    if (plane.ByteCount()) std::memcpy(bytes.get(), plane.data, plane.ByteCount());
    view = plane;
    view.data = bytes.get();
    return bytes;
}

// The part of `box` in samples that are 1 << shift pixels apart.
Box Shrunk(const Box& box, unsigned columnShift, unsigned rowShift) {
    const auto begin = [](unsigned at, unsigned shift) { return at >> shift; };
    const auto end = [](unsigned at, unsigned shift) { return at == 0 ? 0 : ((at - 1) >> shift) + 1; };
    return {begin(box.xBegin, columnShift), end(box.xEnd, columnShift), begin(box.yBegin, rowShift),
            end(box.yEnd, rowShift)};
}

// Numbers the sources of `count` pixels of a row whose first pixel has the number `own`. The bounds grow to hold every
// position; those outside are treated as `outside` says.
template <Outside outside>
void NumberRow(const std::uint32_t* columns, const std::uint32_t* rows, std::uint32_t count, std::uint32_t own,
               std::uint32_t width, std::uint32_t height, std::uint32_t* from, Box* bounds) {
    Box b = *bounds;
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::uint32_t x = columns[i], y = rows[i];
        const std::uint32_t nearX = std::min(x, width - 1), nearY = std::min(y, height - 1);
        const bool isInside = nearX == x && nearY == y;
        std::uint32_t at = nearY * width + nearX;
        if constexpr (outside == Outside::White) at = isInside ? at : width * height;
        if constexpr (outside == Outside::Unchanged) at = isInside ? at : own + i;
        from[i] = at;
        b = b.JoinedTo({nearX, nearX + 1, nearY, nearY + 1});
    }
    *bounds = b;
}

// Keeps the sources of a row inside a picture and marks those that were outside where they are to turn white.
template <Outside outside>
void KeepInside(const std::uint32_t* fromColumns, const std::uint32_t* fromRows, std::uint32_t count,
                std::uint32_t width, std::uint32_t height, std::uint32_t* columns, std::uint32_t* rows,
                std::uint8_t* white) {
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::uint32_t x = fromColumns[i], y = fromRows[i];
        columns[i] = std::min(x, width - 1);
        rows[i] = std::min(y, height - 1);
        white[i] = outside == Outside::White && (columns[i] != x || rows[i] != y);
    }
}

// The pixels of a row that decide the chroma samples they share, as indices of the row: each sample's last one.
struct DecidingPixels {
    unsigned first, last, samples, shift;

    DecidingPixels(const Box& pixels, const Box& shared, unsigned columnShift)
        : first(((shared.xBegin + 1) << columnShift) - 1 - pixels.xBegin),
          last(std::min(shared.xEnd << columnShift, pixels.xEnd) - 1 - pixels.xBegin),
          samples(unsigned(shared.Width())),
          shift(columnShift) {}
    unsigned Of(unsigned sample) const { return std::min(first + (sample << shift), last); }
};

// The sources of chroma samples from those of the pixels that decide them, kept inside a plane.
template <unsigned columnShift>
void ShrinkRow(const BlockPlanner::Row& pixels, const DecidingPixels& deciding, unsigned rowShift, unsigned width,
               unsigned height, const BlockPlanner::Row& row) {
    if (deciding.samples == 0) return;
    const std::size_t first = deciding.first, last = deciding.last, whole = deciding.samples - 1;
    // One array after the other, so that each loop becomes vectors.
    const auto shrink = [=](auto* __restrict to, const auto* __restrict from, auto shrunk) {
        for (std::size_t i = 0; i < whole; ++i) to[i] = shrunk(from[first + (i << columnShift)]);
        to[whole] = shrunk(from[last]);
    };
    shrink(row.columns, pixels.columns, [=](std::uint32_t x) { return std::min(x >> columnShift, width - 1); });
    shrink(row.rows, pixels.rows, [=](std::uint32_t y) { return std::min(y >> rowShift, height - 1); });
    shrink(row.white, pixels.white, [](std::uint8_t white) { return white; });
}

// Positions are numbered in 32 bits.
bool IsNumbered(unsigned width, unsigned height) {
    return std::uint64_t(width) * height < std::numeric_limits<std::uint32_t>::max();
}

// The planes' sizes are what the format says, give or take how an odd edge is rounded.
bool HasPlainChroma(const PlanarView& picture) {
    const ComponentView &first = picture.plane[1], &second = picture.plane[2];
    return first.width == second.width && first.height == second.height && first.Contains(0, 0);
}

// The sources of the rows of a box, of which the last few are remembered: a power of two.
class SourceRows {
 public:
    SourceRows(const Box& box, unsigned remembered)
        : m_xBegin(box.xBegin),
          m_width(unsigned(box.Width())),
          m_remembered(remembered),
          m_columns(box.Width() * remembered),
          m_rows(box.Width() * remembered),
          m_stays(std::make_unique<bool[]>(box.Width() * remembered)) {}

    SourceRow Filled(const FillSourceRow& fill, unsigned y) {
        const SourceRow row = At(y);
        std::fill_n(row.stays, m_width, false);
        fill(row);
        return row;
    }
    // Of the remembered pixels from one corner to the other.
    std::optional<Source> LastThatMoves(unsigned firstIndex, unsigned lastIndex, unsigned firstY, unsigned lastY) {
        for (unsigned y = lastY + 1; y-- > firstY;)
            for (unsigned i = lastIndex + 1; i-- > firstIndex;)
                if (const SourceRow row = At(y); !row.stays[i]) return Source{row.columns[i], row.rows[i]};
        return std::nullopt;
    }

 private:
    SourceRow At(unsigned y) {
        const std::size_t at = std::size_t(y % m_remembered) * m_width;
        return {m_xBegin, y, m_width, m_columns.data() + at, m_rows.data() + at, m_stays.get() + at};
    }

    unsigned m_xBegin, m_width, m_remembered;
    std::vector<std::uint32_t> m_columns, m_rows;
    std::unique_ptr<bool[]> m_stays;
};

}  // namespace

template <class PlacePixel>
void CoordinateTable::PlaceEach(const PlacePixel& place, bool first) const {
    const FillSourceRow fill = m_beginRows(m_instructionSet);
    SourceRows memory(m_box, 1);
    for (unsigned y = m_box.yBegin; y < m_box.yEnd; ++y) {
        const SourceRow row = memory.Filled(fill, y);
        for (unsigned i = 0; i < row.count; ++i)
            if (!first || !row.stays[i]) place(row.xBegin + i, y, {row.columns[i], row.rows[i]});
    }
}

PixelPlan CoordinateTable::PlanPixels(const Geometry& geometry, PixelPlan spent) const {
    const Box target = m_box.ClippedTo(geometry.width, geometry.height);
    PixelPlanner planner(target, geometry.width, geometry.height, m_instructionSet, std::move(spent));
    const auto variants = geometry.outside == Outside::White       ? variantsOf<NumberRow<Outside::White>>
                          : geometry.outside == Outside::Unchanged ? variantsOf<NumberRow<Outside::Unchanged>>
                                                                   : variantsOf<NumberRow<Outside::Nearest>>;
    const auto number = variants.For(m_instructionSet);
    Box source = nothing;
    const FillSourceRow fill = m_beginRows(m_instructionSet);
    SourceRows memory(target, 1);
    for (unsigned y = target.yBegin; y < target.yEnd; ++y) {
        const SourceRow row = memory.Filled(fill, y);
        number(row.columns, row.rows, row.count, y * geometry.width + target.xBegin, geometry.width, geometry.height,
               planner.Row(), &source);
        planner.AddRow();
    }
    // A pixel that keeps its value reads itself.
    if (geometry.outside == Outside::Unchanged) source = source.JoinedTo(target);
    return planner.Finish(source);
}

// Luma and chroma in one walk: of the rows that share a row of chroma the last one decides it.
void CoordinateTable::PlanSamples(const Geometry& geometry, std::vector<RimSample>* rim) {
    const unsigned width = geometry.chromaWidth, height = geometry.chromaHeight, rowShift = geometry.rowShift;
    const bool whitens = geometry.outside == Outside::White;
    const auto keepInside =
        (whitens ? variantsOf<KeepInside<Outside::White>> : variantsOf<KeepInside<Outside::Nearest>>)
            .For(m_instructionSet);
    const auto shrink = WithConstantShift(
        geometry.columnShift, [&](auto shift) { return variantsOf<ShrinkRow<shift>>.For(m_instructionSet); });
    const Box target = m_box.ClippedTo(geometry.width, geometry.height);
    const Box shared = Shrunk(target, geometry.columnShift, rowShift).ClippedTo(width, height);
    const DecidingPixels deciding(target, shared, geometry.columnShift);
    BlockPlanner luma(target, geometry.width, geometry.height, m_instructionSet),
        chroma(shared, width, height, m_instructionSet);

    const FillSourceRow fill = m_beginRows(m_instructionSet);
    SourceRows memory(target, 1u << rowShift);
    for (unsigned y = target.yBegin; y < target.yEnd; ++y) {
        const SourceRow row = memory.Filled(fill, y);
        const BlockPlanner::Row kept = luma.Next();
        keepInside(row.columns, row.rows, row.count, geometry.width, geometry.height, kept.columns, kept.rows,
                   kept.white);
        const unsigned chromaY = y >> rowShift;
        if (chromaY >= shared.yEnd || (y + 1 < target.yEnd && (y + 1) >> rowShift == chromaY)) continue;
        shrink(kept, deciding, rowShift, width, height, chroma.Next());
        if (!rim || !std::memchr(row.stays, true, row.count)) continue;
        for (unsigned sample = 0; sample < deciding.samples; ++sample) {
            const unsigned last = deciding.Of(sample), x = shared.xBegin + sample;
            if (!row.stays[last]) continue;
            const unsigned firstX = std::max(x << geometry.columnShift, target.xBegin) - target.xBegin,
                           firstY = std::max(chromaY << rowShift, target.yBegin);
            const std::optional<Source> source = memory.LastThatMoves(firstX, last, firstY, y);
            if (!source) continue;
            const Source inside{std::min(source->x, geometry.width - 1), std::min(source->y, geometry.height - 1)},
                near{std::min(inside.x >> geometry.columnShift, width - 1), std::min(inside.y >> rowShift, height - 1)};
            rim->push_back({x, chromaY, near, whitens && inside != *source});
        }
    }
    m_luma = luma.Finish();
    m_chroma = chroma.Finish();
}

void CoordinateTable::Place(const PackedView& picture, Outside outside, bool first) {
    if (!m_beginRows || !picture.Contains(0, 0)) return;
    if (!IsNumbered(picture.width, picture.height)) {
        PackedView from;
        const auto copy = CopyOf(picture, from);
        return PlaceEach(PlacePacked{picture, from, outside}, first);
    }
    const Geometry geometry{picture.width, picture.height, 0, 0, 0, 0, outside, m_instructionSet};
    if (m_geometry != geometry) {
        m_geometry = {};
        m_luma = {};
        m_chroma = {};
        m_sorted.reset();
        m_pixels = PlanPixels(geometry, std::exchange(m_pixels, {}));
        m_geometry = geometry;
        m_isNew = true;
    } else if (std::exchange(m_isNew, false)) {
        m_sorted = Sorted(m_pixels);
        if (m_sorted) m_pixels = {};
    }
    if (m_sorted) return GatherSorted(*m_sorted, picture, m_instructionSet);
    GatherPixels(m_pixels, picture, Rgba32{255, 255, 255, 255}, m_instructionSet);
}

void CoordinateTable::Place(const PlanarView& picture, Outside outside, bool first) {
    const ComponentView &luma = picture.plane[0], &chroma = picture.plane[1];
    if (!m_beginRows || !luma.Contains(0, 0)) return;
    if (!HasPlainChroma(picture) || outside == Outside::Unchanged || !BlockPlanner::CanPlan(luma.width, luma.height) ||
        !BlockPlanner::CanPlan(chroma.width, chroma.height)) {
        PlanarView from = picture;
        std::unique_ptr<unsigned char[]> copies[3];
        for (unsigned p = 0; p < 3; ++p) copies[p] = CopyOf(picture.plane[p], from.plane[p]);
        return PlaceEach(PlacePlanar{picture, from, outside}, first);
    }
    const Geometry geometry{luma.width,          luma.height,      chroma.width, chroma.height,
                            picture.columnShift, picture.rowShift, outside,      m_instructionSet};
    std::vector<RimSample> rim;
    if (m_geometry != geometry) {
        m_geometry = {};
        m_pixels = {};
        m_sorted.reset();
        PlanSamples(geometry, first ? &rim : nullptr);
        m_geometry = geometry;
    }
    GatherBlocks(m_luma, luma, whiteYuv[0], m_instructionSet);
    std::vector<std::uint8_t> rimValues(rim.size());
    for (unsigned p : {1, 2}) {
        const ComponentView& plane = picture.plane[p];
        std::ranges::transform(rim, rimValues.begin(), [&](const RimSample& sample) {
            return sample.white ? whiteYuv[p] : plane.Row(sample.source.y)[sample.source.x];
        });
        GatherBlocks(m_chroma, plane, whiteYuv[p], m_instructionSet);
        for (std::size_t i = 0; i < rim.size(); ++i) plane.Row(rim[i].y)[rim[i].x] = rimValues[i];
    }
}

}  // namespace AVBased
