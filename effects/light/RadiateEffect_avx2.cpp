#include "effects/light/RadiateEffect_avx2.h"

#include <utility>

#include "effects/base/vector_rows_avx2.h"

namespace AVBased {
namespace {

// Neighbouring pixels that one load and one permutation serve: towards a centre, samples draw together, so those of a
// group lie no further apart than its pixels do.
template <unsigned pixels, class Index>
struct Group {
    static constexpr unsigned size = pixels;
    // Which loaded pixel each pixel takes; no vector of them straddles a cache line.
    alignas(pixels * sizeof(Index)) Index index[radiateSamples][pixels];
    unsigned base[radiateSamples];  // where the load starts
    unsigned start;                 // the group's first pixel
};
using PackedGroup = Group<8, std::uint32_t>;
using ComponentGroup = Group<16, std::uint8_t>;

// The groups of a row, the last one moved back to end with it. None where samples lie too far apart: away from a centre
// or in rows narrower than a group.
template <class Group>
std::vector<Group> GroupColumns(const RadiateAxis& columns) {
    if (columns.size() < Group::size) return {};
    std::vector<Group> groups;
    for (unsigned x = 0; x < columns.size(); x += Group::size) {
        Group& group = groups.emplace_back();
        group.start = std::min(x, columns.size() - Group::size);
        for (unsigned k = 0; k < radiateSamples; ++k) {
            unsigned lowest = columns.size() - Group::size, highest = 0;
            for (unsigned i = 0; i < Group::size; ++i) {
                lowest = std::min(lowest, columns[group.start + i][k]);
                highest = std::max(highest, columns[group.start + i][k]);
            }
            if (highest - lowest >= Group::size) return {};
            group.base[k] = lowest;
            for (unsigned i = 0; i < Group::size; ++i) group.index[k][i] = columns[group.start + i][k] - lowest;
        }
    }
    return groups;
}

}  // namespace
}  // namespace AVBased

NIFIKRAL_BEGIN_AVX2

namespace AVBased {
namespace {

// What a group is made of in as many rows at a time as share the loads of its indices: their own rows, the rows that
// their samples lie in, and where they go to.
constexpr unsigned rowsAtOnce = 4;
template <class Sample>
struct SampleRows {
    const Sample *own[rowsAtOnce], *at[radiateSamples][rowsAtOnce];
    Sample* to[rowsAtOnce];

    SampleRows(const RadiateAxis& rows, unsigned first, const PlaneView<Sample>& target,
               const PlaneView<Sample>& from) {
        for (unsigned i = 0; i < rowsAtOnce; ++i) {
            const unsigned y = std::min(first + i, rows.size() - 1);
            own[i] = from.Row(y);
            to[i] = target.Row(y);
            for (unsigned k = 0; k < radiateSamples; ++k) at[k][i] = from.Row(rows[y][k]);
        }
    }
};

// Sums of bytes in 16-bit lanes without unpacking them: `both` gathers low + 256 x high bytes, `high` the high bytes
// alone.
struct ByteSums {
    __m256i both, high;

    explicit ByteSums(__m256i bytes) : both(bytes), high(_mm256_srli_epi16(bytes, 8)) {}
    void Add(__m256i bytes) {
        both = _mm256_add_epi16(both, bytes);
        high = _mm256_add_epi16(high, _mm256_srli_epi16(bytes, 8));
    }
    __m256i Means(__m256i bias) const {
        const __m256i low = _mm256_sub_epi16(both, _mm256_slli_epi16(high, 8));
        return _mm256_or_si256(Mean(low, bias), _mm256_slli_epi16(Mean(high, bias), 8));
    }

