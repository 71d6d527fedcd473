#include "effects/ReliefEffect.h"

#include <vector>

#include "effects/vector_rows.h"

#if defined(__x86_64__)

#pragma GCC push_options
#pragma GCC target("avx2,bmi,bmi2,lzcnt,popcnt")

namespace AVBased {
namespace {

__m256i LoadLanes(const std::int16_t* at) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(at)); }
void StoreLanes(std::int16_t* at, __m256i value) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(at), value); }
__m128i LoadHalf(const std::uint8_t* at) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at)); }
void StoreHalf(std::uint8_t* at, __m128i value) { _mm_storeu_si128(reinterpret_cast<__m128i*>(at), value); }

// 16 bytes, each times 128.
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

// The same walk and the same sums as the plain routine's, without the fourth bytes of pixels: the row in work is
// squeezed to its colours.
template <class Sample>
class Relief {
 public:
    explicit Relief(const PlaneView<Sample>& plane)
        : m_plane(plane),
          m_lanes((plane.width * colours + vectorBytes - 1) / vectorBytes * vectorBytes),
          m_sums(m_lanes / vectorBytes * 2),
          m_line(m_lanes + 2 * colours + vectorBytes) {}

    void Run(const ReliefKernel& kernel) {
        const Weights weights(kernel);
        for (unsigned y = 0; y < m_plane.height; ++y) {
            Squeeze(m_plane.Row(y));
            Row(weights, y > 0 ? m_plane.Row(y - 1) : nullptr, m_plane.Row(y));
        }
        // Below the last row all is black; the fourth bytes are its own.
        std::fill(m_line.begin(), m_line.end(), 0);
        Row(weights, m_plane.Row(m_plane.height - 1), m_plane.Row(m_plane.height - 1));
    }

 private:
    static constexpr unsigned colours = sizeof(Sample) == 4 ? 3 : 1, chunk = 12 * vectorBytes;

    // Fills m_line with the colours of a row, between zeros.
    void Squeeze(const std::uint8_t* row) {
        for (unsigned x = 0; x < m_plane.width; x += cacheLine) PrefetchToWrite(row + x, Ahead());
        std::copy_n(row, m_plane.width, m_line.data() + 1);
    }
    void Squeeze(const Rgba32* row) {
        unsigned x = 0;
        for (; x + 4 <= m_plane.width; x += 4) {
            if (x % 16 == 0) PrefetchToWrite(row + x, Ahead());
            SqueezeFour(row + x, x);
        }
        Rgba32 rest[4] = {};
        std::copy(row + x, row + m_plane.width, rest);
        SqueezeFour(rest, x);
    }
    void SqueezeFour(const Rgba32* from, unsigned x) {
        const __m128i order = _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
        const __m128i pixels = LoadHalf(reinterpret_cast<const std::uint8_t*>(from));
        StoreHalf(m_line.data() + 3 * x + 3, _mm_shuffle_epi8(pixels, order));
    }
    std::ptrdiff_t Ahead() const { return 2 * std::ptrdiff_t(m_plane.pitch); }

