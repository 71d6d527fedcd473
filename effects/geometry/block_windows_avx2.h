#pragma once

#include "effects/geometry/block_plan.h"

namespace AVBased {

/// Where the rows of a block are.
struct BlockPlace {
    std::uint8_t* data;
    std::size_t pitch;
    std::uint8_t* Row(unsigned y) const { return data + y * pitch; }
};

}  // namespace AVBased

#if defined(__x86_64__)
#include "effects/base/vector_rows_avx2.h"

NIFIKRAL_BEGIN_AVX2

namespace AVBased {
namespace {

/// A window's row for each half of a block. Where both read one window, one load serves both.
template <bool shared>
inline __m256i PickFromRow(__m256i picks, const std::uint8_t* left, const std::uint8_t* right) {
    const __m128i l = _mm_loadu_si128(reinterpret_cast<const __m128i*>(left));
    if constexpr (shared) return _mm256_shuffle_epi8(_mm256_broadcastsi128_si256(l), picks);
    const __m128i r = _mm_loadu_si128(reinterpret_cast<const __m128i*>(right));
    return _mm256_shuffle_epi8(_mm256_inserti128_si256(_mm256_castsi128_si256(l), r, 1), picks);
}

// The lower vector holds the left halves of a block's rows, the upper one the right halves.
inline void StoreBlock(__m256i halves, const BlockPlace& to) {
    const __m128i l = _mm256_castsi256_si128(halves), r = _mm256_extracti128_si256(halves, 1);
    const __m128i upper = _mm_unpacklo_epi32(l, r), lower = _mm_unpackhi_epi32(l, r);
    const __m128i samples[blockRows] = {upper, _mm_unpackhi_epi64(upper, upper), lower,
                                        _mm_unpackhi_epi64(lower, lower)};
    for (unsigned row = 0; row < blockRows; ++row)
        _mm_storel_epi64(reinterpret_cast<__m128i*>(to.Row(row)), samples[row]);
}

template <bool shared>
inline void MoveWindows(const std::uint32_t* data, const std::uint8_t* left, const std::uint8_t* right,
                        std::size_t pitch, const BlockPlace& to) {
    const __m256i picks = LoadVector(data);
    __m256i rows[windowRows];
    for (unsigned y = 0; y < windowRows; ++y) rows[y] = PickFromRow<shared>(picks, left + y * pitch, right + y * pitch);
    // The row's three bits stand above the column's four; each in turn is brought to the top, where a blend looks.
    const __m256i bits[] = {_mm256_slli_epi16(picks, 3), _mm256_slli_epi16(picks, 2), _mm256_slli_epi16(picks, 1)};
    unsigned count = windowRows;
    for (const __m256i bit : bits) {
        count /= 2;
        for (unsigned i = 0; i < count; ++i) rows[i] = _mm256_blendv_epi8(rows[2 * i], rows[2 * i + 1], bit);
    }
    StoreBlock(rows[0], to);
}

inline __m256i EightPositions(const std::uint16_t* at) {
    return _mm256_cvtepu16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(at)));
}
inline __m256i EightPositions(const std::uint32_t* at) { return LoadVector(at); }

/// Reads up to three bytes past the last sample.
template <class Position>
inline void GatherEach(const Position* from, const std::uint8_t* source, const BlockPlace& to) {
    __m256i rows[blockRows];
    for (unsigned row = 0; row < blockRows; ++row)
        rows[row] = _mm256_and_si256(
            _mm256_i32gather_epi32(reinterpret_cast<const int*>(source), EightPositions(from + row * blockColumns), 1),
            _mm256_set1_epi32(255));
    StoreBlock(_mm256_packus_epi16(_mm256_packus_epi32(rows[0], rows[1]), _mm256_packus_epi32(rows[2], rows[3])), to);
}

}  // namespace
}  // namespace AVBased

NIFIKRAL_END_AVX2
#endif
