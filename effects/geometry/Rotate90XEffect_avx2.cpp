#include "effects/geometry/Rotate90XEffect_avx2.h"

#include <cstring>

#include "effects/base/vector_rows_avx2.h"

NIFIKRAL_BEGIN_AVX2

namespace AVBased {
namespace {

// Two rows' weights in each lane. A weight of 256, which would not fit, is the only one of its place.
__m256i PairOfWeights(unsigned first, unsigned second) {
    return _mm256_set1_epi16(std::int16_t(std::uint16_t(first | second << 8)));
}

// The sums of a vector's samples, as far below the plain ones as Less128 says, and with half a step for the rounding.
struct Sums {
    __m256i lower, upper;

    Sums() : lower(_mm256_set1_epi16(128)), upper(lower) {}
    void Add(__m256i first, __m256i second, __m256i weights) {
        lower = _mm256_add_epi16(lower, _mm256_maddubs_epi16(weights, _mm256_unpacklo_epi8(first, second)));
        upper = _mm256_add_epi16(upper, _mm256_maddubs_epi16(weights, _mm256_unpackhi_epi8(first, second)));
    }
    __m256i Result() const {
        return Less128(_mm256_packs_epi16(_mm256_srai_epi16(lower, 8), _mm256_srai_epi16(upper, 8)));
    }
};

// As many rows as a scaling of less than 1.5 has taps, for which all weights stay in registers.
template <unsigned taps>
struct Mixer {
    __m256i weights[2];

    explicit Mixer(const AxisScaling::Taps& of)
        : weights{PairOfWeights(of.weights[0], of.weights[1]),
                  PairOfWeights(taps > 2 ? of.weights[2] : 0, taps > 3 ? of.weights[3] : 0)} {}
    __m256i operator()(const std::uint8_t* from, std::size_t pitch) const {
        Sums sums;
        const auto row = [=](unsigned t) { return Less128(LoadVector(from + t * pitch)); };
        sums.Add(row(0), row(1), weights[0]);
        if constexpr (taps > 2) {
            const __m256i third = row(2);
            sums.Add(third, taps > 3 ? row(3) : third, weights[1]);
        }
        return sums.Result();
    }
};

// Any number of rows.
struct LongMixer {
    const AxisScaling::Taps& taps;

    __m256i operator()(const std::uint8_t* from, std::size_t pitch) const {
        Sums sums;
        for (unsigned t = 0; t < taps.count; t += 2, from += 2 * pitch) {
            const bool two = t + 1 < taps.count;
            const __m256i first = Less128(LoadVector(from)), second = two ? Less128(LoadVector(from + pitch)) : first;
            sums.Add(first, second, PairOfWeights(taps.weights[t], two ? taps.weights[t + 1] : 0));
        }
        return sums.Result();
    }
};

// Calls mix(mixer).
template <class Mix>
void WithMixer(const AxisScaling::Taps& taps, Mix mix) {
    if (taps.count == 2)
        mix(Mixer<2>(taps));
    else if (taps.count == 3)
        mix(Mixer<3>(taps));
    else if (taps.count == 4)
        mix(Mixer<4>(taps));
    else
        mix(LongMixer{taps});
}

}  // namespace

void MixRowsAvx2(std::uint8_t* to, const std::uint8_t* from, std::size_t pitch, const AxisScaling::Taps& taps,
                 unsigned bytes, std::ptrdiff_t ahead) {
    if (taps.count == 1) {
        std::memcpy(to, from, bytes);
        return;
    }
    std::size_t x = 0;
    WithMixer(taps, [&](auto mixer) {
        for (; x + cacheLine <= bytes; x += cacheLine) {
            PrefetchToRead(from + x, ahead);
            PrefetchToRead(from + x + pitch, ahead);
            const __m256i first = mixer(from + x, pitch), second = mixer(from + x + vectorBytes, pitch);
            StoreVector(to + x, first);
            StoreVector(to + x + vectorBytes, second);
        }
    });
    for (; x < bytes; ++x) {
        unsigned sum = 128;
        for (unsigned t = 0; t < taps.count; ++t) sum += from[t * pitch + x] * unsigned(taps.weights[t]);
        to[x] = std::uint8_t(sum >> 8);
    }
}

void MixLinesAvx2(std::uint8_t* to, std::ptrdiff_t step, const std::uint8_t* lines, const AxisScaling& scaling,
                  unsigned begin, unsigned end) {
    for (unsigned i = begin; i < end; ++i) {
        const AxisScaling::Taps taps = scaling[i];
        const std::uint8_t* const from = lines + taps.first * std::size_t(cacheLine);
        std::uint8_t* const line = to + std::ptrdiff_t(i) * step;
        if (taps.count == 1)
            std::memcpy(line, from, cacheLine);
        else
            WithMixer(taps, [=](auto mixer) {
                StoreVector(line, mixer(from, cacheLine));
                StoreVector(line + vectorBytes, mixer(from + vectorBytes, cacheLine));
            });
    }
}

void TransposePixelsAvx2(std::uint8_t* to, const std::uint8_t* from, std::size_t fromPitch, unsigned width) {
    constexpr unsigned pixel = 4, side = vectorBytes / pixel, rows = cacheLine / pixel;
    for (unsigned x = 0; x < width; x += 4)
        for (unsigned row = 0; row < rows; row += side) {
            // Four pixels of a row beside those of the fourth row after it.
            __m256i four[4];
            for (unsigned i = 0; i < 4; ++i) {
                const std::uint8_t* const at = from + (row + i) * fromPitch + std::size_t(x) * pixel;
                four[i] = LoadHalves(at, at + 4 * fromPitch);
            }
            const __m256i a = _mm256_unpacklo_epi32(four[0], four[1]), b = _mm256_unpackhi_epi32(four[0], four[1]),
                          c = _mm256_unpacklo_epi32(four[2], four[3]), d = _mm256_unpackhi_epi32(four[2], four[3]);
            std::uint8_t* const line = to + x * std::size_t(cacheLine) + std::size_t(row) * pixel;
            StoreVector(line, _mm256_unpacklo_epi64(a, c));
            StoreVector(line + cacheLine, _mm256_unpackhi_epi64(a, c));
            StoreVector(line + 2 * cacheLine, _mm256_unpacklo_epi64(b, d));
            StoreVector(line + 3 * cacheLine, _mm256_unpackhi_epi64(b, d));
        }
}

}  // namespace AVBased

NIFIKRAL_END_AVX2
