#include "dvd_effects/canvas/projected_sampler.h"

#include <cmath>
#include <limits>

#include "dvd_effects/canvas/sampler_vectors.h"

namespace AVBased::Blending {

namespace {

constexpr int positionBits = 15, distanceBits = 16, fractionBits = 7, weightBits = 2 * fractionBits;
constexpr std::int32_t whole = 1 << fractionBits;
constexpr std::int32_t fullyShown = 256;
// A little farther than an edge reaches: there all shows.
constexpr double farInside = 0.5 + 1.0 / 64;

// Along a row or column of a layer: the first of the two neighbours, and how much of the second shows. Outside the
// layer its outermost pixels go on. The last pixel is all of a second neighbour, so that pairs never reach beyond it.
struct Axis {
    std::int32_t last, lastPair;

    explicit Axis(unsigned size)
        : last(std::int32_t(std::min(size - 1, 32767u)) << positionBits),
          lastPair(std::int32_t(std::max(size, 2u) - 2)) {}
    std::int32_t Limit(std::int32_t position) const { return std::clamp(position, 0, last); }
    std::int32_t First(std::int32_t limited) const { return std::min(limited >> positionBits, lastPair); }
    std::int32_t Second(std::int32_t limited) const {
        constexpr int drop = positionBits - fractionBits;
        return (limited - (First(limited) << positionBits) + (1 << (drop - 1))) >> drop;
    }
};

// Lets entry i show as shown(i) says, out of 256.
template <class Shown>
void Weaken(TileRow& row, unsigned at, unsigned count, Shown shown) {
    std::uint16_t *const firsts = row.colour[0] + at, *const seconds = row.colour[1] + at,
                         *const thirds = row.colour[2] + at, *const coverages = row.coverage + at;
#pragma GCC unroll 1
    for (unsigned i = 0; i < count; ++i) {
        const std::uint32_t by = shown(i), covered = (coverages[i] * by + 128) >> 8;
        // Rounded by itself, a colour might come out brighter than its coverage allows.
        const auto part = [&](std::uint32_t colour) {
            return std::uint16_t(std::min((colour * by + 128) >> 8, covered * 255));
        };
        coverages[i] = std::uint16_t(covered);
        firsts[i] = part(firsts[i]);
        seconds[i] = part(seconds[i]);
        thirds[i] = part(thirds[i]);
    }
}

std::uint32_t Rounded(std::uint32_t sum) { return (sum + (1u << (weightBits - 1))) >> weightBits; }

void ResamplePlain(const PackedView& layer, Positions& positions, unsigned count, TileRow& row, unsigned at) {
    const Axis columns(layer.width), lines(layer.height);
    const unsigned right = layer.width > 1 ? 1 : 0, below = layer.height > 1 ? 1 : 0;
    std::uint32_t corner[4][tileColumns];
    for (unsigned i = 0; i < count; ++i) {
        positions.column[i] = columns.Limit(positions.column[i]);
        positions.line[i] = lines.Limit(positions.line[i]);
        const Rgba32* const upper = layer.Row(std::size_t(lines.First(positions.line[i])));
        const Rgba32* const lower = layer.Row(std::size_t(lines.First(positions.line[i])) + below);
        const std::int32_t left = columns.First(positions.column[i]);
        corner[0][i] = LoadWord(upper + left);
        corner[1][i] = LoadWord(upper + left + right);
        corner[2][i] = LoadWord(lower + left);
        corner[3][i] = LoadWord(lower + left + right);
    }
    std::uint16_t *const firsts = row.colour[0] + at, *const seconds = row.colour[1] + at,
                         *const thirds = row.colour[2] + at, *const coverages = row.coverage + at;
#pragma GCC unroll 1
    for (unsigned i = 0; i < count; ++i) {
        const std::uint32_t across = std::uint32_t(columns.Second(positions.column[i]));
        const std::uint32_t down = std::uint32_t(lines.Second(positions.line[i]));
        const std::uint32_t weights[4] = {(whole - across) * (whole - down), across * (whole - down),
                                          (whole - across) * down, across * down};
        std::uint32_t covered = 0, sums[3] = {};
        for (int k = 0; k < 4; ++k) {
            const std::uint32_t pixel = corner[k][i], weight = weights[k] * (pixel >> 24);
            covered += weight;
            sums[0] += weight * Blue(pixel);
            sums[1] += weight * Green(pixel);
            sums[2] += weight * Red(pixel);
        }
        covered = Rounded(covered);
        const auto part = [&](std::uint32_t sum) { return std::uint16_t(std::min(Rounded(sum), covered * 255)); };
        coverages[i] = std::uint16_t(covered);
        firsts[i] = part(sums[0]);
        seconds[i] = part(sums[1]);
        thirds[i] = part(sums[2]);
    }
}

#if defined(__x86_64__)

// Eight pixels at a time, whose neighbours are fetched one by one; in vectors of 32 bits the lower half holds the
// pixels 0 to 3, and where a vector holds the parts of two pixels, these are i and i + 4.
class VectorResampler {
 public:
    [[NIFIKRAL_AVX2]] explicit VectorResampler(const PackedView& layer)
        : m_data(layer.data), m_pitch(layer.pitch), m_columns(layer.width), m_lines(layer.height) {}

