#include "effects/neighbourhood/EmbossEffect_avx2.h"

#include "effects/base/vector_rows_avx2.h"

NIFIKRAL_BEGIN_AVX2

namespace AVBased {
namespace {

// (row - above) x level + 128 for levels that fit the signed side of a product of bytes: nothing wraps there.
class SmallLevel {
 public:
    explicit SmallLevel(unsigned level) : m_weights(_mm256_set1_epi16(short((level & 255) | (0u - level) << 8))) {}
    static bool Serves(unsigned level) { return level + 127 <= 254; }

    __m256i operator()(__m256i row, __m256i above) const {
        return _mm256_packus_epi16(Lanes(_mm256_unpacklo_epi8(row, above)), Lanes(_mm256_unpackhi_epi8(row, above)));
    }

 private:
    __m256i Lanes(__m256i pairs) const {
        return _mm256_adds_epi16(_mm256_maddubs_epi16(pairs, m_weights), _mm256_set1_epi16(128));
    }

    __m256i m_weights;
};

class AnyLevel {
 public:
    explicit AnyLevel(unsigned level) : m_level(_mm256_set1_epi16(short(level))) {}

    __m256i operator()(__m256i row, __m256i above) const {
        const __m256i zero = _mm256_setzero_si256();
        return _mm256_packus_epi16(Lanes(_mm256_unpacklo_epi8(row, zero), _mm256_unpacklo_epi8(above, zero)),
                                   Lanes(_mm256_unpackhi_epi8(row, zero), _mm256_unpackhi_epi8(above, zero)));
    }

 private:
    __m256i Lanes(__m256i row, __m256i above) const {
        const __m256i lifted = _mm256_add_epi16(_mm256_mullo_epi16(row, m_level), _mm256_set1_epi16(128));
        return _mm256_subs_epi16(lifted, _mm256_mullo_epi16(above, m_level));
    }

    __m256i m_level;
};

// Every whole vector of a row; returns how many bytes that is. `change` makes one out of a row and the row above.
template <class Change>
unsigned EmbossVectors(unsigned char* row, unsigned char* above, unsigned bytes, Change change) {
    const auto emboss = [=](std::size_t x) {
        const __m256i own = LoadVector(row + x);
        StoreVector(row + x, change(own, LoadVector(above + x)));
        StoreVector(above + x, own);
    };
    std::size_t x = 0;
    for (; x + cacheLine <= bytes; x += cacheLine) {
        PrefetchToWrite(row + x);
        emboss(x);
        emboss(x + vectorBytes);
    }
    for (; x + vectorBytes <= bytes; x += vectorBytes) emboss(x);
    return unsigned(x);
}

// Only the colours of pixels.
template <class Level>
auto OnColoursOnly(Level level) {
    return [level](__m256i row, __m256i above) { return OnColours(row, level(row, above)); };
}

}  // namespace

void EmbossGroupsAvx2(unsigned char* row, unsigned char* above, unsigned bytes, unsigned level) {
    const unsigned x = SmallLevel::Serves(level) ? EmbossVectors(row, above, bytes, SmallLevel(level))
                                                 : EmbossVectors(row, above, bytes, AnyLevel(level));
    EmbossGroups(row + x, above + x, bytes - x, level);
}

void EmbossPixelsAvx2(unsigned char* row, unsigned char* above, unsigned bytes, unsigned level) {
    const unsigned x = SmallLevel::Serves(level) ? EmbossVectors(row, above, bytes, OnColoursOnly(SmallLevel(level)))
                                                 : EmbossVectors(row, above, bytes, OnColoursOnly(AnyLevel(level)));
    EmbossPixels(row + x, above + x, bytes - x, level);
}

}  // namespace AVBased

NIFIKRAL_END_AVX2
