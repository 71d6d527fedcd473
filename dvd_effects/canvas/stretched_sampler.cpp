#include "dvd_effects/canvas/stretched_sampler.h"

#include <cmath>

#include "dvd_effects/canvas/sampler_vectors.h"

namespace AVBased::Blending {

namespace {

using Sums = StretchedSampler::Sums;

constexpr int positionBits = 15, fractionBits = 7;
constexpr std::uint32_t whole = 1 << fractionBits, rounding = whole / 2;
constexpr std::uint32_t fullyShown = 256;

// How much of the pixel at `place` lies between two edges.
double Overlap(unsigned place, double least, double most) {
    return std::clamp(place + 1 - least, 0.0, 1.0) * std::clamp(most - place, 0.0, 1.0);
}

// `down` of 128 of the way from one row to another.
void MixPixels(const Rgba32* upper, const Rgba32* lower, unsigned count, std::uint32_t down, Sums* to) {
    std::uint32_t alphas = alphaMask;
    for (unsigned i = 0; i < count; ++i) alphas &= LoadWord(upper + i) & LoadWord(lower + i);
    if (alphas == alphaMask) {
        const auto *const above = &upper->blue, *const below = &lower->blue;
        std::uint16_t* const sums = to->part;
#pragma GCC unroll 1
        for (unsigned i = 0; i < count * 4; ++i) sums[i] = std::uint16_t(above[i] * (whole - down) + below[i] * down);
        return;
    }
    for (unsigned i = 0; i < count; ++i) {
        const std::uint32_t a = LoadWord(upper + i), b = LoadWord(lower + i);
        const auto mix = [&](std::uint32_t above, std::uint32_t below) {
            // 256 / 255 of each, so that opaque pixels come out as above.
            const std::uint32_t wideAbove = above + Over255(above), wideBelow = below + Over255(below);
            return std::uint16_t((wideAbove * (whole - down) + wideBelow * down + 128) >> 8);
        };
        to[i] = {{mix(Blue(a) * (a >> 24), Blue(b) * (b >> 24)), mix(Green(a) * (a >> 24), Green(b) * (b >> 24)),
                  mix(Red(a) * (a >> 24), Red(b) * (b >> 24)),
                  std::uint16_t((a >> 24) * (whole - down) + (b >> 24) * down)}};
    }
}

std::uint16_t MixedSums(const Sums* from, unsigned k, std::uint32_t across) {
    return std::uint16_t((from[0].part[k] * (whole - across) + from[1].part[k] * across + rounding) >> fractionBits);
}

void MixNeighboursPlain(const Sums* mixed, const std::int32_t* places, unsigned count, TileRow& row, unsigned at) {
    for (unsigned i = 0; i < count; ++i) {
        const auto place = std::uint32_t(places[i]);
        const std::uint32_t across = place >> (positionBits - fractionBits) & (whole - 1);
        const Sums* const from = mixed + (place >> positionBits);
        for (unsigned k = 0; k < 3; ++k) row.colour[k][at + i] = MixedSums(from, k, across);
        row.coverage[at + i] = MixedSums(from, 3, across);
    }
}

#if defined(__x86_64__)

class VectorMixer {
 public:
    [[NIFIKRAL_AVX2]] explicit VectorMixer(const Sums* mixed) : m_mixed(mixed) {}

    [[NIFIKRAL_AVX2]] void operator()(__m256i places, TileRow& row, unsigned at) const {
        alignas(32) std::uint32_t firsts[8];
        _mm256_store_si256(reinterpret_cast<__m256i*>(firsts), _mm256_srli_epi32(places, positionBits));
        const __m256i across = _mm256_and_si256(_mm256_srli_epi32(places, positionBits - fractionBits),
                                                _mm256_set1_epi32(std::int32_t(whole - 1)));
        // Left and right weight as the two halves of 32 bits.
        const __m256i weights = _mm256_or_si256(_mm256_sub_epi32(_mm256_set1_epi32(std::int32_t(whole)), across),
                                                _mm256_slli_epi32(across, 16));
        const __m256i mixed[4] = {MixPair<0>(firsts, weights), MixPair<1>(firsts, weights), MixPair<2>(firsts, weights),
                                  MixPair<3>(firsts, weights)};
        StorePixels(mixed, row, at);
    }

