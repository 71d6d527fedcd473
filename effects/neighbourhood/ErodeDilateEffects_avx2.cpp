#include "effects/neighbourhood/ErodeDilateEffects_avx2.h"

#include "effects/base/vector_rows_avx2.h"

NIFIKRAL_BEGIN_AVX2

namespace AVBased {
namespace {

struct Least {
    static __m256i Of(__m256i a, __m256i b) { return _mm256_min_epu8(a, b); }
};
struct Greatest {
    static __m256i Of(__m256i a, __m256i b) { return _mm256_max_epu8(a, b); }
};

template <class Extreme, unsigned step, ExtremeRow plain>
void FilterRow(unsigned char* row, const unsigned char* second, const unsigned char* third, unsigned bytes,
               std::ptrdiff_t ahead) {
    if (bytes < vectorBytes) return plain(row, second, third, bytes, ahead);
    const auto column = [=](unsigned x) {
        return Extreme::Of(Extreme::Of(LoadVector(second + x), LoadVector(third + x)), LoadVector(row + x));
    };
    ForEachVector(row, bytes, ahead, [=](unsigned x) {
        const __m256i extreme = Extreme::Of(Extreme::Of(column(x), column(x + step)), column(x + 2 * step));
        if constexpr (step == 1)
            return extreme;
        else
            return OnColours(LoadVector(row + x), extreme);
    });
}

}  // namespace

void LeastComponentRowAvx2(unsigned char* row, const unsigned char* second, const unsigned char* third, unsigned bytes,
                           std::ptrdiff_t ahead) {
    FilterRow<Least, 1, LeastComponentRow>(row, second, third, bytes, ahead);
}
void LeastRgba32RowAvx2(unsigned char* row, const unsigned char* second, const unsigned char* third, unsigned bytes,
                        std::ptrdiff_t ahead) {
    FilterRow<Least, 4, LeastRgba32Row>(row, second, third, bytes, ahead);
}
void GreatestComponentRowAvx2(unsigned char* row, const unsigned char* second, const unsigned char* third,
                              unsigned bytes, std::ptrdiff_t ahead) {
    FilterRow<Greatest, 1, GreatestComponentRow>(row, second, third, bytes, ahead);
}
void GreatestRgba32RowAvx2(unsigned char* row, const unsigned char* second, const unsigned char* third, unsigned bytes,
                           std::ptrdiff_t ahead) {
    FilterRow<Greatest, 4, GreatestRgba32Row>(row, second, third, bytes, ahead);
}

}  // namespace AVBased

NIFIKRAL_END_AVX2
