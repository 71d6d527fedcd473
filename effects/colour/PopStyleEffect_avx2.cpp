#include "effects/colour/PopStyleEffect_avx2.h"

#include "effects/base/vector_rows_avx2.h"

NIFIKRAL_BEGIN_AVX2

namespace AVBased {
namespace {

constexpr unsigned vector = vectorBytes;

// Calls print(row, above, below) for every 32 samples of a row: where there are fewer, on a copy.
template <class Sample, class Print>
void ForEachVector(Sample* row, const std::uint8_t* above, const std::uint8_t* below, unsigned count, Print print) {
    unsigned x = 0;
    for (; x + vector <= count; x += vector) print(row + x, above + x, below + x);
    const unsigned rest = count - x;
    if (rest == 0) return;
    Sample samples[vector]{};
    std::uint8_t upper[vector + 1]{}, lower[vector + 1]{};
    std::copy_n(row + x, rest, samples);
    std::copy_n(above + x, rest + 1, upper);
    std::copy_n(below + x, rest + 1, lower);
    print(samples, upper, lower);
    std::copy_n(samples, rest, row + x);
}

}  // namespace

void InkCornersAvx2(std::uint8_t* numbers, const std::int16_t* upper, const std::int16_t* lower, unsigned cells,
                    const InkSteps& steps) {
    // The steps are whole ones, so that tones can be compared as bytes.
    __m256i below[mostInks - 1];
    for (unsigned i = 0; i + 1 < mostInks; ++i) below[i] = Less128(_mm256_set1_epi8(char(steps[i] - 1)));
    const __m256i inTurn = _mm256_setr_epi8(0, 8, 1, 9, 2, 10, 3, 11, 4, 12, 5, 13, 6, 14, 7, 15,  //
                                            0, 8, 1, 9, 2, 10, 3, 11, 4, 12, 5, 13, 6, 14, 7, 15);
    for (unsigned x = 0; x < cells; x += vectorBytes / 2) {
        const auto sums = [=](const std::int16_t* a, const std::int16_t* b) {
            return _mm256_add_epi16(LoadVector(a), LoadVector(b));
        };
        const __m256i here = sums(upper + x, lower + x), left = sums(upper + x - 1, lower + x - 1),
                      both = _mm256_add_epi16(_mm256_srai_epi16(left, 1), _mm256_srai_epi16(here, 1)),
                      tones = _mm256_packus_epi16(_mm256_srai_epi16(both, 6), _mm256_srai_epi16(here, 6)),
                      corners = Less128(_mm256_shuffle_epi8(tones, inTurn));
        __m256i passed = _mm256_setzero_si256();
        for (const __m256i& step : below) passed = _mm256_sub_epi8(passed, _mm256_cmpgt_epi8(corners, step));
        StoreVector(numbers + 2 * x, passed);
    }
}

void PrintSamplesAvx2(std::uint8_t* row, const std::uint8_t* above, const std::uint8_t* below, unsigned count,
                      const std::uint8_t (&inks)[mostInks]) {
    std::uint8_t table[vectorBytes / 2]{};
    std::copy_n(inks, mostInks, table);
    const __m256i all = _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(table)));
    ForEachVector(row, above, below, count,
                  [=](std::uint8_t* to, const std::uint8_t* upper, const std::uint8_t* lower) {
                      const auto side = [=](unsigned x) {
                          return _mm256_avg_epu8(_mm256_shuffle_epi8(all, LoadVector(upper + x)),
                                                 _mm256_shuffle_epi8(all, LoadVector(lower + x)));
                      };
                      StoreVector(to, _mm256_avg_epu8(side(0), side(1)));
                  });
}

void PrintPixelsAvx2(Rgba32* row, const std::uint8_t* above, const std::uint8_t* below, unsigned count,
                     const std::uint32_t (&inks)[mostInks]) {
    constexpr unsigned few = vectorBytes / sizeof(Rgba32);
    std::uint32_t table[few]{};
    std::copy_n(inks, mostInks, table);
    const __m256i all = LoadVector(table);
    ForEachVector(row, above, below, count, [=](Rgba32* to, const std::uint8_t* upper, const std::uint8_t* lower) {
        const auto store = [to](unsigned x, __m256i ink) { StoreVector(to + x, OnColours(LoadVector(to + x), ink)); };
        const __m256i number = _mm256_set1_epi8(char(*upper));
        const auto alike = [=](const std::uint8_t* numbers) {
            return _mm256_and_si256(_mm256_cmpeq_epi8(number, LoadVector(numbers)),
                                    _mm256_cmpeq_epi8(number, LoadVector(numbers + 1)));
        };
        // Most of a print is of one ink.
        if (_mm256_movemask_epi8(_mm256_and_si256(alike(upper), alike(lower))) == -1) {
            const __m256i ink = _mm256_permutevar8x32_epi32(all, _mm256_cvtepu8_epi32(_mm256_castsi256_si128(number)));
            for (unsigned x = 0; x < vector; x += few) store(x, ink);
            return;
        }
        const auto inked = [=](const std::uint8_t* numbers) {
            const __m128i bytes = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(numbers));
            return _mm256_permutevar8x32_epi32(all, _mm256_cvtepu8_epi32(bytes));
        };
        const auto side = [=](unsigned x) { return _mm256_avg_epu8(inked(upper + x), inked(lower + x)); };
        for (unsigned x = 0; x < vector; x += few) store(x, _mm256_avg_epu8(side(x), side(x + 1)));
    });
}

}  // namespace AVBased

NIFIKRAL_END_AVX2
