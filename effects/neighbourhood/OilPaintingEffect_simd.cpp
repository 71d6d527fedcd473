#include <algorithm>
#include <cstddef>
#include <cstring>
#include <new>

#include "effects/neighbourhood/oil_picture.h"

#if defined(__x86_64__)
#include <immintrin.h>

namespace AVBased {
namespace {

// The picture stands cut into 32 upright strips, and vector i of a line holds column i of each strip. So neighbouring
// columns are neighbouring vectors: a brush slides by whole vectors, and no sum ever crosses a lane.
constexpr std::size_t lanes = 32;

// Outside the picture. Never a class, since the coarseness is at most 255 here.
constexpr unsigned char noClass = 255;

class Scratch {
 public:
    explicit Scratch(std::size_t size)
        : m_data(static_cast<unsigned char*>(::operator new(size, std::align_val_t(64)))) {}
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;
    ~Scratch() { ::operator delete(m_data, std::align_val_t(64)); }

    // The next `size` bytes; the caller has counted them before.
    unsigned char* Take(std::size_t size) {
        unsigned char* const part = m_data + m_taken;
        m_taken += RoundUp(size);
        return part;
    }
    static constexpr std::size_t RoundUp(std::size_t size) { return (size + 63) / 64 * 64; }

 private:
    unsigned char* m_data;
    std::size_t m_taken = 0;
};

struct Sizes {
    std::size_t width, height, radius, classes;
    std::size_t strip;    // columns of a strip, a multiple of every chroma cell
    std::size_t columns;  // the same with the brush's reach on both sides
    std::size_t vectors;  // the same as whole blocks of 16
    std::size_t line;     // bytes of a line of samples with its margins

    Sizes(const OilPicture& picture, std::size_t brushRadius, unsigned coarseness)
        : width(picture.width),
          height(picture.height),
          radius(brushRadius),
          classes(OilClass(255, coarseness) + 1u),
          strip((width + 4 * lanes - 1) / (4 * lanes) * 4),
          columns(strip + 2 * radius),
          vectors((columns + 15) / 16 * 16),
          line(lanes * strip + vectors) {}
    std::size_t ClassRows() const { return 2 * radius + 4; }
    std::size_t Pairs() const { return radius + 1; }
};

}  // namespace
}  // namespace AVBased

#pragma GCC push_options
#pragma GCC target("avx2,bmi,bmi2,lzcnt,popcnt")