 private:
    // The pixels `index` and `index` + 4.
    template <int index>
    [[NIFIKRAL_AVX2]] __m256i MixPair(const std::uint32_t* firsts, __m256i weights) const {
        const __m256i sums = _mm256_inserti128_si256(_mm256_castsi128_si256(Neighbours(firsts[index])),
                                                     Neighbours(firsts[index + 4]), 1);
        const __m256i pairs = _mm256_shuffle_epi8(
            sums, _mm256_broadcastsi128_si256(_mm_setr_epi8(0, 1, 8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15)));
        const __m256i sum = _mm256_madd_epi16(pairs, _mm256_shuffle_epi32(weights, index * 0x55));
        return _mm256_srli_epi32(_mm256_add_epi32(sum, _mm256_set1_epi32(std::int32_t(rounding))), fractionBits);
    }
    [[NIFIKRAL_AVX2]] __m128i Neighbours(std::uint32_t first) const {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(m_mixed + first));
    }

    const Sums* m_mixed;
};

[[NIFIKRAL_AVX2]] void MixNeighboursVectors(const Sums* mixed, const std::int32_t* places, unsigned count, TileRow& row,
                                            unsigned at) {
    const VectorMixer mix(mixed);
    for (unsigned i = 0; i < count; i += tileSlack)
        mix(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(places + i)), row, at + i);
}

#endif

// Turns sums into what a row takes, `shown` of 256 of it.
void Finish(TileRow& row, unsigned at, unsigned count, std::uint32_t shown) {
    if (shown < fullyShown)
        row.ForEachPart([&](std::uint16_t* part) {
#pragma GCC unroll 1
            for (unsigned i = at; i < at + count; ++i) part[i] = std::uint16_t(part[i] * (shown << 8) >> 16);
        });
    std::uint16_t* const coverages = row.coverage + at;
#pragma GCC unroll 1
    for (unsigned i = 0; i < count; ++i) coverages[i] = std::uint16_t((coverages[i] + rounding) >> fractionBits);
    for (auto& colour : row.colour) {
        std::uint16_t* const sums = colour + at;
#pragma GCC unroll 1
        for (unsigned i = 0; i < count; ++i) {
            // 255 / 128 of the sum, to the nearest.
            const auto times = std::uint16_t(2 * sums[i] - ((sums[i] + rounding) >> fractionBits));
            // Rounded by itself, a colour might come out brighter than its coverage allows.
            sums[i] = std::min(times, std::uint16_t(coverages[i] * 255));
        }
    }
}

}  // namespace

std::optional<StretchedSampler> StretchedSampler::Make(PackedView layer, const Placement& at, std::uint32_t opacity,
                                                       InstructionSet set) {
    const Spot &least = at.topLeft, &most = at.bottomRight;
    if (at.topRight.y != least.y || at.bottomLeft.x != least.x || at.topRight.x != most.x ||
        at.bottomLeft.y != most.y || !(least.x < most.x) || !(least.y < most.y))
        return std::nullopt;
    StretchedSampler sampler;
    sampler.m_layer = layer;
    sampler.m_least = least;
    sampler.m_most = most;
    sampler.m_columnStep = layer.width / (most.x - least.x);
    sampler.m_lineStep = layer.height / (most.y - least.y);
    sampler.m_opacity = opacity + (opacity >> 7);
    sampler.m_set = set;
    sampler.m_mixNeighbours = MixNeighboursPlain;
#if defined(__x86_64__)
    if (set == InstructionSet::Avx2) sampler.m_mixNeighbours = MixNeighboursVectors;
#endif
    if (sampler.m_columnStep > mostColumns || layer.width > mostWidth) return std::nullopt;
    return sampler;
}

