#include "effects/colour/grain_rows.h"

namespace AVBased {
namespace {

// Film is grainiest between black and white. In steps of 16 bits, which vectors have products and roundings for.
std::uint8_t Grained(std::uint8_t sample, std::uint8_t tone, std::int16_t numbers, std::int16_t gain) {
    const auto weight = std::int16_t((std::min<int>(tone, 255 - tone) + 129) >> 1);
    const auto grain = std::int16_t(weight * numbers);
    const auto change = std::int16_t(((grain * gain >> 14) + 1) >> 1);
    return std::uint8_t(std::clamp<std::int16_t>(std::int16_t(sample + change), 0, 255));
}

}  // namespace

void GrainTables::Prepare(std::uint32_t seed) {
    if (!m_numbers.empty() && seed == m_seed) return;
    m_numbers.resize(2 * length);
    m_seed = seed;
    const RowHash hash(MixBits(~seed));
    for (unsigned i = 0; i < m_numbers.size(); ++i) {
        // The sum of four even numbers of 0 to 255 is nearly Gaussian; a fourth of it fits a byte.
        const std::uint32_t random = hash(i), pairs = (random & 0xFF00FF) + (random >> 8 & 0xFF00FF);
        m_numbers[i] = std::int8_t((int((pairs + (pairs >> 16)) & 0xFFFF) - 510) / 4);
    }
}

void GrainSamples(std::uint8_t* row, const std::uint8_t* tones, unsigned count, bool ofPixels, const RowGrain& grain) {
    const unsigned kept = ofPixels ? 3 : 4;
    grain.ForEachStretch(count, [=](unsigned x, unsigned length, GrainTables::Stretch numbers) {
        std::uint8_t* const to = row + x;
        const std::uint8_t* const by = tones + x;
#pragma GCC ivdep  // tones are the row itself or lie elsewhere
        for (unsigned i = 0; i < length; ++i) {
            const auto number = std::int16_t(numbers.first[i] + numbers.second[i]);
            to[i] = Grained(to[i], by[i], (i & 3) == kept ? std::int16_t(0) : number, grain.gain);
        }
    });
}

void GrainPixels(Rgba32* row, unsigned width, const RowGrain& grain) {
    grain.ForEachStretch(width, [=](unsigned x, unsigned length, GrainTables::Stretch numbers) {
        for (unsigned i = 0; i < length; ++i) {
            const std::uint32_t p = LoadWord(row + x + i);
            const auto number = std::int16_t(numbers.first[i] + numbers.second[i]);
            const auto grained = [=](std::uint32_t colour) {
                return Grained(std::uint8_t(colour), std::uint8_t(colour), number, grain.gain);
            };
            StoreWord(row + x + i, WithAlphaOf(p, grained(Blue(p)), grained(Green(p)), grained(Red(p))));
        }
    });
}

}  // namespace AVBased
