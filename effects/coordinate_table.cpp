#include "effects/coordinate_table.h"

#include <cstring>
#include <limits>

#include "effects/instruction_sets.h"
#include "effects/row_loops.h"

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

// The smallest box that holds what `plan` reads, and the columns of each row that it changes.
void Finish(GatherPlan& plan, unsigned width, unsigned height, const Box& source) {
    plan.source = source.xBegin < source.xEnd ? source.ClippedTo(width, height) : Box{};
    plan.spans.resize(plan.target.Height());
    for (std::size_t y = 0; y < plan.target.Height(); ++y) {
        const std::uint32_t* const row = &plan.from[y * plan.target.Width()];
        const std::uint32_t own = std::uint32_t((plan.target.yBegin + y) * width);
        GatherPlan::Span& span = plan.spans[y];
        span = {plan.target.xBegin, plan.target.xEnd};
        while (span.begin < span.end && row[span.begin - plan.target.xBegin] == own + span.begin) ++span.begin;
        while (span.begin < span.end && row[span.end - 1 - plan.target.xBegin] == own + span.end - 1) --span.end;
    }
}

// The sources of a turned row lie on as many pages as it has pixels, which no hardware prefetcher follows. Where the
// copy is larger than the nearer caches, asking this many pixels ahead hides most of the wait.
constexpr unsigned gatherAhead = 128, gatherStep = 16;

GatherPlan EmptyPlan(const Box& target) {
    GatherPlan plan;
    plan.target = target;
    const std::size_t count = target.Width() * target.Height();
    // The loops look ahead past the last pixel.
    plan.from = std::make_unique_for_overwrite<std::uint32_t[]>(count + gatherAhead);
    std::fill_n(&plan.from[count], gatherAhead, 0u);
    return plan;
}

// Numbers the sources of `count` pixels of a row whose first pixel has the number `own`. The bounds grow to hold every
// position; those outside are treated as `outside` says.
struct RowBounds {
    std::uint32_t xBegin, xEnd, yBegin, yEnd;
};
template <Outside outside>
void NumberRow(const std::uint32_t* columns, const std::uint32_t* rows, std::uint32_t count, std::uint32_t own,
               std::uint32_t width, std::uint32_t height, std::uint32_t* from, RowBounds* bounds) {
    RowBounds b = *bounds;
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::uint32_t x = columns[i], y = rows[i];
        const std::uint32_t nearX = std::min(x, width - 1), nearY = std::min(y, height - 1);
        const bool isInside = nearX == x && nearY == y;
        std::uint32_t at = nearY * width + nearX;
        if constexpr (outside == Outside::White) at = isInside ? at : width * height;
        if constexpr (outside == Outside::Unchanged) at = isInside ? at : own + i;
        from[i] = at;
        b.xBegin = std::min(b.xBegin, nearX);
        b.xEnd = std::max(b.xEnd, nearX + 1);
        b.yBegin = std::min(b.yBegin, nearY);
        b.yEnd = std::max(b.yEnd, nearY + 1);
    }
    *bounds = b;
}

// Rewrites the picture from a copy of what the plan reads.
void Gather(const GatherPlan& plan, const PackedView& picture, Rgba32 white) {
    const std::size_t width = picture.width, count = width * picture.height;
    const auto copy = std::make_unique_for_overwrite<Rgba32[]>(count + 1);
    copy[count] = white;
    for (std::size_t y = plan.source.yBegin; y < plan.source.yEnd; ++y)
        std::memcpy(&copy[y * width + plan.source.xBegin], picture.Row(y) + plan.source.xBegin,
                    plan.source.Width() * sizeof(Rgba32));
    for (unsigned y = plan.target.yBegin; y < plan.target.yEnd; ++y) {
        const unsigned band = y - plan.target.yBegin;
        const GatherPlan::Span span = plan.spans[band];
        const std::uint32_t* const from = &plan.from[band * plan.target.Width()] + (span.begin - plan.target.xBegin);
        Rgba32* const row = picture.Row(y) + span.begin;
        const unsigned length = span.end - span.begin;
        unsigned i = 0;
        for (; i + gatherStep <= length; i += gatherStep) {
            PrefetchToWrite(row + i);
            for (unsigned j = i; j < i + gatherStep; ++j) {
                __builtin_prefetch(&copy[from[j + gatherAhead]]);
                row[j] = copy[from[j]];
            }
        }
        for (; i < length; ++i) row[i] = copy[from[i]];
    }
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

// Positions are numbered in 32 bits.
bool IsNumbered(unsigned width, unsigned height) {
    return std::uint64_t(width) * height < std::numeric_limits<std::uint32_t>::max();
}

// The planes' sizes are what the format says, give or take how an odd edge is rounded.
bool HasPlainChroma(const PlanarView& picture) {
    const ComponentView &first = picture.plane[1], &second = picture.plane[2];
    return first.width == second.width && first.height == second.height && first.Contains(0, 0);
}

}  // namespace

