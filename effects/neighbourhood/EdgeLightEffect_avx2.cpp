#include "effects/neighbourhood/EdgeLightEffect_avx2.h"

#include "effects/base/vector_rows_avx2.h"

NIFIKRAL_BEGIN_AVX2

namespace AVBased {
namespace {

constexpr unsigned highestSingleLevel = 11, highestCorrectedLevel = 8192;

// The low bytes of the truncated lengths, in 32 bits each, of squares of lengths.
//
// In single precision: level^2 x square is a whole number below 2^24 and exact. Just below a whole number n the root is
// at least 1 / 2n away, more than half a step of its precision as long as n < 4096, so that it never rounds up to n.
class SingleRoots {
 public:
    explicit SingleRoots(unsigned level) : m_level2(_mm256_set1_ps(float(level * level))) {}
    __m256i operator()(__m256i squares) const {
        const __m256 roots = _mm256_sqrt_ps(_mm256_mul_ps(_mm256_cvtepi32_ps(squares), m_level2));
        return _mm256_and_si256(_mm256_cvttps_epi32(roots), _mm256_set1_epi32(255));
    }

 private:
    __m256 m_level2;
};

// In single precision, then put right: up to this level the lengths stay below 2^22 and are at most one off, and the
// remainder level^2 x square - length^2, small as it is, comes out right modulo 2^32.
class CorrectedRoots {
 public:
    explicit CorrectedRoots(unsigned level)
        : m_level(_mm256_set1_ps(float(level))), m_level2(_mm256_set1_epi32(int(level * level))) {}
    __m256i operator()(__m256i squares) const {
        const __m256 roots = _mm256_mul_ps(_mm256_sqrt_ps(_mm256_cvtepi32_ps(squares)), m_level);
        const __m256i lengths = _mm256_cvttps_epi32(roots);
        const __m256i remainders =
            _mm256_sub_epi32(_mm256_mullo_epi32(squares, m_level2), _mm256_mullo_epi32(lengths, lengths));
        const __m256i tooLong = _mm256_cmpgt_epi32(_mm256_setzero_si256(), remainders);
        const __m256i tooShort = _mm256_cmpgt_epi32(remainders, _mm256_add_epi32(lengths, lengths));
        const __m256i exact = _mm256_sub_epi32(_mm256_add_epi32(lengths, tooLong), tooShort);
        return _mm256_and_si256(exact, _mm256_set1_epi32(255));
    }

 private:
    __m256 m_level;
    __m256i m_level2;
};

class DoubleRoots {
 public:
    explicit DoubleRoots(unsigned level) : m_level(_mm256_set1_pd(level)) {}
    __m256i operator()(__m256i squares) const {
        const __m256i low = Four(_mm256_castsi256_si128(squares)), high = Four(_mm256_extracti128_si256(squares, 1));
        const __m256 words = _mm256_shuffle_ps(_mm256_castsi256_ps(low), _mm256_castsi256_ps(high), 0x88);
        return _mm256_and_si256(_mm256_permute4x64_epi64(_mm256_castps_si256(words), 0xD8), _mm256_set1_epi32(255));
    }

 private:
    // The whole number in the low 32 bits of each 64: from 2^52 on a double's fraction counts ones.
    __m256i Four(__m128i squares) const {
        const __m256d lengths = _mm256_mul_pd(_mm256_sqrt_pd(_mm256_cvtepi32_pd(squares)), m_level);
        const __m256d whole = _mm256_floor_pd(_mm256_min_pd(lengths, _mm256_set1_pd(4294967295.0)));
        return _mm256_castpd_si256(_mm256_add_pd(whole, _mm256_set1_pd(4503599627370496.0)));
    }

