#include "effects/geometry/pixel_gather_avx2.h"

#include "effects/base/vector_rows_avx2.h"

NIFIKRAL_BEGIN_AVX2

namespace AVBased {
namespace {

// The sources of a turned row lie on as many pages as it has pixels, which no hardware prefetcher follows. Where the
// copy is larger than the nearer caches, asking so many runs ahead for the first of each hides a part of the wait;
// asking for more of them costs as much as it gains.
constexpr unsigned runsAhead = 8;

constexpr unsigned vectorPixels = vectorBytes / sizeof(Rgba32);

template <bool streams>
void Gather(const PixelPlan& plan, std::size_t firstRun, unsigned count, const Rgba32* copy, Rgba32* to) {
    for (std::size_t run = firstRun; run < firstRun + count; ++run, to += runPixels) {
        if (const std::uint32_t ahead = plan.bases[run + runsAhead]; ahead != PixelPlan::farApart)
            __builtin_prefetch(copy + ahead + *plan.OffsetsOf(run + runsAhead));
        const std::uint32_t base = plan.bases[run];
        __m256i pixels[2];
        for (unsigned half = 0; half < 2; ++half) {
            const unsigned i = half * vectorPixels;
            if (base == PixelPlan::farApart)
                pixels[half] = _mm256_i32gather_epi32(reinterpret_cast<const int*>(copy),
                                                      LoadVector(plan.PositionsOf(run) + i), sizeof(Rgba32));
            else
                pixels[half] = _mm256_i32gather_epi32(
                    reinterpret_cast<const int*>(copy + base),
                    _mm256_cvtepu16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(plan.OffsetsOf(run) + i))),
                    sizeof(Rgba32));
        }
        for (unsigned half = 0; half < 2; ++half) {
            auto* const at = reinterpret_cast<__m256i*>(to + half * vectorPixels);
            if constexpr (streams)
                _mm256_stream_si256(at, pixels[half]);
            else
                _mm256_storeu_si256(at, pixels[half]);
        }
    }
}

}  // namespace

void GatherRunsAvx2(const PixelPlan& plan, std::size_t firstRun, unsigned count, const Rgba32* copy, Rgba32* to) {
    if (reinterpret_cast<std::uintptr_t>(to) % vectorBytes == 0)
        Gather<true>(plan, firstRun, count, copy, to);
    else
        Gather<false>(plan, firstRun, count, copy, to);
}

}  // namespace AVBased

NIFIKRAL_END_AVX2