template <class Place>
void CoordinateTable::PlaceEach(const Place& place, const bool* stays) const {
    std::size_t i = 0;
    for (unsigned y = m_box.yBegin; y < m_box.yEnd; ++y)
        for (unsigned x = m_box.xBegin; x < m_box.xEnd; ++x, ++i)
            if (!stays || !stays[i]) place(x, y, {m_columns[i], m_rows[i]});
}

GatherPlan CoordinateTable::PlanPixels(const Geometry& geometry) const {
    GatherPlan plan = EmptyPlan(m_box.ClippedTo(geometry.width, geometry.height));
    const auto variants = geometry.outside == Outside::White       ? variantsOf<NumberRow<Outside::White>>
                          : geometry.outside == Outside::Unchanged ? variantsOf<NumberRow<Outside::Unchanged>>
                                                                   : variantsOf<NumberRow<Outside::Nearest>>;
    const auto number = variants.For(m_instructionSet);
    RowBounds bounds{geometry.width, 0, geometry.height, 0};
    for (unsigned y = plan.target.yBegin; y < plan.target.yEnd; ++y) {
        const std::size_t stored = (y - m_box.yBegin) * m_box.Width();
        number(&m_columns[stored], &m_rows[stored], std::uint32_t(plan.target.Width()),
               y * geometry.width + plan.target.xBegin, geometry.width, geometry.height,
               &plan.from[(y - plan.target.yBegin) * plan.target.Width()], &bounds);
    }
    // A pixel that keeps its value reads itself.
    Box source{bounds.xBegin, bounds.xEnd, bounds.yBegin, bounds.yEnd};
    if (geometry.outside == Outside::Unchanged)
        source = {std::min(source.xBegin, plan.target.xBegin), std::max(source.xEnd, plan.target.xEnd),
                  std::min(source.yBegin, plan.target.yBegin), std::max(source.yEnd, plan.target.yEnd)};
    Finish(plan, geometry.width, geometry.height, source);
    return plan;
}

BlockPlan CoordinateTable::PlanLuma(const Geometry& geometry) const {
    const Box target = m_box.ClippedTo(geometry.width, geometry.height);
    const auto keepInside = (geometry.outside == Outside::White ? variantsOf<KeepInside<Outside::White>>
                                                                : variantsOf<KeepInside<Outside::Nearest>>)
                                .For(m_instructionSet);
    BlockPlanner planner(target, geometry.width, geometry.height, m_instructionSet);
    return planner.Make([&](unsigned y, std::uint32_t* columns, std::uint32_t* rows, std::uint8_t* white) {
        const std::size_t stored = (y - m_box.yBegin) * m_box.Width();
        keepInside(&m_columns[stored], &m_rows[stored], std::uint32_t(target.Width()), geometry.width, geometry.height,
                   columns, rows, white);
    });
}

