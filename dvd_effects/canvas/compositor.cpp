#include "dvd_effects/canvas/compositor.h"

#include <cmath>
#include <cstring>

#include "dvd_effects/canvas/blending.h"
#include "dvd_effects/canvas/projected_sampler.h"
#include "dvd_effects/canvas/stretched_sampler.h"

namespace AVBased {

using namespace Blending;

namespace {

constexpr std::uint8_t blackLuma = 16, neutralChroma = 128;

template <class Sample>
void FillPlane(const PlaneView<Sample>& plane, std::uint8_t value) {
    for (unsigned y = 0; y < plane.height; ++y) std::memset(plane.Row(y), value, plane.width * sizeof(Sample));
}

// Copies the first `width` x `height` samples to (x, y); those that an odd picture's chroma lacks take the nearest one.
template <class Sample>
void CopyPlane(const PlaneView<Sample>& to, const PlaneView<Sample>& from, unsigned x, unsigned y, unsigned width,
               unsigned height) {
    if (x >= to.width || y >= to.height || !from.width || !from.height) return;
    width = std::min(width, to.width - x);
    height = std::min(height, to.height - y);
    for (unsigned row = 0; row < height; ++row) {
        Sample* const target = to.Row(y + row) + x;
        const Sample* const source = from.Row(std::min(row, from.height - 1));
        const unsigned there = std::min(width, from.width);
        std::memcpy(target, source, there * sizeof(Sample));
        std::fill(target + there, target + width, source[there - 1]);
    }
}

void CopyPlanar(const PlanarView& to, const PlanarView& from, unsigned x, unsigned y) {
    const unsigned width = from.plane[0].width, height = from.plane[0].height;
    for (unsigned p = 0; p < to.planes; ++p) {
        const bool chroma = p == 1 || p == 2;
        const unsigned across = chroma ? to.columnShift : 0, down = chroma ? to.rowShift : 0;
        CopyPlane(to.plane[p], from.plane[p], x >> across, y >> down, (width + (1u << across) - 1) >> across,
                  (height + (1u << down) - 1) >> down);
    }
}

// Where a layer goes, and how much of it shows.
struct Place {
    std::int32_t x, y;
    std::uint32_t opacity;
};

struct StraightSampler {
    PackedView layer;
    Place place;

    Span Reach(unsigned, Span within) const { return within; }
    void Fill(unsigned x, unsigned y, unsigned count, TileRow& row, unsigned at) const {
        const Rgba32* const from = layer.Row(std::size_t(std::int64_t(y) - place.y)) + (std::int64_t(x) - place.x);
        row.SetPixels(
            at, count, [from](unsigned i) { return LoadWord(from + i); },
            [opacity = place.opacity](unsigned, std::uint32_t pixel) { return ByteProduct(pixel >> 24, opacity); });
    }
};

struct WarpSampler {
    PackedView layer;
    Place place;
    WarpPlanes map;