 private:
    // A mean below 0 is a large unsigned number, which becomes white as well.
    static __m256i Mean(__m256i sum, __m256i bias) {
        return _mm256_min_epu16(_mm256_add_epi16(_mm256_srli_epi16(sum, 4), bias), _mm256_set1_epi16(255));
    }
};

// The loops over the samples stay loops: unrolled in full, GCC would add the samples up as a tree and spill them all.

template <std::size_t... i>
void RadiateGroup(const PackedGroup& group, __m256i bias, const SampleRows<Rgba32>& rows, std::index_sequence<i...>) {
    const __m256i own[] = {LoadVector(rows.own[i] + group.start)...};
    ByteSums sums[] = {ByteSums(own[i])...};
#pragma GCC unroll 2
    for (unsigned k = 0; k < radiateSamples; ++k) {
        const __m256i index = LoadVector(group.index[k]);
        (sums[i].Add(_mm256_permutevar8x32_epi32(LoadVector(rows.at[k][i] + group.base[k]), index)), ...);
    }
    (StoreVector(rows.to[i] + group.start, OnColours(own[i], sums[i].Means(bias))), ...);
}

template <std::size_t... i>
void RadiateGroup(const ComponentGroup& group, __m256i bias, const SampleRows<std::uint8_t>& rows,
                  std::index_sequence<i...>) {
    // Of the rows i, each with the one that follows.
    ByteSums sums[] = {ByteSums(LoadHalves(rows.own[2 * i] + group.start, rows.own[2 * i + 1] + group.start))...};
#pragma GCC unroll 2
    for (unsigned k = 0; k < radiateSamples; ++k) {
        const __m256i index = LoadHalves(group.index[k], group.index[k]);
        const std::uint8_t* const* const at = rows.at[k];
        const unsigned base = group.base[k];
        (sums[i].Add(_mm256_shuffle_epi8(LoadHalves(at[2 * i] + base, at[2 * i + 1] + base), index)), ...);
    }
    (_mm256_storeu2_m128i(reinterpret_cast<__m128i*>(rows.to[2 * i + 1] + group.start),
                          reinterpret_cast<__m128i*>(rows.to[2 * i] + group.start), sums[i].Means(bias)),
     ...);
}

// Packed rows take a vector each, others half of one.
template <class Sample>
constexpr std::size_t vectorsOf = rowsAtOnce / (sizeof(Sample) == 1 ? 2 : 1);

// Strips of groups keep their tables in a near cache. The processor fetches memory ahead along rows, so strips are
// wide.
template <class Group, class Sample>
void RadiateGroups(const std::vector<Group>& groups, const RadiateAxis& rows, std::uint32_t bias,
                   const PlaneView<Sample>& to, const PlaneView<Sample>& from) {
    constexpr std::size_t stripGroups = 128;
    // Beyond these limits every mean is 255 all the same.
    const __m256i lanes = _mm256_set1_epi16(std::int16_t(std::clamp(std::int32_t(bias), -512, 512)));
    for (std::size_t begin = 0; begin < groups.size(); begin += stripGroups) {
        const std::size_t end = std::min(begin + stripGroups, groups.size());
        for (unsigned y = 0; y < rows.size(); y += rowsAtOnce) {
            const SampleRows<Sample> some(rows, y, to, from);
            for (std::size_t i = begin; i < end; ++i)
                RadiateGroup(groups[i], lanes, some, std::make_index_sequence<vectorsOf<Sample>>());
        }
    }
}

}  // namespace

void RadiateRgba32EffectAvx2(const RadiateAxis& columns, const RadiateAxis& rows, std::uint32_t bias,
                             const PackedView& to, const PackedView& from) {
    const auto groups = GroupColumns<PackedGroup>(columns);
    if (groups.empty()) return RadiateRgba32Effect(columns, rows, bias, to, from);
    RadiateGroups(groups, rows, bias, to, from);
}

void RadiateComponentEffectAvx2(const RadiateAxis& columns, const RadiateAxis& rows, std::uint32_t bias,
                                const ComponentView& to, const ComponentView& from) {
    const auto groups = GroupColumns<ComponentGroup>(columns);
    if (groups.empty()) return RadiateComponentEffect(columns, rows, bias, to, from);
    RadiateGroups(groups, rows, bias, to, from);
}

}  // namespace AVBased

NIFIKRAL_END_AVX2
