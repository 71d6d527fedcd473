#pragma once

#if defined(__x86_64__)

#include <immintrin.h>

#include "dvd_effects/canvas/tile_row.h"

/// What the samplers' vector variants have in common.
namespace AVBased::Blending {

/// Stores eight pixels as entries of a row. Each vector holds blue, green, red and coverage of two pixels, in 32 bits
/// of which 16 are used: the one with index i holds those of the pixels i and i + 4.
[[NIFIKRAL_AVX2]] inline void StorePixels(const __m256i (&pixels)[4], TileRow& row, unsigned at) {
    const auto store = [](std::uint16_t* to, __m128i entries) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to), entries);
    };
    const __m256i even = _mm256_packus_epi32(pixels[0], pixels[2]), odd = _mm256_packus_epi32(pixels[1], pixels[3]);
    const __m256i low = _mm256_unpacklo_epi16(even, odd), high = _mm256_unpackhi_epi16(even, odd);
    const __m256i firstTwo = _mm256_permute4x64_epi64(_mm256_unpacklo_epi32(low, high), 0xD8);
    const __m256i lastTwo = _mm256_permute4x64_epi64(_mm256_unpackhi_epi32(low, high), 0xD8);
    store(row.colour[0] + at, _mm256_castsi256_si128(firstTwo));
    store(row.colour[1] + at, _mm256_extracti128_si256(firstTwo, 1));
    store(row.colour[2] + at, _mm256_castsi256_si128(lastTwo));
    store(row.coverage + at, _mm256_extracti128_si256(lastTwo, 1));
}

}  // namespace AVBased::Blending

#endif