    [[NIFIKRAL_AVX2]] void operator()(const Positions& positions, unsigned i, TileRow& row, unsigned at) const {
        const __m256i columns = Limited(positions.column + i, m_columns), lines = Limited(positions.line + i, m_lines);
        const __m256i left = First(columns, m_columns), top = First(lines, m_lines);
        alignas(32) std::int32_t offsets[8];
        _mm256_store_si256(reinterpret_cast<__m256i*>(offsets),
                           _mm256_add_epi32(_mm256_mullo_epi32(top, _mm256_set1_epi32(std::int32_t(m_pitch))),
                                            _mm256_slli_epi32(left, 2)));
        const __m256i across = Second(columns, left), down = Second(lines, top);
        const __m256i neighbours[4] = {Neighbours<0>(offsets), Neighbours<1>(offsets), Neighbours<2>(offsets),
                                       Neighbours<3>(offsets)};
        const __m256i all = _mm256_and_si256(_mm256_and_si256(neighbours[0], neighbours[1]),
                                             _mm256_and_si256(neighbours[2], neighbours[3]));
        __m256i mixed[4];
        if (_mm256_testc_si256(all, _mm256_set1_epi32(std::int32_t(alphaMask))))
            MixOpaque(neighbours, across, down, mixed);
        else
            Mix(neighbours, across, down, mixed);
        Store(mixed, row, at + i);
    }

 private:
    [[NIFIKRAL_AVX2]] static __m256i Limited(const std::int32_t* positions, const Axis& axis) {
        const __m256i place = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(positions));
        return _mm256_max_epi32(_mm256_min_epi32(place, _mm256_set1_epi32(axis.last)), _mm256_setzero_si256());
    }
    [[NIFIKRAL_AVX2]] static __m256i First(__m256i limited, const Axis& axis) {
        return _mm256_min_epi32(_mm256_srai_epi32(limited, positionBits), _mm256_set1_epi32(axis.lastPair));
    }
    [[NIFIKRAL_AVX2]] static __m256i Second(__m256i limited, __m256i first) {
        constexpr int drop = positionBits - fractionBits;
        const __m256i beyond = _mm256_sub_epi32(limited, _mm256_slli_epi32(first, positionBits));
        return _mm256_srai_epi32(_mm256_add_epi32(beyond, _mm256_set1_epi32(1 << (drop - 1))), drop);
    }

    // The four neighbours of a pixel: two of the upper row, two of the lower one.
    [[NIFIKRAL_AVX2]] __m128i NeighboursAt(std::int32_t offset) const {
        const unsigned char* const from = m_data + offset;
        const __m128i upper = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(from));
        return _mm_castps_si128(_mm_loadh_pi(_mm_castsi128_ps(upper), reinterpret_cast<const __m64*>(from + m_pitch)));
    }
    template <int index>
    [[NIFIKRAL_AVX2]] __m256i Neighbours(const std::int32_t* offsets) const {
        return _mm256_inserti128_si256(_mm256_castsi128_si256(NeighboursAt(offsets[index])),
                                       NeighboursAt(offsets[index + 4]), 1);
    }
    [[NIFIKRAL_AVX2]] static __m256i InBothHalves(__m128i bytes) { return _mm256_broadcastsi128_si256(bytes); }
    [[NIFIKRAL_AVX2]] static __m256i Whole() { return _mm256_set1_epi32(whole); }