    __m256d m_level;
};

__m256i Distances(__m256i a, __m256i b) { return _mm256_or_si256(_mm256_subs_epu8(a, b), _mm256_subs_epu8(b, a)); }

// Eight pairs of distances, as 16-bit halves of 32 bits, become eight lengths.
template <class Roots>
__m256i Lengths(__m256i pairs, Roots roots) {
    return roots(_mm256_madd_epi16(pairs, pairs));
}

// The lengths of 16 pairs of distances, each of two bytes, in 16 bits each.
template <class Roots>
__m256i SixteenLengths(__m256i pairs, Roots roots) {
    const __m256i zero = _mm256_setzero_si256();
    return _mm256_packus_epi32(Lengths(_mm256_unpacklo_epi8(pairs, zero), roots),
                               Lengths(_mm256_unpackhi_epi8(pairs, zero), roots));
}

template <class Roots>
void ComponentRow(unsigned char* row, unsigned bytes, unsigned pitch, unsigned char bias, Roots roots) {
    const unsigned char* const below = row + pitch;
    const __m256i biases = _mm256_set1_epi8(char(bias));
    ForEachVector(row, bytes, 3 * std::ptrdiff_t(pitch), [=](unsigned x) {
        const __m256i here = LoadVector(row + x), right = Distances(here, LoadVector(row + x + 1)),
                      down = Distances(here, LoadVector(below + x));
        const __m256i lengths = _mm256_packus_epi16(SixteenLengths(_mm256_unpacklo_epi8(right, down), roots),
                                                    SixteenLengths(_mm256_unpackhi_epi8(right, down), roots));
        return _mm256_add_epi8(lengths, biases);
    });
}

// The fourth bytes are squeezed out before the roots, so that three roots serve four bytes.
template <class Roots>
void Rgba32Row(unsigned char* row, unsigned bytes, unsigned pitch, Roots roots) {
    const unsigned char* const below = row + pitch;
    const __m256i zero = _mm256_setzero_si256();
    const __m256i squeeze =
        _mm256_broadcastsi128_si256(_mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1));
    const __m256i spread =
        _mm256_broadcastsi128_si256(_mm_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1));
    ForEachVector(row, bytes, 3 * std::ptrdiff_t(pitch), [=](unsigned x) {
        const __m256i here = LoadVector(row + x);
        const __m256i right = _mm256_shuffle_epi8(Distances(here, LoadVector(row + x + 4)), squeeze);
        const __m256i down = _mm256_shuffle_epi8(Distances(here, LoadVector(below + x)), squeeze);
        const __m256i eight = SixteenLengths(_mm256_unpacklo_epi8(right, down), roots);
        const __m256i four = Lengths(_mm256_unpacklo_epi8(_mm256_unpackhi_epi8(right, down), zero), roots);
        const __m256i colours = _mm256_packus_epi16(eight, _mm256_packus_epi32(four, zero));
        return OnColours(here, _mm256_shuffle_epi8(colours, spread));
    });
}

// Calls gradients(roots) with the cheapest roots that are exact at a level.
template <class Gradients>
void WithRoots(unsigned level, Gradients gradients) {
    if (level <= highestSingleLevel)
        gradients(SingleRoots(level));
    else if (level <= highestCorrectedLevel)
        gradients(CorrectedRoots(level));
    else
        gradients(DoubleRoots(level));
}

}  // namespace

void GradientComponentRowAvx2(unsigned char* row, unsigned bytes, unsigned pitch, unsigned level, unsigned char bias) {
    if (bytes < vectorBytes) return GradientComponentRow(row, bytes, pitch, level, bias);
    WithRoots(level, [=](auto roots) { ComponentRow(row, bytes, pitch, bias, roots); });
}

void GradientRgba32RowAvx2(unsigned char* row, unsigned bytes, unsigned pitch, unsigned level, unsigned char bias) {
    if (bytes < vectorBytes) return GradientRgba32Row(row, bytes, pitch, level, bias);
    WithRoots(level, [=](auto roots) { Rgba32Row(row, bytes, pitch, roots); });
}

}  // namespace AVBased

NIFIKRAL_END_AVX2
