#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "effects/base/frame_views.h"
#include "effects/base/place_hash.h"

/// Rows of samples with film grain on them.
namespace AVBased {

/// So many samples beside one another take their grain from the same places of the tables.
inline constexpr unsigned grainStretch = 1024;

/// The two tables of a seed.
class GrainTables {
 public:
    static constexpr unsigned places = 1 << 16;

    /// Fills both, unless they are there.
    void Prepare(std::uint32_t seed);
    /// One number in each table for every sample of a stretch.
    struct Stretch {
        const std::int8_t *first, *second;
    };
    Stretch At(std::uint32_t random) const {
        return {&m_numbers[random % places], &m_numbers[length + (random >> 16) % places]};
    }

 private:
    static constexpr unsigned length = places + grainStretch;
    std::uint32_t m_seed = 0;
    std::vector<std::int8_t> m_numbers;
};

/// The grain of one row: where it comes from, and in 2^-15 of the product of a weight and a number.
struct RowGrain {
    const GrainTables& tables;
    RowHash hash;
    std::int16_t gain;

    /// Calls work(x, count, stretch) for every stretch of a row.
    template <class Work>
    void ForEachStretch(unsigned length, Work work) const {
        for (unsigned x = 0; x < length; x += grainStretch)
            work(x, std::min(grainStretch, length - x), tables.At(hash(x / grainStretch)));
    }
};

/// Grains bytes, each by its own number and weighed by the tone beside it; `tones` may be the row. Of pixels each
/// fourth byte is kept.
void GrainSamples(std::uint8_t* row, const std::uint8_t* tones, unsigned count, bool ofPixels, const RowGrain& grain);
/// Grains the colours of pixels, one number for the three of each.
void GrainPixels(Rgba32* row, unsigned width, const RowGrain& grain);

}  // namespace AVBased