namespace AVBased {
namespace {

using Vector = __m256i;

// Two vectors of 16-bit words, each word the same column of two lines, for the class and for each channel.
struct PairColumn {
    Vector group[2], channel[3][2];
};

inline void Transpose(Vector (&rows)[16]) {
    for (int round = 0; round < 4; ++round) {
        Vector next[16];
        for (int k = 0; k < 8; ++k) {
            next[2 * k] = _mm256_unpacklo_epi8(rows[k], rows[k + 8]);
            next[2 * k + 1] = _mm256_unpackhi_epi8(rows[k], rows[k + 8]);
        }
        for (int k = 0; k < 16; ++k) rows[k] = next[k];
    }
}

// A line with its left margin, to vectors.
void ToStrips(const unsigned char* line, Vector* to, const Sizes& sizes) {
    for (std::size_t i = 0; i < sizes.vectors; i += 16) {
        Vector rows[16];
        for (std::size_t lane = 0; lane < 16; ++lane) {
            const unsigned char* const at = line + lane * sizes.strip + i;
            rows[lane] = _mm256_loadu2_m128i(reinterpret_cast<const __m128i*>(at + 16 * sizes.strip),
                                             reinterpret_cast<const __m128i*>(at));
        }
        Transpose(rows);
        for (std::size_t k = 0; k < 16; ++k) to[i + k] = rows[k];
    }
}

// Vectors to a line. A block of 16 may write past its strip: into what a later store of the same block, or the first
// block of all strips, which comes last, writes again.
void FromStrips(const Vector* from, unsigned char* line, const Sizes& sizes) {
    for (std::size_t i = (sizes.strip + 15) / 16 * 16; i > 0;) {
        i -= 16;
        Vector rows[16];
        for (std::size_t k = 0; k < 16; ++k) rows[k] = from[i + k];
        Transpose(rows);
        for (std::size_t lane = 0; lane < 16; ++lane)
            _mm_storeu_si128(reinterpret_cast<__m128i*>(line + lane * sizes.strip + i),
                             _mm256_castsi256_si128(rows[lane]));
        for (std::size_t lane = 0; lane < 16; ++lane)
            _mm_storeu_si128(reinterpret_cast<__m128i*>(line + (lane + 16) * sizes.strip + i),
                             _mm256_extracti128_si256(rows[lane], 1));
    }
}

// Counts and winning classes of one line, by column.
struct Modes {
    Vector *count, *group;
};

// A column's count of class c when its brush moves one line down.
inline Vector MoveDown(Vector count, Vector added, Vector removed, Vector c) {
    count = _mm256_sub_epi8(count, _mm256_cmpeq_epi8(added, c));
    return _mm256_add_epi8(count, _mm256_cmpeq_epi8(removed, c));
}

// Takes class c for the mode where its sum is higher than any before.
inline void Prefer(Vector sum, Vector c, Vector& most, Vector& mode) {
    const Vector higher = _mm256_max_epu8(most, sum);
    mode = _mm256_blendv_epi8(c, mode, _mm256_cmpeq_epi8(higher, most));
    most = higher;
}

// Moves the counts of every column one line down and finds the mode of each brush: its lowest class of the highest
// count. counts[column * classes + c] counts class c in a column of the brush; `sliding` has room for a brush's sums.
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

// 16 sums, negated, by 16 counts.
inline Vector Divide(Vector negated, Vector counts) {
    const Vector zero = _mm256_setzero_si256(), sums = _mm256_sub_epi16(zero, negated);
    counts = _mm256_max_epi16(counts, _mm256_set1_epi16(1));
    return _mm256_packus_epi32(Quotients(_mm256_unpacklo_epi16(sums, zero), _mm256_unpacklo_epi16(counts, zero)),
                               Quotients(_mm256_unpackhi_epi16(sums, zero), _mm256_unpackhi_epi16(counts, zero)));
}

inline Vector Unpack(Vector a, Vector b, int half) {
    return half ? _mm256_unpackhi_epi8(a, b) : _mm256_unpacklo_epi8(a, b);
}

// Means of channels `first` to `last` - 1 over the winning class of each brush of one column, for two lines at once (or
// one of them): they see the same pairs of lines, but for one line of the first and of the last pair.
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
            // A byte that is no class matches margins alone, and those are black.
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

// Reads lines two by two, the margins above and below the picture included, and keeps those that a brush may need.
class Lines {
 public:
    Lines(OilPicture& picture, const Sizes& sizes, unsigned coarseness, Scratch& scratch)
        : m_picture(picture), m_sizes(sizes), m_coarseness(coarseness) {
        for (unsigned char*& line : m_line) {
            line = scratch.Take(sizes.line);
            std::memset(line, 0, sizes.line);
        }
        std::memset(m_line[3], noClass, sizes.line);
        for (auto& row : m_channel)
            for (Vector*& channel : row) channel = TakeVectors(scratch, sizes.vectors);
        m_groups = TakeVectors(scratch, sizes.ClassRows() * sizes.vectors);
        std::memset(m_groups, noClass, sizes.ClassRows() * sizes.vectors * sizeof(Vector));
        m_pairs = reinterpret_cast<PairColumn*>(scratch.Take(sizes.Pairs() * sizes.columns * sizeof(PairColumn)));
    }
    static Vector* TakeVectors(Scratch& scratch, std::size_t count) {
        return reinterpret_cast<Vector*>(scratch.Take(count * sizeof(Vector)));
    }
    static std::size_t Bytes(const Sizes& sizes) {
        return 4 * Scratch::RoundUp(sizes.line) +
               (6 + sizes.ClassRows()) * Scratch::RoundUp(sizes.vectors * sizeof(Vector)) +
               Scratch::RoundUp(sizes.Pairs() * sizes.columns * sizeof(PairColumn));
    }

    // The classes of line `line` of those that have come in, the first margin being line 0; line -1 is a margin too.
    Vector* Groups(std::size_t line) const {
        return m_groups + (line + m_sizes.ClassRows()) % m_sizes.ClassRows() * m_sizes.vectors;
    }
    const PairColumn* Pair(std::size_t pair) const { return m_pairs + pair % m_sizes.Pairs() * m_sizes.columns; }
    void ReadPair(std::size_t pair) {
        Read(2 * pair, m_channel[0]);
        Read(2 * pair + 1, m_channel[1]);
        PairColumn* const to = m_pairs + pair % m_sizes.Pairs() * m_sizes.columns;
        const Vector *const even = Groups(2 * pair), *const odd = Groups(2 * pair + 1);
        for (std::size_t i = 0; i < m_sizes.columns; ++i) {
            to[i].group[0] = _mm256_unpacklo_epi8(even[i], odd[i]);
            to[i].group[1] = _mm256_unpackhi_epi8(even[i], odd[i]);
            for (int c = 0; c < 3; ++c) {
                to[i].channel[c][0] = _mm256_unpacklo_epi8(m_channel[0][c][i], m_channel[1][c][i]);
                to[i].channel[c][1] = _mm256_unpackhi_epi8(m_channel[0][c][i], m_channel[1][c][i]);
            }
        }
    }

 private:
    void Read(std::size_t line, Vector* const (&channel)[3]) {
        const std::size_t bytes = m_sizes.vectors * sizeof(Vector);
        if (line < m_sizes.radius || line - m_sizes.radius >= m_sizes.height) {
            for (Vector* plane : channel) std::memset(plane, 0, bytes);
            std::memset(Groups(line), noClass, bytes);
            return;
        }
        std::uint8_t* const samples[3] = {m_line[0] + m_sizes.radius, m_line[1] + m_sizes.radius,
                                          m_line[2] + m_sizes.radius};
        m_picture.Read(unsigned(line - m_sizes.radius), samples);
        const std::uint8_t* const level = samples[m_picture.intensity];
        std::uint8_t* const group = m_line[3] + m_sizes.radius;
        for (std::size_t x = 0; x < m_sizes.width; ++x) group[x] = std::uint8_t(level[x] * m_coarseness >> 8);
        for (int c = 0; c < 3; ++c) ToStrips(m_line[c], channel[c], m_sizes);
        ToStrips(m_line[3], Groups(line), m_sizes);
    }

