#include "effects/coordinate_table.h"

#include <cstring>
#include <limits>

#include "effects/instruction_sets.h"
#include "effects/row_loops.h"

namespace AVBased {
namespace {

// Chroma samples are carried in pairs, of both planes at once.
using ChromaPair = std::uint16_t;
constexpr ChromaPair whitePair = whiteYuv[1] | whiteYuv[2] << 8;

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

// Calls work(y, begin, end, from) for the changing columns of each row of the plan.
template <class Work>
void ForEachSpan(const GatherPlan& plan, Work work) {
    const std::uint32_t* row = plan.from.get();
    for (unsigned y = plan.target.yBegin; y < plan.target.yEnd; ++y, row += plan.target.Width()) {
        const GatherPlan::Span span = plan.spans[y - plan.target.yBegin];
        if (span.begin < span.end) work(y, span.begin, span.end, row + (span.begin - plan.target.xBegin));
    }
}

// Rewrites `plane` from a copy of what the plan reads.
template <class Sample>
void Gather(const GatherPlan& plan, const PlaneView<Sample>& plane, Sample white) {
    const std::size_t width = plane.width, count = width * plane.height;
    const auto copy = std::make_unique_for_overwrite<Sample[]>(count + 1);
    copy[count] = white;
    for (std::size_t y = plan.source.yBegin; y < plan.source.yEnd; ++y)
        std::memcpy(&copy[y * width + plan.source.xBegin], plane.Row(y) + plan.source.xBegin,
                    plan.source.Width() * sizeof(Sample));
    ForEachSpan(plan, [&](unsigned y, unsigned begin, unsigned end, const std::uint32_t* from) {
        Sample* const row = plane.Row(y) + begin;
        const unsigned length = end - begin;
        unsigned i = 0;
        for (; i + gatherStep <= length; i += gatherStep) {
            PrefetchToWrite(row + i);
            for (unsigned j = i; j < i + gatherStep; ++j) {
                if constexpr (sizeof(Sample) > 1) __builtin_prefetch(&copy[from[j + gatherAhead]]);
                row[j] = copy[from[j]];
            }
        }
        for (; i < length; ++i) row[i] = copy[from[i]];
    });
}

void GatherChroma(const GatherPlan& plan, const ComponentView& first, const ComponentView& second) {
    const std::size_t width = first.width, count = width * first.height;
    const auto copy = std::make_unique_for_overwrite<ChromaPair[]>(count + 1);
    copy[count] = whitePair;
    for (std::size_t y = plan.source.yBegin; y < plan.source.yEnd; ++y) {
        const std::uint8_t *u = first.Row(y), *v = second.Row(y);
        for (unsigned x = plan.source.xBegin; x < plan.source.xEnd; ++x)
            copy[y * width + x] = ChromaPair(u[x] | v[x] << 8);
    }
    ForEachSpan(plan, [&](unsigned y, unsigned begin, unsigned end, const std::uint32_t* from) {
        std::uint8_t *const u = first.Row(y) + begin, *const v = second.Row(y) + begin;
        for (unsigned i = 0; i < end - begin; ++i) {
            const ChromaPair pair = copy[from[i]];
            u[i] = std::uint8_t(pair);
            v[i] = std::uint8_t(pair >> 8);
        }
    });
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

Box Box::ClippedTo(unsigned width, unsigned height) const {
    return {std::min(xBegin, width), std::min(xEnd, width), std::min(yBegin, height), std::min(yEnd, height)};
}

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
    const auto number = variants.For(BestInstructionSet());
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

GatherPlan CoordinateTable::PlanChroma(const Geometry& geometry, const bool* stays) const {
    const unsigned columnShift = geometry.columnShift, rowShift = geometry.rowShift;
    const unsigned width = geometry.chromaWidth, height = geometry.chromaHeight;
    const Box pixels = m_box.ClippedTo(geometry.width, geometry.height);
    GatherPlan plan = EmptyPlan(Shrunk(pixels, columnShift, rowShift).ClippedTo(width, height));
    Box source{width, 0, height, 0};
    // Of the pixels that share a sample, the last one that is written decides. None may be: then the sample stays.
    const auto from = [&](unsigned x, unsigned y) {
        const unsigned firstX = std::max(x << columnShift, pixels.xBegin),
                       firstY = std::max(y << rowShift, pixels.yBegin);
        Source taken{x, y};
        for (unsigned py = std::min((y + 1) << rowShift, pixels.yEnd); py-- > firstY;)
            for (unsigned px = std::min((x + 1) << columnShift, pixels.xEnd); px-- > firstX;) {
                const std::size_t index = (py - m_box.yBegin) * m_box.Width() + (px - m_box.xBegin);
                if (stays && stays[index]) continue;
                if (geometry.outside == Outside::White &&
                    (m_columns[index] >= geometry.width || m_rows[index] >= geometry.height))
                    return width * height;
                taken = {std::min(std::min(m_columns[index], geometry.width - 1) >> columnShift, width - 1),
                         std::min(std::min(m_rows[index], geometry.height - 1) >> rowShift, height - 1)};
                py = firstY;
                break;
            }
        source = {std::min(source.xBegin, taken.x), std::max(source.xEnd, taken.x + 1),
                  std::min(source.yBegin, taken.y), std::max(source.yEnd, taken.y + 1)};
        return taken.y * width + taken.x;
    };
    std::uint32_t* next = plan.from.get();
    for (unsigned y = plan.target.yBegin; y < plan.target.yEnd; ++y)
        for (unsigned x = plan.target.xBegin; x < plan.target.xEnd; ++x) *next++ = from(x, y);
    Finish(plan, width, height, source);
    return plan;
}

void CoordinateTable::PreparePixels(const Geometry& geometry) {
    if (m_geometry == geometry) return;
    m_geometry = {};
    m_chroma = {};
    m_pixels = PlanPixels(geometry);
    m_geometry = geometry;
}

void CoordinateTable::PlaceFirst(const PackedView& picture, Outside outside, const bool*) { Replay(picture, outside); }

void CoordinateTable::Replay(const PackedView& picture, Outside outside) {
    if (!picture.Contains(0, 0)) return;
    if (!IsNumbered(picture.width, picture.height)) {
        PackedView from;
        const auto copy = CopyOf(picture, from);
        return PlaceEach(PlacePacked{picture, from, outside}, nullptr);
    }
    PreparePixels({picture.width, picture.height, 0, 0, 0, 0, outside});
    Gather(m_pixels, picture, Rgba32{255, 255, 255, 255});
}

void CoordinateTable::Replay(const PlanarView& picture, Outside outside) { PlaceFirst(picture, outside, nullptr); }

void CoordinateTable::PlaceFirst(const PlanarView& picture, Outside outside, const bool* stays) {
    const ComponentView &luma = picture.plane[0], &chroma = picture.plane[1];
    if (!luma.Contains(0, 0)) return;
    if (!HasPlainChroma(picture) || outside == Outside::Unchanged || !IsNumbered(luma.width, luma.height) ||
        !IsNumbered(chroma.width, chroma.height)) {
        PlanarView from = picture;
        std::unique_ptr<unsigned char[]> copies[3];
        for (unsigned p = 0; p < 3; ++p) copies[p] = CopyOf(picture.plane[p], from.plane[p]);
        return PlaceEach(PlacePlanar{picture, from, outside}, stays);
    }
    const Geometry geometry{luma.width,          luma.height,      chroma.width, chroma.height,
                            picture.columnShift, picture.rowShift, outside};
    PreparePixels(geometry);
    Gather(m_pixels, luma, whiteYuv[0]);
    if (stays) return GatherChroma(PlanChroma(geometry, stays), chroma, picture.plane[2]);
    if (!m_chroma.from) m_chroma = PlanChroma(geometry, nullptr);
    GatherChroma(m_chroma, chroma, picture.plane[2]);
}

}  // namespace AVBased
