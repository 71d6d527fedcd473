#include "effects/geometry/sample_exchange_avx2.h"

#include "effects/base/vector_rows_avx2.h"
#include "effects/geometry/sample_exchange.h"

NIFIKRAL_BEGIN_AVX2

namespace AVBased {
namespace {

__m256i TurnRound(__m256i vector, const Rgba32*) {
    return _mm256_permutevar8x32_epi32(vector, _mm256_setr_epi32(7, 6, 5, 4, 3, 2, 1, 0));
}

__m256i TurnRound(__m256i vector, const std::uint8_t*) {
    const __m256i lanes =
        _mm256_broadcastsi128_si256(_mm_setr_epi8(15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0));
    return _mm256_permute4x64_epi64(_mm256_shuffle_epi8(vector, lanes), _MM_SHUFFLE(1, 0, 3, 2));
}

}  // namespace

template <class Sample>
void ExchangeReversedAvx2(Sample* a, Sample* b, unsigned count) {
    constexpr unsigned step = vectorBytes / sizeof(Sample);
    unsigned i = 0;
    for (; i + step <= count; i += step) {
        Sample *const first = a + i, *const second = b + (count - i - step);
        const __m256i turned = TurnRound(LoadVector(first), a);
        StoreVector(first, TurnRound(LoadVector(second), b));
        StoreVector(second, turned);
    }
    ExchangeReversed(a + i, b, count - i);
}
template void ExchangeReversedAvx2(std::uint8_t* a, std::uint8_t* b, unsigned count);
template void ExchangeReversedAvx2(Rgba32* a, Rgba32* b, unsigned count);

}  // namespace AVBased

NIFIKRAL_END_AVX2
