#include "dvd_effects/slides/transitions.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "dvd_effects/canvas/animation.h"
#include "dvd_effects/canvas/byte_fractions.h"
#include "dvd_effects/slides/page_turn.h"
#include "dvd_effects/slides/rasters.h"

namespace AVBased {

namespace {

FixedRegion WholeFrame(FrameSize frame, std::int64_t) { return WholeRegion(frame.width, frame.height); }

// 0 to 255 as `distance` goes from 0 to `width`.
std::uint8_t Ramp(std::int64_t distance, std::int64_t width) {
    return std::uint8_t(std::clamp<std::int64_t>(distance * 255 / width, 0, 255));
}

// Weights along one axis of a plane, which is `pixels` long; weigh(middle) is asked for the middle of each sample, and
// of one that a host keeps beyond an odd edge for the last pixel.
template <class Weigh>
std::vector<std::uint8_t> AlongAxis(unsigned samples, unsigned shift, unsigned pixels, Weigh weigh) {
    std::vector<std::uint8_t> weights(samples);
    const std::int64_t last = pixels * fixedOne - fixedOne / 2;
    for (unsigned i = 0; i < samples; ++i)
        weights[i] = weigh(std::min((2 * std::int64_t(i) + 1) * (fixedOne / 2) << shift, last));
    return weights;
}

std::uint8_t Always(std::int64_t) { return 255; }

// Weights that are the product of one for the column and one for the row.
struct ProductOfAxes {
    const std::uint8_t *across, *down;