    // Each `mixed` gets blue, green, red and coverage of two pixels, colours times 255. Factors of a byte must be
    // signed, so that samples count 128 less at first.
    [[NIFIKRAL_AVX2]] static void MixOpaque(const __m256i (&neighbours)[4], __m256i across, __m256i down,
                                            __m256i (&mixed)[4]) {
        const __m256i beside = _mm256_or_si256(_mm256_sub_epi32(Whole(), across), _mm256_slli_epi32(across, 8));
        const __m256i besides = _mm256_or_si256(beside, _mm256_slli_epi32(beside, 16));
        const __m256i below = _mm256_or_si256(_mm256_sub_epi32(Whole(), down), _mm256_slli_epi32(down, 16));
        MixOpaquePair<0>(neighbours, besides, below, mixed);
        MixOpaquePair<1>(neighbours, besides, below, mixed);
        MixOpaquePair<2>(neighbours, besides, below, mixed);
        MixOpaquePair<3>(neighbours, besides, below, mixed);
    }
    template <int index>
    [[NIFIKRAL_AVX2]] static void MixOpaquePair(const __m256i (&neighbours)[4], __m256i beside, __m256i below,
                                                __m256i (&mixed)[4]) {
        constexpr int lanes = index * 0x55;
        const __m256i samples = _mm256_xor_si256(
            _mm256_shuffle_epi8(neighbours[index],
                                InBothHalves(_mm_setr_epi8(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15))),
            _mm256_set1_epi8(-128));
        const __m256i rows = _mm256_maddubs_epi16(_mm256_shuffle_epi32(beside, lanes), samples);
        const __m256i sum = _mm256_add_epi32(_mm256_madd_epi16(rows, _mm256_shuffle_epi32(below, lanes)),
                                             _mm256_set1_epi32(128 << weightBits));
        // Colours times 255, the coverage once.
        const __m256i times = _mm256_sub_epi32(_mm256_sllv_epi32(sum, InBothHalves(_mm_setr_epi32(8, 8, 8, 0))),
                                               _mm256_and_si256(sum, InBothHalves(_mm_setr_epi32(-1, -1, -1, 0))));
        mixed[index] = Rounded(times, 0);
    }

    [[NIFIKRAL_AVX2]] static void Mix(const __m256i (&neighbours)[4], __m256i across, __m256i down,
                                      __m256i (&mixed)[4]) {
        // Left and right weight as the two halves of 32 bits.
        const __m256i pair = _mm256_or_si256(_mm256_sub_epi32(Whole(), across), _mm256_slli_epi32(across, 16));
        const __m256i up = _mm256_sub_epi32(Whole(), down);
        const __m256i upper = _mm256_mullo_epi16(pair, _mm256_or_si256(up, _mm256_slli_epi32(up, 16)));
        const __m256i lower = _mm256_mullo_epi16(pair, _mm256_or_si256(down, _mm256_slli_epi32(down, 16)));
        MixPair<0>(neighbours, upper, lower, mixed);
        MixPair<1>(neighbours, upper, lower, mixed);
        MixPair<2>(neighbours, upper, lower, mixed);
        MixPair<3>(neighbours, upper, lower, mixed);
    }
    template <int index>
    [[NIFIKRAL_AVX2]] static void MixPair(const __m256i (&neighbours)[4], __m256i upper, __m256i lower,
                                          __m256i (&mixed)[4]) {
        constexpr int lanes = index * 0x55;
        const __m256i sum = _mm256_add_epi32(MixRow<0>(neighbours[index], _mm256_shuffle_epi32(upper, lanes)),
                                             MixRow<8>(neighbours[index], _mm256_shuffle_epi32(lower, lanes)));
        mixed[index] = Rounded(sum, 1 << (weightBits + 15));
    }
    // The weighed sums of a row's two neighbours, of whose bytes `l` is the left one's first. Colours count as often
    // as their pixel covers; factors must be signed, so that products count 2^15 less at first.
    template <char l>
    [[NIFIKRAL_AVX2]] static __m256i MixRow(__m256i neighbours, __m256i weights) {
        constexpr char r = l + 4, none = -128;
        const __m128i eachSample = _mm_setr_epi8(l, none, r, none, l + 1, none, r + 1, none, l + 2, none, r + 2, none,
                                                 l + 3, none, r + 3, none);
        const __m128i coverages = _mm_setr_epi8(l + 3, none, r + 3, none, l + 3, none, r + 3, none, l + 3, none, r + 3,
                                                none, none, none, none, none);
        const __m256i samples = _mm256_shuffle_epi8(neighbours, InBothHalves(eachSample));
        const __m256i factors = _mm256_or_si256(_mm256_shuffle_epi8(neighbours, InBothHalves(coverages)),
                                                InBothHalves(_mm_setr_epi32(0, 0, 0, 0x10001)));
        const __m256i products = _mm256_mullo_epi16(samples, factors);
        return _mm256_madd_epi16(_mm256_xor_si256(products, _mm256_set1_epi16(-32768)), weights);
    }

    [[NIFIKRAL_AVX2]] static __m256i Rounded(__m256i sums, std::int32_t lessened) {
        return _mm256_srli_epi32(_mm256_add_epi32(sums, _mm256_set1_epi32(lessened + (1 << (weightBits - 1)))),
                                 weightBits);
    }

