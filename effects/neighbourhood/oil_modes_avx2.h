#pragma once

#include "effects/neighbourhood/oil_strips_avx2.h"

/// What painting makes of vectors: the most frequent class around each pixel, and the mean colour of that class.
NIFIKRAL_BEGIN_AVX2

namespace AVBased {
namespace {

/// Two vectors of 16-bit words, each word the same column of two lines, for the class and for each channel.
struct PairColumn {
    Vector group[2], channel[3][2];
};

/// Counts and winning classes of one line, by column.
struct Modes {
    Vector *count, *group;
};

/// A column's count of class c when its brush moves one line down.
inline Vector MoveDown(Vector count, Vector added, Vector removed, Vector c) {
    count = _mm256_sub_epi8(count, _mm256_cmpeq_epi8(added, c));
    return _mm256_add_epi8(count, _mm256_cmpeq_epi8(removed, c));
}

/// Takes class c for the mode where its sum is higher than any before.
inline void Prefer(Vector sum, Vector c, Vector& most, Vector& mode) {
    const Vector higher = _mm256_max_epu8(most, sum);
    mode = _mm256_blendv_epi8(c, mode, _mm256_cmpeq_epi8(higher, most));
    most = higher;
}

/// Moves the counts of every column one line down and finds the mode of each brush: its lowest class of the highest
/// count. counts[column * classes + c] counts class c in a column of the brush; `sliding` has room for a brush's sums.
void FindModes(Vector* counts, Vector* sliding, const Vector* added, const Vector* removed, const Sizes& sizes,
               const Modes& modes) {
    const std::size_t classes = sizes.classes, reach = 2 * sizes.radius;
    const Vector one = _mm256_set1_epi8(1);
    for (std::size_t c = 0; c < classes; ++c) sliding[c] = _mm256_setzero_si256();
    for (std::size_t column = 0; column < reach; ++column) {
        Vector* const own = counts + column * classes;
        Vector group = _mm256_setzero_si256();
        for (std::size_t c = 0; c < classes; ++c, group = _mm256_add_epi8(group, one)) {
            own[c] = MoveDown(own[c], added[column], removed[column], group);
            sliding[c] = _mm256_add_epi8(sliding[c], own[c]);
        }
    }
    // Two columns at a time halve the traffic of the sliding sums.
    for (std::size_t column = reach; column < sizes.columns; column += 2) {
        Vector* const lead = counts + column * classes;
        const Vector* const trail = lead - reach * classes;
        const Vector added0 = added[column], added1 = added[column + 1];
        const Vector removed0 = removed[column], removed1 = removed[column + 1];
        Vector most0 = _mm256_setzero_si256(), most1 = most0, mode0 = most0, mode1 = most0, group = most0;
        for (std::size_t c = 0; c < classes; ++c, group = _mm256_add_epi8(group, one)) {
            const Vector lead0 = MoveDown(lead[c], added0, removed0, group);
            const Vector lead1 = MoveDown(lead[c + classes], added1, removed1, group);
            lead[c] = lead0;
            lead[c + classes] = lead1;
            const Vector sum0 = _mm256_add_epi8(sliding[c], lead0);
            Prefer(sum0, group, most0, mode0);
            const Vector sum1 = _mm256_add_epi8(_mm256_sub_epi8(sum0, trail[c]), lead1);
            Prefer(sum1, group, most1, mode1);
            sliding[c] = _mm256_sub_epi8(sum1, trail[c + classes]);
        }
        const std::size_t i = column - reach;
        modes.count[i] = most0;
        modes.count[i + 1] = most1;
        modes.group[i] = mode0;
        modes.group[i + 1] = mode1;
    }
}

inline Vector Quotients(Vector sums, Vector counts) {
    // Exact: the added half keeps each quotient further from an integer than rounding can reach.
    const __m256 reciprocals = _mm256_div_ps(_mm256_set1_ps(1), _mm256_cvtepi32_ps(counts));
    const __m256 raised = _mm256_add_ps(_mm256_cvtepi32_ps(sums), _mm256_set1_ps(0.5f));
    return _mm256_cvttps_epi32(_mm256_mul_ps(raised, reciprocals));
}

/// 16 sums, negated, by 16 counts.
Vector Divide(Vector negated, Vector counts) {
    const Vector zero = _mm256_setzero_si256(), sums = _mm256_sub_epi16(zero, negated);
    counts = _mm256_max_epi16(counts, _mm256_set1_epi16(1));
    return _mm256_packus_epi32(Quotients(_mm256_unpacklo_epi16(sums, zero), _mm256_unpacklo_epi16(counts, zero)),
                               Quotients(_mm256_unpackhi_epi16(sums, zero), _mm256_unpackhi_epi16(counts, zero)));
}

inline Vector Unpack(Vector a, Vector b, int half) {
    return half ? _mm256_unpackhi_epi8(a, b) : _mm256_unpacklo_epi8(a, b);
}

/// Means of channels `first` to `last` - 1 over the winning class of each brush of one column, for two lines at once
/// (or one of them): they see the same pairs of lines, but for one line of the first and of the last pair.
template <int first, int last, bool upper, bool lower>
void MeansOfColumn(const PairColumn* const* pairs, std::size_t i, const Sizes& sizes, const Modes (&modes)[2],
                   Vector* const (&means)[2][3]) {
    constexpr int channels = last - first;
    const Vector zero = _mm256_setzero_si256();
    const Vector lowBytes = _mm256_set1_epi16(255), highBytes = _mm256_slli_epi16(lowBytes, 8);
    Vector result[2][2][channels];
    for (int half = 0; half < 2; ++half) {
        Vector sums[2][channels];
        for (auto& line : sums)
            for (Vector& sum : line) sum = zero;
        const Vector above = Unpack(modes[0].group[i], modes[0].group[i], half);
        const Vector below = Unpack(modes[1].group[i], modes[1].group[i], half);
        for (std::size_t k = 0; k <= sizes.radius; ++k) {
            // A byte that is not a class matches margins alone, and those are black.
            const Vector wanted0 = k == sizes.radius ? _mm256_or_si256(above, highBytes) : above;
            const Vector wanted1 = k == 0 ? _mm256_or_si256(below, lowBytes) : below;
            const PairColumn* const brush = pairs[k] + i;
            for (std::size_t column = 0; column <= 2 * sizes.radius; ++column) {
                const Vector group = brush[column].group[half];
                const Vector match0 = _mm256_cmpeq_epi8(group, wanted0), match1 = _mm256_cmpeq_epi8(group, wanted1);
                for (int c = 0; c < channels; ++c) {
                    const Vector samples = brush[column].channel[first + c][half];
                    if (upper) sums[0][c] = _mm256_add_epi16(sums[0][c], _mm256_maddubs_epi16(samples, match0));
                    if (lower) sums[1][c] = _mm256_add_epi16(sums[1][c], _mm256_maddubs_epi16(samples, match1));
                }
            }
        }
        for (int line = upper ? 0 : 1; line < (lower ? 2 : 1); ++line)
            for (int c = 0; c < channels; ++c)
                result[line][half][c] = Divide(sums[line][c], Unpack(modes[line].count[i], zero, half));
    }
    for (int line = upper ? 0 : 1; line < (lower ? 2 : 1); ++line)
        for (int c = 0; c < channels; ++c)
            means[line][first + c][i] = _mm256_packus_epi16(result[line][0][c], result[line][1][c]);
}

}  // namespace
}  // namespace AVBased

NIFIKRAL_END_AVX2