    OilPicture& m_picture;
    const Sizes& m_sizes;
    std::uint16_t m_coarseness;
    unsigned char* m_line[4];  // three channels and the class
    Vector *m_channel[2][3], *m_groups;
    PairColumn* m_pairs;
};

void Paint(OilPicture& picture, const Sizes& sizes, unsigned coarseness) {
    const std::size_t outputs = (sizes.strip + 15) / 16 * 16, columnCounts = sizes.columns * sizes.classes;
    Scratch scratch(Lines::Bytes(sizes) + Scratch::RoundUp(columnCounts * sizeof(Vector)) +
                    Scratch::RoundUp(sizes.classes * sizeof(Vector)) + 10 * Scratch::RoundUp(outputs * sizeof(Vector)) +
                    3 * Scratch::RoundUp(sizes.line));
    Lines lines(picture, sizes, coarseness, scratch);
    Vector* const counts = Lines::TakeVectors(scratch, columnCounts);
    Vector* const sliding = Lines::TakeVectors(scratch, sizes.classes);
    Modes modes[2];
    Vector* means[2][3];
    for (int line = 0; line < 2; ++line) {
        modes[line] = {Lines::TakeVectors(scratch, outputs), Lines::TakeVectors(scratch, outputs)};
        for (Vector*& mean : means[line]) {
            mean = Lines::TakeVectors(scratch, outputs);
            std::memset(mean, 0, outputs * sizeof(Vector));
        }
    }
    unsigned char* result[3];
    for (unsigned char*& line : result) line = scratch.Take(sizes.line);

    for (std::size_t pair = 0; pair < sizes.radius; ++pair) lines.ReadPair(pair);
    std::memset(counts, 0, columnCounts * sizeof(Vector));
    for (std::size_t line = 0; line < 2 * sizes.radius; ++line) {
        const auto* const group = reinterpret_cast<const unsigned char*>(lines.Groups(line));
        for (std::size_t at = 0; at < sizes.columns * lanes; ++at)
            if (group[at] != noClass)
                ++reinterpret_cast<unsigned char*>(
                    counts)[(at / lanes * sizes.classes + group[at]) * lanes + at % lanes];
    }

    const std::size_t columnMask = (std::size_t(1) << picture.columnShift) - 1;
    const std::size_t rowMask = (std::size_t(1) << picture.rowShift) - 1;
    const std::size_t lastColumn = (sizes.width - 1) % sizes.strip;
    const PairColumn* pairs[8];
    for (std::size_t y = 0; y < sizes.height; y += 2) {
        lines.ReadPair(y / 2 + sizes.radius);
        for (std::size_t k = 0; k < sizes.Pairs(); ++k) pairs[k] = lines.Pair(y / 2 + k);
        bool endsCell[2];
        for (std::size_t line = 0; line < 2; ++line) {
            const std::size_t top = y + line;
            FindModes(counts, sliding, lines.Groups(top + 2 * sizes.radius), lines.Groups(top - 1), sizes, modes[line]);
            endsCell[line] = (top & rowMask) == rowMask || top + 1 == sizes.height;
        }
        for (std::size_t i = 0; i < sizes.strip; ++i) {
            const bool endsColumn = (i & columnMask) == columnMask || i == lastColumn;
            if (endsColumn && endsCell[0] && endsCell[1]) {
                MeansOfColumn<0, 3, true, true>(pairs, i, sizes, modes, means);
                continue;
            }
            MeansOfColumn<0, 1, true, true>(pairs, i, sizes, modes, means);
            if (endsColumn && endsCell[0]) MeansOfColumn<1, 3, true, false>(pairs, i, sizes, modes, means);
            if (endsColumn && endsCell[1]) MeansOfColumn<1, 3, false, true>(pairs, i, sizes, modes, means);
        }
        for (std::size_t line = 0; line < 2 && y + line < sizes.height; ++line) {
            for (int c = 0; c < (endsCell[line] ? 3 : 1); ++c) FromStrips(means[line][c], result[c], sizes);
            picture.Write(unsigned(y + line), result);
        }
    }
}

}  // namespace
}  // namespace AVBased

#pragma GCC pop_options
#endif

namespace AVBased {

bool PaintByVectors([[maybe_unused]] OilPicture& picture, [[maybe_unused]] const OilPaintingSettings& settings) {
#if defined(__x86_64__)
    if (picture.width == 0 || picture.height == 0) return true;
    const std::size_t radius = std::min(settings.radius, std::max(picture.width, picture.height));
    // Counts and classes are bytes here.
    if (radius > 7 || settings.coarseness > 255) return false;
    Paint(picture, Sizes(picture, radius, settings.coarseness), settings.coarseness);
    return true;
#else
    return false;
#endif
}

}  // namespace AVBased
