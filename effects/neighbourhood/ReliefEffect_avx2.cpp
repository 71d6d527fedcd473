#include "effects/neighbourhood/ReliefEffect_avx2.h"

#include <vector>

#include "effects/base/vector_rows_avx2.h"

NIFIKRAL_BEGIN_AVX2

namespace AVBased {
namespace {

__m256i LoadLanes(const std::int16_t* at) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(at)); }
void StoreLanes(std::int16_t* at, __m256i value) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(at), value); }
__m128i LoadHalf(const std::uint8_t* at) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at)); }

// 16 bytes, each times 128, as products take them.
__m256i Widen(const std::uint8_t* at) { return _mm256_slli_epi16(_mm256_cvtepu8_epi16(LoadHalf(at)), 7); }

// Memory for lanes that no vector straddles a cache line of.
struct LaneLine {
    alignas(cacheLine) std::int16_t lanes[cacheLine / sizeof(std::int16_t)];
};

class Weights {
 public:
    explicit Weights(const ReliefKernel& kernel) {
        for (unsigned i = 0; i < kernel.size(); ++i) m_weights[i] = _mm256_set1_epi16(short(2 * kernel[i]));
    }
    // The shares of three neighbours to the row above, to their own and to the row below.
    __m256i ToAbove(__m256i l, __m256i m, __m256i r) const { return Sum(Share(l, 6), Share(m, 7), Share(r, 8)); }
    __m256i ToBelow(__m256i l, __m256i m, __m256i r) const { return Sum(Share(l, 0), Share(m, 1), Share(r, 2)); }
    // The middle weight is always one.
    __m256i Here(__m256i l, __m256i m, __m256i r) const {
        return Sum(Share(l, 3), _mm256_srli_epi16(m, 7), Share(r, 5));
    }

 private:
    __m256i Share(__m256i samples128, unsigned weight) const {
        return _mm256_mulhi_epi16(samples128, m_weights[weight]);
    }
    static __m256i Sum(__m256i a, __m256i b, __m256i c) { return _mm256_add_epi16(a, _mm256_add_epi16(b, c)); }

    __m256i m_weights[9];
};

// The same walk and the same sums as the plain routine's.
template <class Sample>
class Relief {
 public:
    explicit Relief(const PlaneView<Sample>& plane)
        : m_plane(plane),
          m_bytes(plane.width * step),
          m_lanes((m_bytes + vectorBytes - 1) / vectorBytes * vectorBytes),
          m_sums(m_lanes / vectorBytes * 2),
          m_line(m_lanes + 2 * step + vectorBytes) {}

    void Run(const ReliefKernel& kernel) {
        const Weights weights(kernel);
        for (unsigned y = 0; y < m_plane.height; ++y) {
            Take(y);
            // Above the first row there is none: that row itself, safe in the line by now, is written twice.
            AddLine(weights, y > 0 ? y - 1 : 0);
        }
        Blacken();
        AddLine(weights, m_plane.height - 1);
    }

 private:
    static constexpr unsigned step = sizeof(Sample);
    static constexpr bool hasFourths = step == 4;

    // Fills m_line with a row between zeros. The last pixel's fourth byte serves as its right neighbour's too.
    void Take(unsigned y) {
        auto* const row = reinterpret_cast<const std::uint8_t*>(m_plane.Row(y));
        std::int16_t* const lanes = m_line.data() + step;
        unsigned x = 0;
        for (; x + cacheLine <= m_bytes; x += cacheLine) {
            PrefetchToWrite(row + x, 2 * std::ptrdiff_t(m_plane.pitch));
            for (unsigned i = x; i < x + cacheLine; i += 16) StoreLanes(lanes + i, Widen(row + i));
        }
        for (; x < m_bytes; ++x) lanes[x] = std::int16_t(row[x] << 7);
        if (hasFourths) lanes[m_bytes + step - 1] = lanes[m_bytes - 1];
    }
    // Below the last row all is black; the fourth bytes are its own.
    void Blacken() {
        for (unsigned x = 0; x < m_line.size(); ++x)
            if (!hasFourths || x % 4 != 3) m_line[x] = 0;
    }

    // Adds m_line to the sums and writes the row that is complete by that. Takes the weights by value, so that they
    // stay in registers while lanes are stored.
    void AddLine(Weights weights, unsigned finished) {
        auto* const row = reinterpret_cast<std::uint8_t*>(m_plane.Row(finished));
        const std::int16_t* const line = m_line.data();
        std::int16_t *const above = m_sums.data()->lanes, *const here = above + m_lanes;
        const unsigned bytes = m_bytes;
        unsigned x = 0;
        for (; x + vectorBytes <= bytes; x += vectorBytes)
            StoreVector(row + x, AddVector(weights, line + x, above + x, here + x));
        if (x == bytes) return;
        std::uint8_t rest[vectorBytes];
        StoreVector(rest, AddVector(weights, line + x, above + x, here + x));
        std::copy_n(rest, bytes - x, row + x);
    }
    static __m256i AddVector(const Weights& weights, const std::int16_t* line, std::int16_t* above,
                             std::int16_t* here) {
        const __m256i first = AddHalf(weights, line, above, here),
                      second = AddHalf(weights, line + 16, above + 16, here + 16);
        return _mm256_permute4x64_epi64(_mm256_packus_epi16(first, second), 0xD8);
    }
    static __m256i AddHalf(const Weights& weights, const std::int16_t* line, std::int16_t* above, std::int16_t* here) {
        const __m256i l = LoadLanes(line), m = LoadLanes(line + step), r = LoadLanes(line + 2 * step);
        const __m256i complete = _mm256_add_epi16(LoadLanes(above), weights.ToAbove(l, m, r));
        StoreLanes(above, _mm256_add_epi16(LoadLanes(here), weights.Here(l, m, r)));
        StoreLanes(here, weights.ToBelow(l, m, r));
        return hasFourths ? _mm256_blend_epi16(complete, _mm256_srli_epi16(r, 7), 0x88) : complete;
    }

    PlaneView<Sample> m_plane;
    unsigned m_bytes, m_lanes;
    std::vector<LaneLine> m_sums;      // of the row above the one in work, then of that row
    std::vector<std::int16_t> m_line;  // each byte times 128
};

}  // namespace

void ReliefRgba32EffectAvx2(PackedView picture, const ReliefKernel& kernel) {
    if (picture.width > 0 && picture.height > 0) Relief(picture).Run(kernel);
}
void ReliefComponentEffectAvx2(ComponentView plane, const ReliefKernel& kernel) {
    if (plane.width > 0 && plane.height > 0) Relief(plane).Run(kernel);
}

}  // namespace AVBased

NIFIKRAL_END_AVX2
