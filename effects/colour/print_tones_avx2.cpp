#include "effects/colour/print_tones_avx2.h"

#include "effects/base/vector_rows_avx2.h"
#include "effects/colour/print_tones.h"

NIFIKRAL_BEGIN_AVX2

namespace AVBased {
namespace {

constexpr unsigned vectorCells = 16;

// Blue, green, red and alpha of four cells: each the sum of four pixels.
__m256i FourSums(const Rgba32* upper, const Rgba32* lower) {
    const __m256i ones = _mm256_set1_epi8(1),
                  pairs = _mm256_setr_epi8(0, 4, 1, 5, 2, 6, 3, 7, 8, 12, 9, 13, 10, 14, 11, 15,  //
                                           0, 4, 1, 5, 2, 6, 3, 7, 8, 12, 9, 13, 10, 14, 11, 15);
    return _mm256_add_epi16(_mm256_maddubs_epi16(_mm256_shuffle_epi8(LoadVector(upper), pairs), ones),
                            _mm256_maddubs_epi16(_mm256_shuffle_epi8(LoadVector(lower), pairs), ones));
}

// Luma and warmth of eight cells, of which the third and fourth stand behind the fifth and sixth.
struct EightTones {
    __m256i luma, warmth;

    EightTones(const Rgba32* upper, const Rgba32* lower) {
        const __m256 first = _mm256_castsi256_ps(FourSums(upper, lower)),
                     second = _mm256_castsi256_ps(FourSums(upper + 8, lower + 8));
        const __m256i blueGreen = _mm256_castps_si256(_mm256_shuffle_ps(first, second, 0x88)),
                      redAlpha = _mm256_castps_si256(_mm256_shuffle_ps(first, second, 0xDD));
        const auto weighted = [&](int blue, int green, int red) {
            const __m256i outer =
                _mm256_madd_epi16(blueGreen, _mm256_set1_epi32((blue & 0xFFFF) | int(unsigned(green) << 16)));
            return _mm256_srai_epi32(_mm256_add_epi32(outer, _mm256_madd_epi16(redAlpha, _mm256_set1_epi32(red))), 5);
        };
        luma = weighted(25, 129, 66);
        warmth = weighted(-130, -20, 150);
    }
};

__m256i SixteenTones(const Rgba32* upper, const Rgba32* lower) {
    const EightTones first(upper, lower), second(upper + 16, lower + 16);
    const __m256i luma = _mm256_packs_epi32(first.luma, second.luma),
                  warmth = _mm256_packs_epi32(first.warmth, second.warmth), zero = _mm256_setzero_si256(),
                  warm = _mm256_srai_epi16(_mm256_max_epi16(warmth, zero), 2),
                  tones = _mm256_add_epi16(_mm256_add_epi16(luma, warm), _mm256_min_epi16(warmth, zero));
    return _mm256_permutevar8x32_epi32(_mm256_add_epi16(tones, _mm256_set1_epi16(16 * toneUnit)),
                                       _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7));
}

}  // namespace

void TonesOfPixelsAvx2(std::int16_t* tones, const Rgba32* upper, const Rgba32* lower, unsigned cells) {
    // The pixels of the next rows of cells are fetched.
    const std::ptrdiff_t ahead = 2 * (reinterpret_cast<const char*>(lower) - reinterpret_cast<const char*>(upper));
    if (cells < vectorCells) {
        Rgba32 above[2 * vectorCells]{}, below[2 * vectorCells]{};
        std::int16_t padded[vectorCells];
        std::copy_n(upper, 2 * cells, above);
        std::copy_n(lower, 2 * cells, below);
        TonesOfPixelsAvx2(padded, above, below, vectorCells);
        std::copy_n(padded, cells, tones);
        return;
    }
    // The last vector may overlap the one before.
    for (unsigned next = 0; next < cells; next += vectorCells) {
        const unsigned x = std::min(next, cells - vectorCells);
        for (const Rgba32* const row : {upper + 2 * x, lower + 2 * x})
            for (unsigned line = 0; line < 2 * vectorCells; line += cacheLine / sizeof(Rgba32))
                PrefetchToWrite(row + line, ahead);
        StoreVector(tones + x, SixteenTones(upper + 2 * x, lower + 2 * x));
    }
}

}  // namespace AVBased

NIFIKRAL_END_AVX2
