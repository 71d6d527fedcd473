#pragma once

#include <cstddef>
#include <cstdint>

#include "effects/base/row_loops.h"

#if defined(__x86_64__)

#include <immintrin.h>

#pragma GCC push_options
#pragma GCC target("avx2,bmi,bmi2,lzcnt,popcnt")

/// What the hand-written AVX2 filters share, which walk rows as bytes. For sources that are compiled for that set.
namespace AVBased {
namespace {

constexpr unsigned vectorBytes = 32;

inline __m256i LoadVector(const std::uint8_t* at) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(at)); }
inline void StoreVector(std::uint8_t* at, __m256i value) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(at), value); }

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

#pragma GCC pop_options

#endif
