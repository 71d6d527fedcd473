#include "dvd_effects/picture_view.h"

#include <algorithm>
#include <vector>

#include "dvd_effects/easing.h"
#include "dvd_effects/rasters.h"

namespace AVBased {

namespace {

// What the samples of a frame along one axis, from `begin` on, take of a picture: `weight` / 256 of the sample behind
// `index`, the rest of the sample there.
struct Taps {
    unsigned begin = 0;
    std::vector<std::uint32_t> index, weight;

    unsigned Count() const { return unsigned(index.size()); }
    bool AreConsecutive() const {
        for (unsigned i = 0; i < Count(); ++i)
            if (weight[i] || index[i] != index[0] + i) return false;
        return true;
    }
};

// For axes of `samples` samples on the frame and `available`, at least one, on the picture. `shift` leads from pixels
// to samples.
Taps MakeTaps(const Stretch& shown, const Stretch& place, unsigned samples, unsigned available, unsigned shift) {
    const std::int64_t sampleSize = fixedOne << shift, end = place.begin + place.length;
    const auto within = [&](std::int64_t sample) { return unsigned(std::clamp<std::int64_t>(sample, 0, samples)); };
    Taps taps;
    taps.begin = within(place.begin / sampleSize);
    const unsigned count = std::max(within((end + sampleSize - 1) / sampleSize), taps.begin) - taps.begin;
    taps.index.resize(count);
    taps.weight.resize(count);
    const std::int64_t last = std::int64_t(available - 1) * fixedOne, roundingToWeight = 128;
    for (unsigned i = 0; i < count; ++i) {
        const std::int64_t middle = (std::int64_t(taps.begin) + i) * sampleSize + sampleSize / 2;
        const std::int64_t edge = shown.begin + (middle - place.begin) * shown.length / place.length;
        const std::int64_t at = std::clamp<std::int64_t>((edge >> shift) - fixedOne / 2 + roundingToWeight, 0, last);
        taps.index[i] = std::uint32_t(at >> 16);
        taps.weight[i] = std::uint32_t(at >> 8 & 255);
    }
    return taps;
}

constexpr std::uint32_t half = 1 << 15;

// Two rows of bytes mixed, with 8 more bits each.
void MixRows(const std::uint8_t* upper, const std::uint8_t* lower, std::uint32_t weight, std::uint16_t* mixed,
             std::size_t count) {
#pragma GCC unroll 1
    for (std::size_t i = 0; i < count; ++i) mixed[i] = std::uint16_t(upper[i] * (256 - weight) + lower[i] * weight);
}

// Mixes neighbours of one component a sample. They are joined in one word first, so that one load fetches both.
void MixColumns(const std::uint16_t* mixed, std::uint32_t* pairs, unsigned pairCount, const Taps& taps,
                std::uint32_t firstIndex, std::uint8_t* to) {
#pragma GCC unroll 1
    for (unsigned i = 0; i < pairCount; ++i) pairs[i] = mixed[i] | std::uint32_t(mixed[i + 1]) << 16;
    const std::uint32_t* const index = taps.index.data();
    const std::uint32_t* const weight = taps.weight.data();
    const unsigned count = taps.Count();
#pragma GCC unroll 1
    for (unsigned i = 0; i < count; ++i) {
        const std::uint32_t pair = pairs[index[i] - firstIndex];
        to[i] = std::uint8_t(((pair & 0xFFFF) * (256 - weight[i]) + (pair >> 16) * weight[i] + half) >> 16);
    }
}

// The same for pixels, whose four components make a vector.
void MixColumnsOfPixels(const std::uint16_t* mixed, const Taps& taps, std::uint32_t firstIndex, std::uint8_t* to) {
    constexpr unsigned lanes = sizeof(Rgba32);
    using Sums [[gnu::vector_size(16)]] = std::uint32_t;
    using Mixed [[gnu::vector_size(8)]] = std::uint16_t;
    using Bytes [[gnu::vector_size(4)]] = std::uint8_t;
    const auto load = [](const std::uint16_t* pixel) {
        Mixed loaded;
        std::memcpy(&loaded, pixel, sizeof loaded);
        return __builtin_convertvector(loaded, Sums);
    };
    const unsigned count = taps.Count();
    for (unsigned i = 0; i < count; ++i) {
        const std::uint16_t* const pixel = mixed + std::size_t(taps.index[i] - firstIndex) * lanes;
        const std::uint32_t weight = taps.weight[i];
        const Sums sums = (load(pixel) * (256 - weight) + load(pixel + lanes) * weight + half) >> 16;
        const Bytes bytes = __builtin_convertvector(sums, Bytes);
        std::memcpy(to + std::size_t(i) * lanes, &bytes, sizeof bytes);
    }
}

template <class Sample>
void DrawRaster(Raster<Sample> to, Raster<Sample> from, const Taps* acrossTaps, const Taps* downTaps) {
    constexpr unsigned lanes = Raster<Sample>::lanes;
    const Taps &across = *acrossTaps, &down = *downTaps;
    if (!across.Count() || !down.Count()) return;
    const std::uint32_t first = across.index.front(), behind = across.index.back() + (across.weight.back() ? 2 : 1);
    const std::size_t count = std::size_t(behind - first) * lanes;
    const bool copies = across.AreConsecutive();
    std::vector<std::uint16_t> mixed(count + lanes);
    std::vector<std::uint32_t> pairs(lanes == 1 ? count : 0);
    for (unsigned row = 0; row < down.Count(); ++row) {
        const std::uint32_t line = down.index[row], weight = down.weight[row];
        const std::uint8_t* const upper = from.Row(line) + std::size_t(first) * lanes;
        const std::uint8_t* const lower = weight ? from.Row(line + 1) + std::size_t(first) * lanes : upper;
        std::uint8_t* const target = to.Row(down.begin + row) + std::size_t(across.begin) * lanes;
        if (copies && !weight) {
            std::memcpy(target, upper, count);
            continue;
        }
        MixRows(upper, lower, weight, mixed.data(), count);
        // Of what is behind the last one, nothing is taken.
        std::copy_n(mixed.data() + count - lanes, lanes, mixed.data() + count);
        if constexpr (lanes == 1)
            MixColumns(mixed.data(), pairs.data(), unsigned(count), across, first, target);
        else
            MixColumnsOfPixels(mixed.data(), across, first, target);
    }
}

}  // namespace

Area WholeArea(unsigned width, unsigned height) { return {{0, width * fixedOne}, {0, height * fixedOne}}; }

void DrawView(IRawVideoFrame& frame, IRawVideoFrame& picture, const Area& shown, const Area& place,
              InstructionSet set) {
    ForEachRaster(
        [&]<class Sample>(const Raster<Sample>& to, const Raster<Sample>& from) {
            if (!from.view.width || !from.view.height) return FillBlack(to);
            const Taps across = MakeTaps(shown.x, place.x, to.view.width, from.view.width, to.columnShift);
            const Taps down = MakeTaps(shown.y, place.y, to.view.height, from.view.height, to.rowShift);
            variantsOf<DrawRaster<Sample>>.For(set)(to, from, &across, &down);
        },
        frame, picture);
}

}  // namespace AVBased
