#include "dvd_effects/compositor.h"

#include "dvd_effects/blending.h"
#include "dvd_effects/menu_motion.h"
#include "dvd_effects/projected_sampler.h"
#include "dvd_effects/stretched_sampler.h"

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

    void operator()(unsigned x, unsigned y, unsigned count, TileRow& row, unsigned at) const {
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

    void operator()(unsigned x, unsigned y, unsigned count, TileRow& row, unsigned at) const {
        const std::size_t from =
            std::size_t(std::int64_t(y) - place.y) * map.width + std::size_t(std::int64_t(x) - place.x);
        const auto pixel = [&](unsigned i) -> std::uint32_t {
            const unsigned column = unsigned(map.sourceColumns[from + i]), line = unsigned(map.sourceRows[from + i]);
            return layer.Contains(column, line) ? LoadWord(layer.Row(line) + column) : 0;
        };
        row.SetPixels(at, count, pixel, [&](unsigned i, std::uint32_t word) {
            const std::uint32_t shown = std::min(map.coverage[from + i], coveragePanel) * 255u / coveragePanel;
            return ByteProduct(ByteProduct(word >> 24, shown), place.opacity);
        });
    }
};

const PackedView& PixelsOf(const PackedView& frame) { return frame; }
const ComponentView& PixelsOf(const PlanarView& frame) { return frame.plane[0]; }

// The part of a frame that a picture of this size covers.
template <class View>
Box BoxOf(const View& frame, const Place& place, unsigned width, unsigned height) {
    return Box::Clip(place.x, place.y, width, height, PixelsOf(frame).width, PixelsOf(frame).height);
}

template <class View>
void LayStraight(View frame, PackedView layer, Place place) {
    Blend(frame, BoxOf(frame, place, layer.width, layer.height), StraightSampler{layer, place});
}

template <class View>
void LayThroughMap(View frame, PackedView layer, Place place, WarpPlanes map) {
    Blend(frame, BoxOf(frame, place, map.width, map.height), WarpSampler{layer, place, map});
}

// The part of a frame within the bounds of a placement, and a pixel more.
template <class View>
Box BoxOf(const View& frame, const Projection& projection) {
    const auto down = [](double value) { return std::int64_t(std::floor(value)); };
    const std::int64_t x = down(projection.least.x) - 1, y = down(projection.least.y) - 1;
    return Box::Clip(x, y, down(projection.most.x) + 2 - x, down(projection.most.y) + 2 - y, PixelsOf(frame).width,
                     PixelsOf(frame).height);
}

Box Within(const Box& box, const Window& window) {
    const auto side = [](std::int32_t place) { return unsigned(std::max(place, 0)); };
    return {std::max(box.left, side(window.left)), std::max(box.top, side(window.top)),
            std::min(box.right, side(window.right)), std::min(box.bottom, side(window.bottom))};
}

template <class View>
void LayProjected(View frame, PackedView layer, const Projection& projection, Window window, std::uint32_t opacity) {
    Blend(frame, Within(BoxOf(frame, projection), window), ProjectedSampler{layer, projection, opacity});
}

template <class View>
void LayStretched(View frame, const Projection& projection, Window window, const StretchedSampler& sampler) {
    Blend(frame, Within(BoxOf(frame, projection), window), sampler);
}

// Of an alpha plane that is smaller than the luma plane, only what both have can be drawn on.
PlanarView Drawable(PlanarView frame) {
    if (frame.HasAlpha()) {
        frame.plane[0].width = std::min(frame.plane[0].width, frame.plane[3].width);
        frame.plane[0].height = std::min(frame.plane[0].height, frame.plane[3].height);
    }
    return frame;
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

void Canvas::Lay(const Layer& layer, std::int32_t x, std::int32_t y, std::uint8_t opacity) {
    const Place place{x, y, opacity};
    ForFrame(
        [&](const PackedView& frame) { variantsOf<LayStraight<PackedView>>.For(m_set)(frame, layer.View(), place); },
        [&](const PlanarView& frame) {
            variantsOf<LayStraight<PlanarView>>.For(m_set)(Drawable(frame), layer.View(), place);
        },
        m_frame);
}

void Canvas::LayWarped(const Layer& layer, const WarpPlanes& map, std::int32_t x, std::int32_t y,
                       std::uint8_t opacity) {
    const Place place{x, y, opacity};
    ForFrame(
        [&](const PackedView& frame) {
            variantsOf<LayThroughMap<PackedView>>.For(m_set)(frame, layer.View(), place, map);
        },
        [&](const PlanarView& frame) {
            variantsOf<LayThroughMap<PlanarView>>.For(m_set)(Drawable(frame), layer.View(), place, map);
        },
        m_frame);
}

void Canvas::LayTransformed(const Layer& layer, const Placement& placement, std::uint8_t opacity, Window window) {
    if (!layer.Width() || !layer.Height()) return;
    const std::optional<Projection> projection = Project(placement, layer.Width(), layer.Height());
    if (!projection) return;
    const std::optional<StretchedSampler> stretched = StretchedSampler::Make(layer.View(), placement, opacity);
    const auto lay = [&]<class View>(const View& frame) {
        if (stretched)
            variantsOf<LayStretched<View>>.For(m_set)(frame, *projection, window, *stretched);
        else
            variantsOf<LayProjected<View>>.For(m_set)(frame, layer.View(), *projection, window, opacity);
    };
    ForFrame([&](const PackedView& frame) { lay(frame); }, [&](const PlanarView& frame) { lay(Drawable(frame)); },
             m_frame);
}

}  // namespace AVBased
