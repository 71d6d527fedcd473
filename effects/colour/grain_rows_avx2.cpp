#include "effects/colour/grain_rows_avx2.h"

#include "effects/base/vector_rows_avx2.h"

NIFIKRAL_BEGIN_AVX2

namespace AVBased {
namespace {

/// Grains 32 bytes at once.
class Grainer {
 public:
    Grainer(std::int16_t gain, std::uint32_t mask)
        : m_gain(_mm256_set1_epi16(gain)), m_mask(_mm256_set1_epi32(std::int32_t(mask))) {}

    /// The numbers of both tables stand side by side, in the order of interleaved lower and upper bytes.
    __m256i operator()(__m256i samples, __m256i tones, __m256i lower, __m256i upper) const {
        const __m256i middle = _mm256_set1_epi8(-128), zero = _mm256_setzero_si256();
        const __m256i edge = _mm256_min_epu8(tones, _mm256_xor_si256(tones, _mm256_set1_epi8(-1)));
        const __m256i weights = _mm256_and_si256(_mm256_avg_epu8(edge, middle), m_mask);
        const auto grained = [this](__m256i sixteen, __m256i twoWeights, __m256i numbers) {
            const __m256i grain = _mm256_maddubs_epi16(twoWeights, numbers);
            return _mm256_add_epi16(sixteen, _mm256_mulhrs_epi16(grain, m_gain));
        };
        return _mm256_packus_epi16(
            grained(_mm256_unpacklo_epi8(samples, zero), _mm256_unpacklo_epi8(weights, weights), lower),
            grained(_mm256_unpackhi_epi8(samples, zero), _mm256_unpackhi_epi8(weights, weights), upper));
    }

 private:
    __m256i m_gain, m_mask;
};

constexpr unsigned vectorPixels = vectorBytes / sizeof(Rgba32);

}  // namespace

void GrainSamplesAvx2(std::uint8_t* row, const std::uint8_t* tones, unsigned count, bool ofPixels,
                      const RowGrain& grain) {
    const Grainer grainer(grain.gain, ofPixels ? ~alphaMask : ~0u);
    grain.ForEachStretch(count, [=](unsigned begin, unsigned length, GrainTables::Stretch numbers) {
        const auto grained = [=](const std::uint8_t* samples, const std::uint8_t* by, unsigned i) {
            const __m256i first = LoadVector(numbers.first + i), second = LoadVector(numbers.second + i);
            return grainer(LoadVector(samples), LoadVector(by), _mm256_unpacklo_epi8(first, second),
                           _mm256_unpackhi_epi8(first, second));
        };
        std::uint8_t* const to = row + begin;
        const std::uint8_t* const by = tones + begin;
        unsigned i = 0;
        for (; i + cacheLine <= length; i += cacheLine) {
            PrefetchToWrite(to + i);
            const __m256i first = grained(to + i, by + i, i),
                          second = grained(to + i + vectorBytes, by + i + vectorBytes, i + vectorBytes);
            StoreVector(to + i, first);
            StoreVector(to + i + vectorBytes, second);
        }
        for (; i < length; i += vectorBytes) {
            const unsigned rest = std::min(vectorBytes, length - i);
            std::uint8_t samples[vectorBytes]{}, itsTones[vectorBytes]{};
            std::copy_n(to + i, rest, samples);
            std::copy_n(by + i, rest, itsTones);
            StoreVector(samples, grained(samples, itsTones, i));
            std::copy_n(samples, rest, to + i);
        }
    });
}

void GrainPixelsAvx2(Rgba32* row, unsigned width, const RowGrain& grain) {
    const Grainer grainer(grain.gain, ~0u);
    // The fourth bytes' numbers are 0.
    const __m256i lower = _mm256_setr_epi8(0, 1, 0, 1, 0, 1, -1, -1, 2, 3, 2, 3, 2, 3, -1, -1,  //
                                           8, 9, 8, 9, 8, 9, -1, -1, 10, 11, 10, 11, 10, 11, -1, -1),
                  upper = _mm256_setr_epi8(4, 5, 4, 5, 4, 5, -1, -1, 6, 7, 6, 7, 6, 7, -1, -1,  //
                                           12, 13, 12, 13, 12, 13, -1, -1, 14, 15, 14, 15, 14, 15, -1, -1);
    grain.ForEachStretch(width, [=](unsigned begin, unsigned length, GrainTables::Stretch numbers) {
        const auto grained = [=](const Rgba32* pixels, unsigned i) {
            const auto eight = [i](const std::int8_t* at) {
                return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(at + i));
            };
            const __m256i both =
                _mm256_broadcastsi128_si256(_mm_unpacklo_epi8(eight(numbers.first), eight(numbers.second)));
            const __m256i samples = LoadVector(pixels);
            return grainer(samples, samples, _mm256_shuffle_epi8(both, lower), _mm256_shuffle_epi8(both, upper));
        };
        Rgba32* const to = row + begin;
        unsigned i = 0;
        for (; i + 2 * vectorPixels <= length; i += 2 * vectorPixels) {
            PrefetchToWrite(to + i);
            StoreVector(to + i, grained(to + i, i));
            StoreVector(to + i + vectorPixels, grained(to + i + vectorPixels, i + vectorPixels));
        }
        for (; i < length; i += vectorPixels) {
            const unsigned rest = std::min(vectorPixels, length - i);
            Rgba32 pixels[vectorPixels]{};
            std::copy_n(to + i, rest, pixels);
            StoreVector(pixels, grained(pixels, i));
            std::copy_n(pixels, rest, to + i);
        }
    });
}

}  // namespace AVBased

NIFIKRAL_END_AVX2
