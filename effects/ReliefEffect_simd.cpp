#include "effects/ReliefEffect.h"
#include "effects/vector_rows.h"

#if defined(__x86_64__)

#pragma GCC push_options
#pragma GCC target("avx2,bmi,bmi2,lzcnt,popcnt")

namespace AVBased {
namespace {

__m256i LoadLanes(const void* at) { return _mm256_loadu_si256(static_cast<const __m256i*>(at)); }
void StoreLanes(void* at, __m256i value) { _mm256_storeu_si256(static_cast<__m256i*>(at), value); }

// 16 bytes, each times 128.
__m256i Widen(const unsigned char* at) {
    return _mm256_slli_epi16(_mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(at))), 7);
}

class Weights {
 public:
    explicit Weights(const std::array<std::int16_t, 9>& weights) {
        for (unsigned i = 0; i < 9; ++i) m_weights[i] = _mm256_set1_epi16(weights[i]);
    }
    // The shares of three neighbours by the three weights from `first` on.
    __m256i Shares(__m256i l, __m256i m, __m256i r, unsigned first) const {
        return _mm256_add_epi16(
            _mm256_mulhi_epi16(l, m_weights[first]),
            _mm256_add_epi16(_mm256_mulhi_epi16(m, m_weights[first + 1]), _mm256_mulhi_epi16(r, m_weights[first + 2])));
    }

 private:
    __m256i m_weights[9];
};

// Moves the sums of 16 bytes on; answers those that are complete.
__m256i Add(const ReliefLines& lines, unsigned x, const Weights& weights) {
    const __m256i l = Widen(lines.left + x), m = Widen(lines.middle + x), r = Widen(lines.right + x);
    const __m256i complete = _mm256_add_epi16(LoadLanes(lines.above + x), weights.Shares(l, m, r, 6));
    StoreLanes(lines.above + x, _mm256_add_epi16(LoadLanes(lines.here + x), weights.Shares(l, m, r, 3)));
    StoreLanes(lines.here + x, weights.Shares(l, m, r, 0));
    return complete;
}

template <bool packed, ReliefRow plain>
void Row(const ReliefLines& lines, unsigned bytes, unsigned char* finished) {
    const Weights weights(lines.weights);
    unsigned x = 0;
    for (; x + vectorBytes <= bytes; x += vectorBytes) {
        const __m256i first = Add(lines, x, weights), second = Add(lines, x + 16, weights);
        const __m256i result = _mm256_permute4x64_epi64(_mm256_packus_epi16(first, second), 0xD8);
        StoreVector(finished + x, packed ? OnColours(LoadVector(lines.right + x), result) : result);
    }
    if (x < bytes)
        plain({lines.left + x, lines.middle + x, lines.right + x, lines.above + x, lines.here + x, lines.weights},
              bytes - x, finished + x);
}

}  // namespace

constinit const Variants<ReliefRow> reliefComponentRows{ReliefComponentRow, Row<false, ReliefComponentRow>};
constinit const Variants<ReliefRow> reliefRgba32Rows{ReliefRgba32Row, Row<true, ReliefRgba32Row>};

}  // namespace AVBased

#pragma GCC pop_options

#else

namespace AVBased {

constinit const Variants<ReliefRow> reliefComponentRows{ReliefComponentRow, ReliefComponentRow};
constinit const Variants<ReliefRow> reliefRgba32Rows{ReliefRgba32Row, ReliefRgba32Row};

}  // namespace AVBased

#endif
