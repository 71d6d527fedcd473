#include "effects/EmbossEffect.h"
#include "effects/vector_rows.h"

#if defined(__x86_64__)

#pragma GCC push_options
#pragma GCC target("avx2,bmi,bmi2,lzcnt,popcnt")

namespace AVBased {
namespace {

// Rows are taken upwards: what is needed next lies above the row above.
std::ptrdiff_t Ahead(unsigned pitch) { return -3 * std::ptrdiff_t(pitch); }

__m256i Lanes(__m256i row, __m256i above, __m256i level) {
    const __m256i lifted = _mm256_add_epi16(_mm256_mullo_epi16(row, level), _mm256_set1_epi16(128));
    return _mm256_subs_epi16(lifted, _mm256_mullo_epi16(above, level));
}

__m256i Bytes(__m256i row, __m256i above, __m256i level) {
    const __m256i zero = _mm256_setzero_si256();
    return _mm256_packus_epi16(Lanes(_mm256_unpacklo_epi8(row, zero), _mm256_unpacklo_epi8(above, zero), level),
                               Lanes(_mm256_unpackhi_epi8(row, zero), _mm256_unpackhi_epi8(above, zero), level));
}

void EmbossGroupsAvx2(unsigned char* row, const unsigned char* above, unsigned bytes, unsigned pitch, unsigned level) {
    if (bytes < vectorBytes) return EmbossGroups(row, above, bytes, pitch, level);
    const __m256i lane = _mm256_set1_epi16(short(level));
    ForEachVector(row, bytes, Ahead(pitch),
                  [=](unsigned x) { return Bytes(LoadVector(row + x), LoadVector(above + x), lane); });
}

void EmbossPixelsAvx2(unsigned char* row, const unsigned char* above, unsigned bytes, unsigned pitch, unsigned level) {
    if (bytes < vectorBytes) return EmbossPixels(row, above, bytes, pitch, level);
    const __m256i lane = _mm256_set1_epi16(short(level));
    ForEachVector(row, bytes, Ahead(pitch), [=](unsigned x) {
        const __m256i pixels = LoadVector(row + x);
        return OnColours(pixels, Bytes(pixels, LoadVector(above + x), lane));
    });
}

}  // namespace

constinit const EmbossRowVariants embossGroupsVariants{EmbossGroups, EmbossGroupsAvx2};
constinit const EmbossRowVariants embossPixelsVariants{EmbossPixels, EmbossPixelsAvx2};

}  // namespace AVBased

#pragma GCC pop_options

#else

namespace AVBased {

constinit const EmbossRowVariants embossGroupsVariants{EmbossGroups, EmbossGroups};
constinit const EmbossRowVariants embossPixelsVariants{EmbossPixels, EmbossPixels};

}  // namespace AVBased

#endif