StretchedSampler::operator SamplerRef() const { return SamplerRef(*this, m_set); }

Span StretchedSampler::Reach(unsigned, Span within) const {
    const auto column = [&](double place) { return unsigned(std::clamp<double>(place, within.begin, within.end)); };
    return within.IsEmpty() ? within : Span{column(std::floor(m_least.x)), column(std::ceil(m_most.x))};
}

void StretchedSampler::Fill(unsigned x, unsigned y, unsigned count, TileRow& row, unsigned at) const {
    const bool isPlain = m_layer.width == 1 && m_layer.height == 1;
    const unsigned own = isPlain ? 1 : count;
    Mix(x, y, own, row, at);
    Finish(row, at, own, std::uint32_t(m_opacity * Overlap(y, m_least.y, m_most.y)));
    if (isPlain) row.Extend(at + 1, at + count);
    SmoothEnd(x, 0, row, at);
    if (count > 1) SmoothEnd(x, count - 1, row, at);
}

void StretchedSampler::Mix(unsigned x, unsigned y, unsigned count, TileRow& row, unsigned at) const {
    constexpr int unit = 1 << positionBits;
    // The rectangle's first pixel may lie so far before the layer.
    constexpr int before = 2;
    const double scale = m_columnStep * unit, atZero = (0.5 - m_least.x) * scale + (before - 0.5) * unit;
    std::int32_t places[tileColumns + 2 * tileSlack] = {};
    FillRamp(atZero, scale, x, count, places);
    const std::int32_t first = places[0] >> positionBits, last = places[count - 1] >> positionBits;
#pragma GCC unroll 1
    for (unsigned i = 0; i < count; ++i) places[i] -= first << positionBits;
    std::fill_n(places + count, tileSlack, 0);
    Sums mixed[tileColumns * mostColumns + 4];
    MixRows(y, first - before, unsigned(last - first) + 2, mixed);
    m_mixNeighbours(mixed, places, count, row, at);
}

// The layer's columns from `first` on; outside the layer its outermost pixels go on.
void StretchedSampler::MixRows(unsigned y, std::int32_t first, unsigned count, Sums* to) const {
    const double line = (y + 0.5 - m_least.y) * m_lineStep - 0.5, upper = std::floor(line);
    const auto down = std::uint32_t((line - upper) * whole);
    const double lastLine = m_layer.height - 1.0;
    const Rgba32* const rows[2] = {m_layer.Row(std::size_t(std::clamp(upper, 0.0, lastLine))),
                                   m_layer.Row(std::size_t(std::clamp(upper + 1, 0.0, lastLine)))};
    const std::int32_t last = std::int32_t(m_layer.width) - 1;
    const std::int32_t begin = std::clamp(-first, 0, std::int32_t(count) - 1);
    const std::int32_t end = std::clamp(last + 1 - first, begin + 1, std::int32_t(count));
    const std::int32_t from = std::clamp(first + begin, 0, last);
    MixPixels(rows[0] + from, rows[1] + from, unsigned(end - begin), down, to + begin);
    std::fill(to, to + begin, to[begin]);
    std::fill(to + end, to + count, to[end - 1]);
}

// Thins out the entry `i` of a stretch from x on, if an end of the rectangle lies in its pixel.
void StretchedSampler::SmoothEnd(unsigned x, unsigned i, TileRow& row, unsigned at) const {
    const auto shown = std::uint32_t(fullyShown * Overlap(x + i, m_least.x, m_most.x));
    if (shown == fullyShown) return;
    row.ForEachPart([&](std::uint16_t* part) {
        std::uint16_t& entry = part[at + i];
        entry = std::uint16_t(entry * shown >> 8);
    });
    for (auto& colour : row.colour)
        colour[at + i] = std::min(colour[at + i], std::uint16_t(row.coverage[at + i] * 255));
}

}  // namespace AVBased::Blending
