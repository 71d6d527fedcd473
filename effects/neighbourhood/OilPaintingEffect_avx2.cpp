#include "effects/neighbourhood/OilPaintingEffect_avx2.h"

#include <cstring>

#include "effects/neighbourhood/oil_modes_avx2.h"

NIFIKRAL_BEGIN_AVX2

namespace AVBased {
namespace {

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

}  // namespace

void PaintByStripsAvx2(OilPicture& picture, const OilPaintingSettings& settings) {
    if (picture.width == 0 || picture.height == 0) return;
    const unsigned coarseness = settings.coarseness;
    const Sizes sizes(picture, RadiusIn(picture, settings), coarseness);
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

}  // namespace AVBased

NIFIKRAL_END_AVX2
