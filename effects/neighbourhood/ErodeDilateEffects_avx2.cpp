#include "effects/neighbourhood/ErodeDilateEffects_avx2.h"

#include "effects/base/vector_rows_avx2.h"

NIFIKRAL_BEGIN_AVX2

namespace AVBased {
namespace {

__m256i ExtremeOf(Least, __m256i a, __m256i b) { return _mm256_min_epu8(a, b); }
__m256i ExtremeOf(Greatest, __m256i a, __m256i b) { return _mm256_max_epu8(a, b); }
template <class Extreme>
__m256i ExtremeOf(__m256i a, __m256i b, __m256i c) {
    return ExtremeOf(Extreme(), ExtremeOf(Extreme(), a, b), c);
}

}  // namespace

template <class Extreme, class Sample>
void FilterRowAvx2(unsigned char* row, const unsigned char* second, const unsigned char* third, unsigned bytes,
                   std::ptrdiff_t ahead) {
    if (bytes < vectorBytes) return FilterRow<Extreme, Sample>(row, second, third, bytes, ahead);
    constexpr unsigned step = sizeof(Sample);
    const auto column = [=](unsigned x) {
        return ExtremeOf<Extreme>(LoadVector(second + x), LoadVector(third + x), LoadVector(row + x));
    };
    ForEachVector(row, bytes, ahead, [=](unsigned x) {
        const __m256i result = ExtremeOf<Extreme>(column(x), column(x + step), column(x + 2 * step));
        return step == 1 ? result : OnColours(LoadVector(row + x), result);
    });
}
template ExtremeRow FilterRowAvx2<Least, std::uint8_t>;
template ExtremeRow FilterRowAvx2<Least, Rgba32>;
template ExtremeRow FilterRowAvx2<Greatest, std::uint8_t>;
template ExtremeRow FilterRowAvx2<Greatest, Rgba32>;

}  // namespace AVBased

NIFIKRAL_END_AVX2