    void operator()(unsigned y, std::uint8_t* weights, unsigned count) const {
        const std::uint32_t ofRow = down[y];
#pragma GCC unroll 1
        for (unsigned x = 0; x < count; ++x) weights[x] = std::uint8_t(ByteProduct(across[x], ofRow));
    }
};

inline void MixRow(std::uint8_t* to, const std::uint8_t* top, const std::uint8_t* weights, unsigned count,
                   const Raster<std::uint8_t>&) {
#pragma GCC unroll 1
    for (unsigned x = 0; x < count; ++x)
        to[x] = std::uint8_t(Over255(to[x] * (255u - weights[x]) + std::uint32_t(top[x]) * weights[x]));
}

// Both pictures are opaque, so the result is.
inline void MixRow(std::uint8_t* to, const std::uint8_t* top, const std::uint8_t* weights, unsigned count,
                   const Raster<Rgba32>&) {
    auto* const pixels = reinterpret_cast<Rgba32*>(to);
    const auto* const over = reinterpret_cast<const Rgba32*>(top);
#pragma GCC unroll 1
    for (unsigned x = 0; x < count; ++x) {
        const std::uint32_t a = LoadWord(pixels + x), b = LoadWord(over + x), w = weights[x], rest = 255 - w;
        StoreWord(pixels + x,
                  WithAlphaOf(alphaMask, Over255(Blue(a) * rest + Blue(b) * w), Over255(Green(a) * rest + Green(b) * w),
                              Over255(Red(a) * rest + Red(b) * w)));
    }
}

// Mixes `top` into `to`: fill(y, weights, count) sets how much of each sample of a row.
template <class Sample, class Fill>
void MixThrough(Raster<Sample> to, Raster<Sample> top, Fill fill) {
    const unsigned count = std::min(to.view.width, top.view.width);
    std::vector<std::uint8_t> weights(count);
    for (unsigned y = 0; y < std::min(to.view.height, top.view.height); ++y) {
        fill(y, weights.data(), count);
        MixRow(to.Row(y), top.Row(y), weights.data(), count, to);
    }
}

// across(middle) and down(middle) return how much of `top` shows.
template <class Across, class Down>
void MixByAxes(IRawVideoFrame& frame, IRawVideoFrame& top, InstructionSet set, Across across, Down down) {
    const FrameSize size = SizeOf(frame);
    ForEachRaster(
        [&]<class Sample>(const Raster<Sample>& to, const Raster<Sample>& over) {
            const auto columns = AlongAxis(to.view.width, to.columnShift, size.width, across);
            const auto rows = AlongAxis(to.view.height, to.rowShift, size.height, down);
            variantsOf<MixThrough<Sample, ProductOfAxes>>.For(set)(to, over, {columns.data(), rows.data()});
        },
        frame, top);
}

// The same towards black.
template <class Across, class Down>
void DarkenByAxes(IRawVideoFrame& frame, InstructionSet set, Across across, Down down) {
    const FrameSize size = SizeOf(frame);
    ForEachRaster(
        [&]<class Sample>(const Raster<Sample>& to) {
            std::vector<Sample> row(to.view.width);
            // One row, again and again.
            Raster<Sample> black = to;
            black.view.data = reinterpret_cast<unsigned char*>(row.data());
            black.view.pitch = 0;
            for (Sample& sample : row) std::memcpy(&sample, to.black, sizeof sample);
            const auto columns = AlongAxis(to.view.width, to.columnShift, size.width, across);
            const auto rows = AlongAxis(to.view.height, to.rowShift, size.height, down);
            variantsOf<MixThrough<Sample, ProductOfAxes>>.For(set)(to, black, {columns.data(), rows.data()});
        },
        frame);
}

void MixEvenly(IRawVideoFrame& frame, IRawVideoFrame& top, std::uint8_t weight, InstructionSet set) {
    MixByAxes(frame, top, set, Always, [weight](std::int64_t) { return weight; });
}

void Crossfade(IRawVideoFrame& frame, IRawVideoFrame& top, std::int64_t t, InstructionSet set) {
    MixEvenly(frame, top, Ramp(t, fixedOne), set);
}

void Cut(IRawVideoFrame& frame, IRawVideoFrame& top, std::int64_t t, InstructionSet set) {
    MixEvenly(frame, top, t < fixedOne / 2 ? 0 : 255, set);
}

// Where the second picture's left edge stands, on whole samples of every chroma grid, so that nothing is interpolated.
unsigned PushEdge(unsigned width, std::int64_t t) {
    constexpr std::int64_t grid = 4;
    const std::int64_t left = (fixedOne - t) * width / fixedOne;
    return unsigned(std::min<std::int64_t>((left + grid - 1) / grid * grid, width));
}

FixedRegion PushFirst(FrameSize frame, std::int64_t t) {
    FixedRegion area = WholeRegion(frame.width, frame.height);
    area.x.begin = (std::int64_t(PushEdge(frame.width, t)) - frame.width) * fixedOne;
    return area;
}

FixedRegion PushSecond(FrameSize frame, std::int64_t t) {
    FixedRegion area = WholeRegion(frame.width, frame.height);
    area.x.begin = PushEdge(frame.width, t) * fixedOne;
    return area;
}

void Push(IRawVideoFrame& frame, IRawVideoFrame& top, std::int64_t t, InstructionSet set) {
    const std::int64_t edge = PushEdge(SizeOf(frame).width, t) * fixedOne;
    MixByAxes(
        frame, top, set, [edge](std::int64_t x) { return x < edge ? 0 : 255; }, Always);
}

// From left to right, behind a soft edge.
void Wipe(IRawVideoFrame& frame, IRawVideoFrame& top, std::int64_t t, InstructionSet set) {
    const std::int64_t width = SizeOf(frame).width, soft = (width / 8 + 1) * fixedOne;
    const std::int64_t edge = FixedMixed(0, width * fixedOne + soft, t);
    MixByAxes(
        frame, top, set, [=](std::int64_t x) { return Ramp(edge - x, soft); }, Always);
}

// Slats that turn one after the other, from the top down.
void Blinds(IRawVideoFrame& frame, IRawVideoFrame& top, std::int64_t t, InstructionSet set) {
    constexpr std::int64_t slats = 10, stagger = fixedOne / 2 / slats, lastStart = (slats - 1) * stagger;
    const std::int64_t slat = std::max<std::int64_t>(SizeOf(frame).height * fixedOne / slats, fixedOne);
    const std::int64_t soft = slat / 5;
    const auto down = [=](std::int64_t y) {
        const std::int64_t own = std::clamp<std::int64_t>(
            FixedMixed(0, fixedOne + lastStart, t) - std::min(y / slat, slats - 1) * stagger, 0, fixedOne);
        return Ramp(FixedMixed(0, slat + soft, own) - y % slat, soft);
    };
    MixByAxes(frame, top, set, Always, down);
}

constexpr std::int64_t Scaled(std::int64_t length, std::int64_t scale) { return length * scale / fixedOne; }

// All of the picture, `scale` times as large around the middle of the frame.
FixedRegion Enlarged(FrameSize frame, std::int64_t scale) {
    const auto along = [scale](unsigned side) {
        const std::int64_t whole = side * fixedOne, length = std::max<std::int64_t>(Scaled(whole, scale), 1);
        return FixedSpan{(whole - length) / 2, length};
    };
    return {along(frame.width), along(frame.height)};
}

// The first picture comes nearer and darkens, while the second one grows out of the middle over a soft shadow.
FixedRegion ZoomFirst(FrameSize frame, std::int64_t t) { return Enlarged(frame, fixedOne + t / 2); }
FixedRegion ZoomSecond(FrameSize frame, std::int64_t t) {
    return Enlarged(frame, FixedMixed(fixedOne / 5, fixedOne, t));
}

void Zoom(IRawVideoFrame& frame, IRawVideoFrame& top, std::int64_t t, InstructionSet set) {
    const FrameSize size = SizeOf(frame);
    const FixedRegion area = ZoomSecond(size, t);
    const std::int64_t shadow = (size.height / 12 + 1) * fixedOne;
    const std::uint8_t opacity = Ramp(t, fixedOne / 5);
    // Within a stretch 255, beside it less and less over `soft`, half of which lies inside.
    const auto within = [](const FixedSpan& stretch, std::int64_t soft) {
        return [=](std::int64_t at) {
            return Ramp(std::min(at - stretch.begin, stretch.begin + stretch.length - at) + soft / 2, soft);
        };
    };
    const auto fading = [](auto weigh, std::uint8_t most) {
        return [=](std::int64_t at) { return std::uint8_t(ByteProduct(weigh(at), most)); };
    };
    DarkenByAxes(frame, set, Always, [t](std::int64_t) { return Ramp(t, 2 * fixedOne); });
    DarkenByAxes(frame, set, within(area.x, shadow), fading(within(area.y, shadow), ByteProduct(opacity, 150)));
    MixByAxes(frame, top, set, within(area.x, fixedOne), fading(within(area.y, fixedOne), opacity));
}

// How much of the second picture an opening iris shows: all of it within `inner` pixels of the middle, none beyond
// `outer`; between them as the squares go, which needs no root.
struct IrisWeights {
    double middleX, middleY, outerSquare, scale, sampleWidth, sampleHeight;