BlockPlan CoordinateTable::PlanChroma(const Geometry& geometry, const bool* stays) const {
    const unsigned columnShift = geometry.columnShift, rowShift = geometry.rowShift;
    const unsigned width = geometry.chromaWidth, height = geometry.chromaHeight;
    const Box pixels = m_box.ClippedTo(geometry.width, geometry.height);
    const Box target = Shrunk(pixels, columnShift, rowShift).ClippedTo(width, height);
    // Of the pixels that share a sample, the last one that is written decides. None may be: then the sample stays.
    const auto decisive = [&](unsigned x, unsigned y) -> std::optional<std::size_t> {
        const unsigned firstX = std::max(x << columnShift, pixels.xBegin),
                       firstY = std::max(y << rowShift, pixels.yBegin);
        for (unsigned py = std::min((y + 1) << rowShift, pixels.yEnd); py-- > firstY;)
            for (unsigned px = std::min((x + 1) << columnShift, pixels.xEnd); px-- > firstX;) {
                const std::size_t index = (py - m_box.yBegin) * m_box.Width() + (px - m_box.xBegin);
                if (!stays || !stays[index]) return index;
            }
        return std::nullopt;
    };
    BlockPlanner planner(target, width, height, m_instructionSet);
    return planner.Make([&](unsigned y, std::uint32_t* columns, std::uint32_t* rows, std::uint8_t* white) {
        for (unsigned x = target.xBegin; x < target.xEnd; ++x, ++columns, ++rows, ++white) {
            const std::optional<std::size_t> index = decisive(x, y);
            if (!index) {
                *columns = x;
                *rows = y;
                *white = false;
                continue;
            }
            const std::uint32_t px = m_columns[*index], py = m_rows[*index];
            const std::uint32_t nearX = std::min(px, geometry.width - 1), nearY = std::min(py, geometry.height - 1);
            *columns = std::min(nearX >> columnShift, width - 1);
            *rows = std::min(nearY >> rowShift, height - 1);
            *white = geometry.outside == Outside::White && (nearX != px || nearY != py);
        }
    });
}

void CoordinateTable::Forget() {
    m_geometry = {};
    m_pixels = {};
    m_luma = {};
    m_chroma = {};
}

void CoordinateTable::PlaceFirst(const PackedView& picture, Outside outside, const bool*) { Replay(picture, outside); }

void CoordinateTable::Replay(const PackedView& picture, Outside outside) {
    if (!picture.Contains(0, 0)) return;
    if (!IsNumbered(picture.width, picture.height)) {
        PackedView from;
        const auto copy = CopyOf(picture, from);
        return PlaceEach(PlacePacked{picture, from, outside}, nullptr);
    }
    const Geometry geometry{picture.width, picture.height, 0, 0, 0, 0, outside, m_instructionSet};
    if (m_geometry != geometry) {
        Forget();
        m_pixels = PlanPixels(geometry);
        m_geometry = geometry;
    }
    Gather(m_pixels, picture, Rgba32{255, 255, 255, 255});
}

void CoordinateTable::Replay(const PlanarView& picture, Outside outside) { PlaceFirst(picture, outside, nullptr); }

void CoordinateTable::PlaceFirst(const PlanarView& picture, Outside outside, const bool* stays) {
    const ComponentView &luma = picture.plane[0], &chroma = picture.plane[1];
    if (!luma.Contains(0, 0)) return;
    if (!HasPlainChroma(picture) || outside == Outside::Unchanged || !BlockPlanner::CanPlan(luma.width, luma.height) ||
        !BlockPlanner::CanPlan(chroma.width, chroma.height)) {
        PlanarView from = picture;
        std::unique_ptr<unsigned char[]> copies[3];
        for (unsigned p = 0; p < 3; ++p) copies[p] = CopyOf(picture.plane[p], from.plane[p]);
        return PlaceEach(PlacePlanar{picture, from, outside}, stays);
    }
    const Geometry geometry{luma.width,          luma.height,      chroma.width, chroma.height,
                            picture.columnShift, picture.rowShift, outside,      m_instructionSet};
    if (m_geometry != geometry) {
        Forget();
        m_luma = PlanLuma(geometry);
        m_geometry = geometry;
    }
    GatherBlocks(m_luma, luma, whiteYuv[0], m_instructionSet);
    const auto gatherChroma = [&](const BlockPlan& plan) {
        for (unsigned p : {1, 2}) GatherBlocks(plan, picture.plane[p], whiteYuv[p], m_instructionSet);
    };
    if (stays) return gatherChroma(PlanChroma(geometry, stays));
    if (!m_chroma.blocks) m_chroma = PlanChroma(geometry, nullptr);
    gatherChroma(m_chroma);
}

}  // namespace AVBased