    std::size_t IndexOf(unsigned x, unsigned y) const {
        return std::size_t(std::int64_t(y) - place.y) * map.width + std::size_t(std::int64_t(x) - place.x);
    }
    Span Reach(unsigned y, Span within) const {
        if (within.IsEmpty()) return within;
        const unsigned char* const row = map.coverage + IndexOf(within.begin, y) - within.begin;
        while (!within.IsEmpty() && !row[within.begin]) ++within.begin;
        while (!within.IsEmpty() && !row[within.end - 1]) --within.end;
        return within;
    }
    void Fill(unsigned x, unsigned y, unsigned count, TileRow& row, unsigned at) const {
        const std::size_t from = IndexOf(x, y);
        // Fetched before anything is computed, which then becomes vectors.
        std::uint32_t words[tileColumns];
        for (unsigned i = 0; i < count; ++i) {
            const unsigned column = unsigned(map.sourceColumns[from + i]), line = unsigned(map.sourceRows[from + i]);
            const bool inside = layer.Contains(column, line);
            words[i] = LoadWord(layer.Row(inside ? line : 0) + (inside ? column : 0)) & (inside ? ~0u : 0u);
        }
        const unsigned char* const coverages = map.coverage + from;
        row.SetPixels(
            at, count, [&](unsigned i) { return words[i]; },
            [coverages, opacity = place.opacity](unsigned i, std::uint32_t word) {
                const std::uint32_t shown = std::min(coverages[i], coveragePanel) * 255u / coveragePanel;
                return ByteProduct(ByteProduct(word >> 24, shown), opacity);
            });
    }
};

// Of an alpha plane that is smaller than the luma plane, only what both have can be drawn on.
PlanarView Drawable(PlanarView frame) {
    if (frame.HasAlpha()) {
        frame.plane[0].width = std::min(frame.plane[0].width, frame.plane[3].width);
        frame.plane[0].height = std::min(frame.plane[0].height, frame.plane[3].height);
    }
    return frame;
}

// Blends what a sampler shows on a part of a frame; box(width, height) is that part of a frame of such a size.
template <class BoxOf>
void LayOn(IRawVideoFrame& frame, BoxOf box, const SamplerRef& sampler, InstructionSet set, Covers covers = {}) {
    const auto lay = [&](const auto& view, const auto& pixels) {
        Blend(view, box(pixels.width, pixels.height), sampler, covers, set);
    };
    ForFrame([&](const PackedView& view) { lay(view, view); },
             [&](const PlanarView& view) {
                 const PlanarView drawable = Drawable(view);
                 lay(drawable, drawable.plane[0]);
             },
             frame);
}

// The part of a rectangle that lies on a frame.
Box OnFrame(std::int64_t x, std::int64_t y, std::int64_t width, std::int64_t height, unsigned frameWidth,
            unsigned frameHeight) {
    const auto within = [](std::int64_t place, unsigned end) {
        return unsigned(std::clamp<std::int64_t>(place, 0, end));
    };
    return {within(x, frameWidth), within(x + width, frameWidth), within(y, frameHeight),
            within(y + height, frameHeight)};
}

// The part of a frame that a picture of this size covers, within a window.
auto BoxAt(const Place& place, unsigned width, unsigned height, const Box& window = everything) {
    return [=](unsigned frameWidth, unsigned frameHeight) {
        return OnFrame(place.x, place.y, width, height, frameWidth, frameHeight).Within(window);
    };
}

// The part of a frame within a window and the bounds of a placement, and a pixel more.
auto BoxWithin(const Projection& projection, const Box& window) {
    return [=](unsigned frameWidth, unsigned frameHeight) {
        const auto down = [](double value) { return std::int64_t(std::floor(value)); };
        const std::int64_t x = down(projection.least.x) - 1, y = down(projection.least.y) - 1;
        return OnFrame(x, y, down(projection.most.x) + 2 - x, down(projection.most.y) + 2 - y, frameWidth, frameHeight)
            .Within(window);
    };
}

// Whether a placement leaves a layer as it is, at whole pixels.
bool IsStraight(const Layer& layer, const Placement& at) {
    const Spot &least = at.topLeft, &most = at.bottomRight;
    return at.topRight.x == most.x && at.topRight.y == least.y && at.bottomLeft.x == least.x &&
           at.bottomLeft.y == most.y && least.x == std::floor(least.x) && least.y == std::floor(least.y) &&
           most.x == least.x + layer.Width() && most.y == least.y + layer.Height();
}

}  // namespace

bool Canvas::Takes(IRawVideoFrame& frame) {
    const FormatInfo* const info = FindFormat(frame.GetPixelFormat());
    return info && info->forEffects;
}

unsigned Canvas::Width() const { return SizeOf(m_frame).width; }
unsigned Canvas::Height() const { return SizeOf(m_frame).height; }

void Canvas::Clear() {
    ForFrame([](const PackedView& frame) { FillPlane(frame, 0); },
             [](const PlanarView& frame) {
                 FillPlane(frame.plane[0], blackLuma);
                 FillPlane(frame.plane[1], neutralChroma);
                 FillPlane(frame.plane[2], neutralChroma);
                 FillPlane(frame.plane[3], 0);
             },
             m_frame);
}

void Canvas::Copy(IRawVideoFrame& picture, unsigned x, unsigned y) {
    ForFrame([&](const PackedView& to, const PackedView& from) { CopyPlane(to, from, x, y, from.width, from.height); },
             [&](const PlanarView& to, const PlanarView& from) {
                 const unsigned across = (1u << to.columnShift) - 1, down = (1u << to.rowShift) - 1;
                 CopyPlanar(to, from, x & ~across, y & ~down);
             },
             m_frame, picture);
}

void Canvas::Watch(const Layer& layer, FrameSize size, std::int32_t x, std::int32_t y, std::uint8_t opacity,
                   const WarpPlanes* map) const {
    const double left = x, top = y, right = left + size.width, bottom = top + size.height;
    const Placement at{{left, top}, {right, top}, {right, bottom}, {left, bottom}};
    if (const auto projection = Project(at, size.width, size.height))
        (*m_watcher)({layer, at, *projection, opacity, everything, map});
}

void Canvas::Lay(const Layer& layer, std::int32_t x, std::int32_t y, std::uint8_t opacity) {
    if (!opacity) return;
    if (m_watcher) return Watch(layer, layer.Size(), x, y, opacity, nullptr);
    const StraightSampler sampler{layer.View(), {x, y, opacity}};
    LayOn(m_frame, BoxAt(sampler.place, layer.Width(), layer.Height()), SamplerRef(sampler, m_set), m_set);
}

void Canvas::LayWarped(const Layer& layer, const WarpPlanes& map, std::int32_t x, std::int32_t y,
                       std::uint8_t opacity) {
    if (!opacity || !layer.Width() || !layer.Height()) return;
    if (m_watcher) return Watch(layer, {map.width, map.height}, x, y, opacity, &map);
    const WarpSampler sampler{layer.View(), {x, y, opacity}, map};
    LayOn(m_frame, BoxAt(sampler.place, map.width, map.height), SamplerRef(sampler, m_set), m_set);
}

void Canvas::LayTransformed(const Layer& layer, const Placement& placement, std::uint8_t opacity, const Box& window,
                            std::span<const Cover> covers) {
    if (!layer.Width() || !layer.Height() || !opacity) return;
    const std::optional<Projection> projection = Project(placement, layer.Width(), layer.Height());
    if (!projection) return;
    if (m_watcher) return (*m_watcher)({layer, placement, *projection, opacity, window});
    if (IsStraight(layer, placement)) {
        const Place place{std::int32_t(placement.topLeft.x), std::int32_t(placement.topLeft.y), opacity};
        return LayOn(m_frame, BoxAt(place, layer.Width(), layer.Height(), window),
                     SamplerRef(StraightSampler{layer.View(), place}, m_set), m_set, covers);
    }
    const auto box = BoxWithin(*projection, window);
    if (const auto stretched = StretchedSampler::Make(layer.View(), placement, opacity, m_set))
        LayOn(m_frame, box, *stretched, m_set, covers);
    else
        LayOn(m_frame, box, ProjectedSampler(layer.View(), *projection, opacity, m_set), m_set, covers);
}

}  // namespace AVBased