    // Adds m_line to the sums and writes the row that is complete by that, if there is one, and lies above `below`.
    void Row(const Weights& weights, Sample* finished, const Sample* below) {
        const unsigned bytes = m_plane.width * colours;
        for (unsigned begin = 0; begin < bytes; begin += chunk) {
            const unsigned count = std::min(bytes - begin, chunk), x = begin / colours;
            std::int16_t* const above = m_sums.data()->lanes + begin;
            if constexpr (colours == 1)
                if (finished && count % vectorBytes == 0) {
                    Add(weights, m_line.data() + begin, above, above + m_lanes, count, finished + begin);
                    continue;
                }
            std::uint8_t complete[chunk + 16];
            Add(weights, m_line.data() + begin, above, above + m_lanes, count, complete);
            if (finished) Write(finished + x, complete, count, below + x, m_plane.width - x);
        }
    }
    // Takes the weights by value, so that they stay in registers while lanes are stored.
    static void Add(Weights weights, const std::uint8_t* line, std::int16_t* above, std::int16_t* here, unsigned count,
                    std::uint8_t* complete) {
        for (unsigned i = 0; i < count; i += vectorBytes) {
            const __m256i first = AddHalf(weights, line + i, above + i, here + i),
                          second = AddHalf(weights, line + i + 16, above + i + 16, here + i + 16);
            StoreVector(complete + i, _mm256_permute4x64_epi64(_mm256_packus_epi16(first, second), 0xD8));
        }
    }
    static __m256i AddHalf(const Weights& weights, const std::uint8_t* line, std::int16_t* above, std::int16_t* here) {
        const __m256i l = Widen(line), m = Widen(line + colours), r = Widen(line + 2 * colours);
        const __m256i complete = _mm256_add_epi16(LoadLanes(above), weights.ToAbove(l, m, r));
        StoreLanes(above, _mm256_add_epi16(LoadLanes(here), weights.Here(l, m, r)));
        StoreLanes(here, weights.ToBelow(l, m, r));
        return complete;
    }

    static void Write(std::uint8_t* to, const std::uint8_t* complete, unsigned count, const std::uint8_t*, unsigned) {
        std::copy_n(complete, count, to);
    }
    // Spreads the colours out and takes the fourth bytes from the pixels to the right in the row below, of which there
    // are `left`.
    static void Write(Rgba32* to, const std::uint8_t* complete, unsigned count, const Rgba32* below, unsigned left) {
        const __m256i spread =
            _mm256_broadcastsi128_si256(_mm_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1));
        const unsigned pixels = count / 3;
        unsigned x = 0;
        for (; x + 8 < left && x + 8 <= pixels; x += 8) {
            // The second load reaches 4 bytes behind the last colours.
            const __m256i twelves = _mm256_inserti128_si256(_mm256_castsi128_si256(LoadHalf(complete + 3 * x)),
                                                            LoadHalf(complete + 3 * x + 12), 1);
            const __m256i fourths = LoadVector(reinterpret_cast<const std::uint8_t*>(below + x + 1));
            StoreVector(reinterpret_cast<std::uint8_t*>(to + x),
                        OnColours(fourths, _mm256_shuffle_epi8(twelves, spread)));
        }
        for (; x < pixels; ++x) {
            const std::uint8_t* const colour = complete + 3 * x;
            to[x] = {colour[0], colour[1], colour[2], below[std::min(x + 1, left - 1)].alpha};
        }
    }

    PlaneView<Sample> m_plane;
    unsigned m_lanes;
    std::vector<LaneLine> m_sums;  // of the row above the one in work, then of that row
    std::vector<std::uint8_t> m_line;
};

void ReliefRgba32Avx2(PackedView picture, const ReliefKernel& kernel) {
    if (picture.width > 0 && picture.height > 0) Relief(picture).Run(kernel);
}
void ReliefComponentAvx2(ComponentView plane, const ReliefKernel& kernel) {
    if (plane.width > 0 && plane.height > 0) Relief(plane).Run(kernel);
}

}  // namespace

constinit const Variants<decltype(ReliefRgba32Effect)> reliefRgba32Variants{ReliefRgba32Effect, ReliefRgba32Avx2};
constinit const Variants<decltype(ReliefComponentEffect)> reliefComponentVariants{ReliefComponentEffect,
                                                                                  ReliefComponentAvx2};

}  // namespace AVBased

#pragma GCC pop_options

#else

namespace AVBased {

constinit const Variants<decltype(ReliefRgba32Effect)> reliefRgba32Variants{ReliefRgba32Effect, ReliefRgba32Effect};
constinit const Variants<decltype(ReliefComponentEffect)> reliefComponentVariants{ReliefComponentEffect,
                                                                                  ReliefComponentEffect};

}  // namespace AVBased

#endif
