#include "effects/colour/BrightnessContrastEffect_avx2.h"

#include "effects/base/vector_rows_avx2.h"

NIFIKRAL_BEGIN_AVX2

namespace AVBased {
namespace {

// slope x (byte - centre) >> 8 with a base added, of byte and centre side by side: (byte - centre) x 64 and slope x 4
// both fit 16 bits, and the upper half of their product is the exact quotient, rounded down.
__m256i Stretch(__m256i pairs, __m256i slopeTimes4, __m256i base) {
    const __m256i distanceTimes64 = _mm256_maddubs_epi16(pairs, _mm256_set1_epi16(-64 * 256 + 64));
    return _mm256_add_epi16(_mm256_mulhi_epi16(distanceTimes64, slopeTimes4), base);
}

__m256i SlopeTimes4(std::int32_t slope) { return _mm256_set1_epi16(short(4 * slope)); }

class ChangeTones {
 public:
    explicit ChangeTones(ToneLine line)
        : m_slope(SlopeTimes4(line.slope)), m_middle(_mm256_set1_epi16(short(line.middle))) {}

    __m256i operator()(__m256i tones) const {
        const __m256i centre = _mm256_set1_epi8(127);
        return _mm256_packus_epi16(Stretch(_mm256_unpacklo_epi8(tones, centre), m_slope, m_middle),
                                   Stretch(_mm256_unpackhi_epi8(tones, centre), m_slope, m_middle));
    }

 private:
    __m256i m_slope, m_middle;
};

class ChangeColours {
 public:
    explicit ChangeColours(const PackedTones& tones)
        : m_changeTones(tones.line), m_factor(SlopeTimes4(tones.colourFactor)) {}

    __m256i operator()(__m256i pixels) const {
        const __m256i tones = m_changeTones(pixels);
        const __m256i sums = _mm256_maddubs_epi16(tones, _mm256_set1_epi32(0x010101));
        // x 21846 / 65536 is exactly a third of every sum.
        const __m256i means = _mm256_srli_epi32(_mm256_madd_epi16(sums, _mm256_set1_epi16(21846)), 16);
        const __m256i spread = _mm256_setr_epi8(0, 0, 0, -1, 4, 4, 4, -1, 8, 8, 8, -1, 12, 12, 12, -1,  //
                                                0, 0, 0, -1, 4, 4, 4, -1, 8, 8, 8, -1, 12, 12, 12, -1);
        const __m256i centres = _mm256_shuffle_epi8(means, spread), zero = _mm256_setzero_si256();
        return _mm256_packus_epi16(
            Stretch(_mm256_unpacklo_epi8(tones, centres), m_factor, _mm256_unpacklo_epi8(centres, zero)),
            Stretch(_mm256_unpackhi_epi8(tones, centres), m_factor, _mm256_unpackhi_epi8(centres, zero)));
    }

 private:
    ChangeTones m_changeTones;
    __m256i m_factor;
};

template <class Change>
void ChangeVector(std::uint8_t* at, const Change& change) {
    StoreVector(at, change(LoadVector(at)));
}

template <class Sample, class Change>
void ChangePlane(const PlaneView<Sample>& plane, const Change& change) {
    ForEachStretch(plane, [&change](Sample* samples, unsigned count) {
        std::uint8_t* at = reinterpret_cast<std::uint8_t*>(samples);
        std::size_t left = count * sizeof(Sample);
        for (; left >= vectorBytes; left -= vectorBytes, at += vectorBytes) ChangeVector(at, change);
        if (left) {
            std::uint8_t rest[vectorBytes] = {};
            std::copy_n(at, left, rest);
            ChangeVector(rest, change);
            std::copy_n(rest, left, at);
        }
    });
}

template <class Change>
struct KeepAlpha {
    Change change;
    __m256i operator()(__m256i pixels) const { return OnColours(pixels, change(pixels)); }
};

}  // namespace

// Flattened, since the walk itself is compiled for no instruction set.
[[gnu::flatten]] void ChangeTonesComponentAvx2(ComponentView plane, ToneLine line) {
    ChangePlane(plane, ChangeTones(line));
}

[[gnu::flatten]] void ChangeTonesRgba32Avx2(PackedView picture, const PackedTones& tones) {
    ChangePlane(picture, KeepAlpha<ChangeTones>{ChangeTones(tones.line)});
}

[[gnu::flatten]] void ChangeColoursRgba32Avx2(PackedView picture, const PackedTones& tones) {
    ChangePlane(picture, KeepAlpha<ChangeColours>{ChangeColours(tones)});
}

}  // namespace AVBased

NIFIKRAL_END_AVX2
