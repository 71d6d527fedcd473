#pragma once

#include <immintrin.h>

#include <cstddef>
#include <cstdint>

#include "effects/base/instruction_sets.h"
#include "effects/base/row_loops.h"

NIFIKRAL_BEGIN_AVX2

/// What the hand-written AVX2 filters share, which walk rows as bytes. For sources that are compiled for that set.
namespace AVBased {
namespace {

constexpr unsigned vectorBytes = 32;

inline __m256i LoadVector(const void* at) { return _mm256_loadu_si256(static_cast<const __m256i*>(at)); }
inline void StoreVector(void* at, __m256i value) { _mm256_storeu_si256(static_cast<__m256i*>(at), value); }

/// 16 bytes each, as the lower and the upper half.
inline __m256i LoadHalves(const void* lower, const void* upper) {
    return _mm256_loadu2_m128i(static_cast<const __m128i*>(upper), static_cast<const __m128i*>(lower));
}

/// Unsigned bytes less 128, or signed ones plus 128: bytes less 128 fit the signed side of a product of bytes. Sums of
/// such products, with weights that are 256 together, are less by 128 x 256, and their upper bytes by 128 again.
inline __m256i Less128(__m256i bytes) { return _mm256_xor_si256(bytes, _mm256_set1_epi8(-128)); }

/// `changed` with the fourth byte of each pixel from `kept`.
inline __m256i OnColours(__m256i kept, __m256i changed) {
    return _mm256_blendv_epi8(changed, kept, _mm256_set1_epi32(int(alphaMask)));
}

/// Writes work(x) to row + x for every vector of `bytes`, a vector or more, fetching `ahead` of the row. The last
/// vector may overlap the one before: it is computed first, since work wants the bytes from x on as they came.
template <class Work>
inline void ForEachVector(std::uint8_t* row, unsigned bytes, std::ptrdiff_t ahead, Work work) {
    const unsigned last = bytes - vectorBytes;
    const __m256i end = work(last);
    unsigned x = 0;
    for (; x + cacheLine <= bytes; x += cacheLine) {
        PrefetchToWrite(row + x, ahead);
        StoreVector(row + x, work(x));
        StoreVector(row + x + vectorBytes, work(x + vectorBytes));
    }
    if (x < last) StoreVector(row + x, work(x));
    StoreVector(row + last, end);
}

}  // namespace
}  // namespace AVBased

NIFIKRAL_END_AVX2
