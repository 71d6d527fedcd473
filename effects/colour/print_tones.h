#pragma once

#include <functional>
#include <vector>

#include "effects/base/frame_views.h"
#include "effects/base/instruction_sets.h"

/// The tones of a picture for a print in flat colours: without the specks that thresholds make of noise and grass, and
/// with smooth contours.
namespace AVBased {

/// Of tones, in which 16 is black and 235 white.
inline constexpr int toneUnit = 32;

/// The tones of row y of the picture's cells of 2 x 2 pixels: luma, and half of what makes the colour warm, so that
/// skin is lighter than a sky of its luma. Samples beyond the edges are the nearest ones.
void ReadTones(const PackedView& picture, unsigned y, std::int16_t* tones, InstructionSet set);
void ReadTones(const PlanarView& picture, unsigned y, std::int16_t* tones, InstructionSet set);

/// Half the sum of two tones, in 16 bits, so that many fit a vector.
inline std::int16_t Half(std::int16_t a, std::int16_t b) { return std::int16_t(std::int16_t(a + b) >> 1); }

/// Rows of cells, the last `count` of them, each with room for two more cells at either end. Vectors may go past the
/// end of a row by `spare` cells.
class CellRows {
 public:
    static constexpr unsigned spare = 16;

    CellRows(unsigned width, unsigned count)
        : m_width(width), m_count(count), m_cells((std::size_t(width) + 4) * count + spare) {}
    std::int16_t* Row(unsigned y) { return &m_cells[(std::size_t(m_width) + 4) * (y % m_count) + 2]; }
    void RepeatEnds(unsigned y) {
        std::int16_t* const row = Row(y);
        row[-2] = row[-1] = row[0];
        row[m_width] = row[m_width + 1] = row[m_width - 1];
    }

 private:
    unsigned m_width, m_count;
    std::vector<std::int16_t> m_cells;
};

/// Each tone as the median of five down the column, then of five along the row, then as the mean with the weights 1, 4,
/// 6, 4, 1, the same way, rounded each time; the nearest cells serve beyond the edges. Where that differs from the tone
/// by more than 24, the rest of the difference comes back.
class PrintTones {
 public:
    using Read = std::function<void(unsigned y, std::int16_t* tones)>;

    /// Of `kept` rows, the last ones that were asked for, tones stay. The picture is read row by row from the top down,
    /// up to four rows of cells further than is asked for.
    PrintTones(unsigned columns, unsigned rows, unsigned kept, InstructionSet set, Read read);
    /// One more cell is there at either end. Beyond the edges the nearest row serves.
    const std::int16_t* Row(int y);

 private:
    using Filter = void (*)(std::int16_t* results, const std::int16_t* const* around, unsigned width);
    void Apply(Filter filter, CellRows& from, unsigned y, CellRows& to);

    unsigned m_columns, m_rows, m_read = 0, m_cleaned = 0, m_smoothed = 0;
    Filter m_clean, m_smooth;
    void (*m_restore)(std::int16_t* soft, const std::int16_t* raw, unsigned width);
    Read m_readRow;
    CellRows m_raw, m_clear, m_soft, m_line;
};

}  // namespace AVBased