    void operator()(unsigned y, std::uint8_t* weights, unsigned count) const {
        const double dy = (y + 0.5) * sampleHeight - middleY, left = outerSquare - dy * dy;
#pragma GCC unroll 1
        for (unsigned x = 0; x < count; ++x) {
            const double dx = (int(x) + 0.5) * sampleWidth - middleX;
            weights[x] = std::uint8_t(int(std::clamp((left - dx * dx) * scale, 0.0, 255.0)));
        }
    }
};

void Iris(IRawVideoFrame& frame, IRawVideoFrame& top, std::int64_t t, InstructionSet set) {
    const FrameSize size = SizeOf(frame);
    const double middleX = size.width / 2.0, middleY = size.height / 2.0;
    // Farther out than the middle of any sample, also of one beyond an odd edge.
    const double corner = std::sqrt(middleX * middleX + middleY * middleY) + 4, soft = corner / 12;
    const double outer = (corner + soft) * double(t) / double(fixedOne), inner = std::max(outer - soft, 0.0);
    const double difference = outer * outer - inner * inner;
    ForEachRaster(
        [&]<class Sample>(const Raster<Sample>& to, const Raster<Sample>& over) {
            const IrisWeights weights{middleX,
                                      middleY,
                                      outer * outer,
                                      difference > 0 ? 255 / difference : 0,
                                      double(1u << to.columnShift),
                                      double(1u << to.rowShift)};
            variantsOf<MixThrough<Sample, IrisWeights>>.For(set)(to, over, weights);
        },
        frame, top);
}

constexpr Transition transitions[] = {
    {"crossfade", WholeFrame, WholeFrame, false, Crossfade}, {"push", PushFirst, PushSecond, false, Push},
    {"wipe", WholeFrame, WholeFrame, false, Wipe},           {"zoom", ZoomFirst, ZoomSecond, false, Zoom},
    {"iris", WholeFrame, WholeFrame, false, Iris},           {"blinds", WholeFrame, WholeFrame, false, Blinds},
    {"pageturn", WholeFrame, WholeFrame, true, TurnPage},    {"cut", WholeFrame, WholeFrame, false, Cut},
};

}  // namespace

std::span<const Transition> Transitions() { return transitions; }

const Transition* FindTransition(std::string_view name) {
    for (const Transition& transition : transitions)
        if (name == transition.name) return &transition;
    return nullptr;
}

}  // namespace AVBased