    [[NIFIKRAL_AVX2]] static void Store(const __m256i (&mixed)[4], TileRow& row, unsigned at) {
        StorePixels(mixed, row, at);
        const __m128i coverage = Entries(row.coverage + at), most = _mm_mullo_epi16(coverage, _mm_set1_epi16(255));
        for (auto& colour : row.colour)
            _mm_storeu_si128(reinterpret_cast<__m128i*>(colour + at), _mm_min_epu16(Entries(colour + at), most));
    }
    [[NIFIKRAL_AVX2]] static __m128i Entries(const std::uint16_t* from) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
    }

    const unsigned char* m_data;
    std::size_t m_pitch;
    Axis m_columns, m_lines;
};

[[NIFIKRAL_AVX2]] void ResampleVectors(const PackedView& layer, Positions& positions, unsigned count, TileRow& row,
                                       unsigned at) {
    const VectorResampler resample(layer);
    for (unsigned i = 0; i < count; i += tileSlack) resample(positions, i, row, at);
}

// Vectors fetch neighbours in pairs, at offsets of 32 bits.
bool SuitsVectors(const PackedView& layer) {
    return layer.width > 1 && layer.height > 1 && layer.ByteCount() <= std::numeric_limits<std::int32_t>::max();
}

#endif

}  // namespace

ProjectedSampler::ProjectedSampler(PackedView layer, const Projection& projection, std::uint32_t opacity,
                                   InstructionSet set)
    : m_layer(layer),
      m_projection(projection),
      m_opacity(opacity + (opacity >> 7)),
      m_set(set),
      m_resample(ResamplePlain) {
#if defined(__x86_64__)
    if (set == InstructionSet::Avx2 && SuitsVectors(layer)) m_resample = ResampleVectors;
#endif
}

ProjectedSampler::operator SamplerRef() const { return SamplerRef(*this, m_set); }

Span ProjectedSampler::Reach(unsigned y, Span within) const {
    for (const EdgeDistance& edge : m_projection.edges)
        within = WhereNotNegative(edge.At(within.begin + 0.5, y + 0.5) + 0.5, edge.a, within);
    return within;
}

void ProjectedSampler::Locate(unsigned x, unsigned y, unsigned count, Positions& to) const {
    constexpr double unit = 1 << positionBits;
    const double middle = y + 0.5;
    if (m_projection.IsAffine()) {
        const Spot first = m_projection.At(0.5, middle), second = m_projection.At(1.5, middle);
        FillRamp((first.x - 0.5) * unit, (second.x - first.x) * unit, x, count, to.column);
        FillRamp((first.y - 0.5) * unit, (second.y - first.y) * unit, x, count, to.line);
        return;
    }
    const auto fixed = [](double place) {
        // In this order, what is not a number becomes a limit too.
        return std::int32_t(std::min(0x1p30, std::max(-0x1p30, (place - 0.5) * unit)));
    };
    for (unsigned i = 0; i < WholeVectors(count); ++i) {
        const Spot at = m_projection.At(x + 0.5 + int(i), middle);
        to.column[i] = fixed(at.x);
        to.line[i] = fixed(at.y);
    }
}

void ProjectedSampler::SmoothEdges(unsigned x, unsigned y, unsigned count, TileRow& row, unsigned at) const {
    if (!count) return;
    constexpr double unit = 1 << distanceBits;
    std::uint32_t shown[tileColumns + tileSlack];
    std::int32_t distances[tileColumns + tileSlack];
    std::fill_n(shown, count, m_opacity);
    for (const EdgeDistance& edge : m_projection.edges) {
        if (std::min(edge.At(x + 0.5, y + 0.5), edge.At(x + count - 0.5, y + 0.5)) > farInside) continue;
        FillRamp((edge.At(0.5, y + 0.5) + 0.5) * unit, edge.a * unit, x, count, distances);
#pragma GCC unroll 1
        for (unsigned i = 0; i < count; ++i)
            shown[i] = shown[i] * std::uint32_t(std::clamp(distances[i] >> (distanceBits - 8), 0, fullyShown)) >> 8;
    }
    Weaken(row, at, count, [&](unsigned i) { return shown[i]; });
}

void ProjectedSampler::Fill(unsigned x, unsigned y, unsigned count, TileRow& row, unsigned at) const {
    Positions positions;
    Locate(x, y, count, positions);
    m_resample(m_layer, positions, count, row, at);
    Span inner{0, count};
    for (const EdgeDistance& edge : m_projection.edges)
        inner = WhereNotNegative(edge.At(x + inner.begin + 0.5, y + 0.5) - farInside, edge.a, inner);
    if (inner.IsEmpty()) return SmoothEdges(x, y, count, row, at);
    const unsigned before = std::min(WholeVectors(inner.begin), inner.end);
    SmoothEdges(x, y, before, row, at);
    SmoothEdges(x + inner.end, y, WholeVectors(count - inner.end), row, at + inner.end);
    if (m_opacity != fullyShown) Weaken(row, at + before, inner.end - before, [this](unsigned) { return m_opacity; });
}

}  // namespace AVBased::Blending
