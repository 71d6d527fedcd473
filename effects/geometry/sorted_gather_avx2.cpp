#include "effects/geometry/sorted_gather_avx2.h"

#include "effects/base/vector_rows_avx2.h"

NIFIKRAL_BEGIN_AVX2

namespace AVBased {
namespace {

constexpr unsigned vectorPixels = vectorBytes / sizeof(Rgba32);

__m256i Places(const std::uint16_t* at) {
    return _mm256_cvtepu16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(at)));
}
__m256i Places(const std::uint32_t* at) { return LoadVector(at); }

template <bool streams, class Place>
void Take(Rgba32* to, const Rgba32* from, const Place* places, std::size_t count) {
    std::size_t i = 0;
    for (; i + vectorPixels <= count; i += vectorPixels) {
        const __m256i pixels =
            _mm256_i32gather_epi32(reinterpret_cast<const int*>(from), Places(places + i), sizeof(Rgba32));
        if constexpr (streams)
            _mm256_stream_si256(reinterpret_cast<__m256i*>(to + i), pixels);
        else
            StoreVector(to + i, pixels);
    }
    for (; i < count; ++i) to[i] = from[places[i]];
}

}  // namespace

void TakePixelsAvx2(Rgba32* to, const Rgba32* from, const std::uint16_t* places, std::size_t count) {
    Take<false>(to, from, places, count);
}

void FetchPixelsAvx2(Rgba32* to, const Rgba32* from, const std::uint32_t* places, std::size_t count) {
    if (reinterpret_cast<std::uintptr_t>(to) % vectorBytes == 0)
        Take<true>(to, from, places, count);
    else
        Take<false>(to, from, places, count);
}

}  // namespace AVBased

NIFIKRAL_END_AVX2
