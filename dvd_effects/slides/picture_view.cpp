#include "dvd_effects/slides/picture_view.h"

#include <algorithm>
#include <type_traits>
#include <vector>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

#include "dvd_effects/canvas/animation.h"
#include "dvd_effects/slides/rasters.h"

namespace AVBased {

namespace {

// What the samples of a frame along one axis, from `begin` on, take of a picture: `weight` / 256 of the sample after
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
Taps MakeTaps(const FixedSpan& shown, const FixedSpan& place, unsigned samples, unsigned available, unsigned shift) {
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

constexpr unsigned pixelLanes = sizeof(Rgba32);

// The same for pixels from `begin` on, whose four components make a vector.
void MixPixelsPlain(const std::uint16_t* mixed, const Taps& taps, std::uint32_t firstIndex, std::uint8_t* to,
                    unsigned begin) {
    using Sums [[gnu::vector_size(16)]] = std::uint32_t;
    using Mixed [[gnu::vector_size(8)]] = std::uint16_t;
    using Bytes [[gnu::vector_size(4)]] = std::uint8_t;
    const auto load = [](const std::uint16_t* pixel) {
        Mixed loaded;
        std::memcpy(&loaded, pixel, sizeof loaded);
        return __builtin_convertvector(loaded, Sums);
    };
    const unsigned count = taps.Count();
    for (unsigned i = begin; i < count; ++i) {
        const std::uint16_t* const pixel = mixed + std::size_t(taps.index[i] - firstIndex) * pixelLanes;
        const std::uint32_t weight = taps.weight[i];
        const Sums sums = (load(pixel) * (256 - weight) + load(pixel + pixelLanes) * weight + half) >> 16;
        const Bytes bytes = __builtin_convertvector(sums, Bytes);
        std::memcpy(to + std::size_t(i) * pixelLanes, &bytes, sizeof bytes);
    }
}

using MixPixels = void (*)(const std::uint16_t* mixed, const Taps& taps, std::uint32_t firstIndex, std::uint8_t* to,
                           unsigned begin);

#if defined(__x86_64__)

// Two pixels at a time, whose neighbours lie beside one another. Factors must be signed, so that sums count 2^15 less
// at first.
class PixelPairMixer {
 public:
    [[NIFIKRAL_AVX2]] PixelPairMixer(const std::uint16_t* mixed, const std::uint32_t* index, std::uint32_t firstIndex)
        : m_mixed(mixed), m_index(index), m_firstIndex(firstIndex) {}

    // The pixels i and i + 1, each in a half; `weights` are those of the left and the right neighbour in each 32 bits.
    [[NIFIKRAL_AVX2]] __m256i operator()(unsigned i, __m256i weights) const {
        const __m256i beside = _mm256_inserti128_si256(_mm256_castsi128_si256(Neighbours(i)), Neighbours(i + 1), 1);
        const __m256i pairs = _mm256_shuffle_epi8(
            beside, _mm256_broadcastsi128_si256(_mm_setr_epi8(0, 1, 8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15)));
        const __m256i sums = _mm256_madd_epi16(_mm256_xor_si256(pairs, _mm256_set1_epi16(-32768)), weights);
        return _mm256_srli_epi32(_mm256_add_epi32(sums, _mm256_set1_epi32((32768 << 8) + int(half))), 16);
    }

 private:
    [[NIFIKRAL_AVX2]] __m128i Neighbours(unsigned i) const {
        const std::uint16_t* const pixel = m_mixed + std::size_t(m_index[i] - m_firstIndex) * pixelLanes;
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(pixel));
    }

    const std::uint16_t* m_mixed;
    const std::uint32_t* m_index;
    std::uint32_t m_firstIndex;
};

[[NIFIKRAL_AVX2]] void MixPixelsAvx2(const std::uint16_t* mixed, const Taps& taps, std::uint32_t firstIndex,
                                     std::uint8_t* to, unsigned begin) {
    const PixelPairMixer mix(mixed, taps.index.data(), firstIndex);
    const unsigned whole = begin + (taps.Count() - begin) / 4 * 4;
    for (unsigned i = begin; i < whole; i += 4) {
        const __m128i right = _mm_loadu_si128(reinterpret_cast<const __m128i*>(taps.weight.data() + i));
        const __m256i weights =
            _mm256_castsi128_si256(_mm_or_si128(_mm_sub_epi32(_mm_set1_epi32(256), right), _mm_slli_epi32(right, 16)));
        const __m256i first = mix(i, _mm256_permutevar8x32_epi32(weights, _mm256_setr_epi32(0, 0, 0, 0, 1, 1, 1, 1)));
        const __m256i last =
            mix(i + 2, _mm256_permutevar8x32_epi32(weights, _mm256_setr_epi32(2, 2, 2, 2, 3, 3, 3, 3)));
        const __m256i packed = _mm256_packus_epi32(first, last);
        const __m128i bytes = _mm_packus_epi16(_mm256_castsi256_si128(packed), _mm256_extracti128_si256(packed, 1));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to + std::size_t(i) * pixelLanes),
                         _mm_shuffle_epi32(bytes, _MM_SHUFFLE(3, 1, 2, 0)));
    }
    MixPixelsPlain(mixed, taps, firstIndex, to, whole);
}

constexpr Variants<std::remove_pointer_t<MixPixels>> mixPixels{MixPixelsPlain, MixPixelsAvx2};

#else

constexpr Variants<std::remove_pointer_t<MixPixels>> mixPixels{MixPixelsPlain, MixPixelsPlain};

#endif

template <class Sample>
void DrawRaster(Raster<Sample> to, Raster<Sample> from, const Taps* acrossTaps, const Taps* downTaps,
                [[maybe_unused]] MixPixels mixRowOfPixels) {
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
        // Nothing is taken from beyond the last one.
        std::copy_n(mixed.data() + count - lanes, lanes, mixed.data() + count);
        if constexpr (lanes == 1)
            MixColumns(mixed.data(), pairs.data(), unsigned(count), across, first, target);
        else
            mixRowOfPixels(mixed.data(), across, first, target, 0);
    }
}

}  // namespace

FixedRegion WholeRegion(unsigned width, unsigned height) { return {{0, width * fixedOne}, {0, height * fixedOne}}; }

void DrawView(IRawVideoFrame& frame, IRawVideoFrame& picture, const FixedRegion& shown, const FixedRegion& place,
              InstructionSet set) {
    ForEachRaster(
        [&]<class Sample>(const Raster<Sample>& to, const Raster<Sample>& from) {
            if (!from.view.width || !from.view.height) return FillBlack(to);
            const Taps across = MakeTaps(shown.x, place.x, to.view.width, from.view.width, to.columnShift);
            const Taps down = MakeTaps(shown.y, place.y, to.view.height, from.view.height, to.rowShift);
            variantsOf<DrawRaster<Sample>>.For(set)(to, from, &across, &down, mixPixels.For(set));
        },
        frame, picture);
}

}  // namespace AVBased
