#include "effects/colour/AddNoiseEffect.h"

#include <algorithm>

#include "effects/base/instruction_sets.h"
#include "effects/base/shared_samples.h"
#include "effects/colour/grain_rows_avx2.h"

namespace AVBased {
namespace {

constexpr Property<AddNoiseSettings> addNoiseProperties[] = {
    {"addnoise_strength", "15", &AddNoiseSettings::strength},
    {"addnoise_color", "0", &AddNoiseSettings::colour},
    {"addnoise_seed", "0", &AddNoiseSettings::seed},
};

constexpr int packedUnit = 28, lumaUnit = 24, colouredLumaUnit = 16, chromaUnits[] = {16, 11, 8, 6, 4};

// Middle tones weigh 128, and the numbers of the tables deviate by 52 together: 4.92 x 128 x 52 is 2^15.
std::int16_t GainOf(int strength, int unit) {
    constexpr int hundredths = 492;
    return std::int16_t((strength * unit * hundredths + 50 * packedUnit) / (100 * packedUnit));
}

template <unsigned shift>
void TakeTones(std::uint8_t* __restrict tones, const std::uint8_t* __restrict luma, unsigned count) {
    for (std::size_t x = 0; x < count; ++x) tones[x] = luma[x << shift];
}

}  // namespace

CAddNoiseVideoImageEffect::CAddNoiseVideoImageEffect() : CSettingsEffect(effectNameAddNoise, addNoiseProperties) {}

void CAddNoiseVideoImageEffect::InnerProcFrame(ImagePostion*, int position, IRawVideoFrame* frame) {
    if (position == noPosition) position = frame->GetTimeStamp();
    const int strength = std::clamp(m_settings.strength, 0, 255);
    if (strength == 0) return;
    m_tables.Prepare(m_settings.seed);
    const InstructionSet set = Instructions();
    const auto grainSamples = variantsOf<GrainSamples, GrainSamplesAvx2>.For(set);
    const bool coloured = m_settings.colour != 0;
    const FrameHash hash(m_settings.seed, position);
    const auto grain = [&](unsigned plane, unsigned y, int unit) {
        return RowGrain{m_tables, hash.Row(plane, y), GainOf(strength, unit)};
    };
    ForFrame(
        [&](const PackedView& picture) {
            for (unsigned y = 0; y < picture.height; ++y)
                if (coloured)
                    grainSamples(picture.Bytes(y), picture.Bytes(y), 4 * picture.width, true, grain(0, y, packedUnit));
                else
                    variantsOf<GrainPixels, GrainPixelsAvx2>.For(set)(picture.Row(y), picture.width,
                                                                      grain(0, y, packedUnit));
        },
        [&](const PlanarView& picture) {
            const auto takeTones = WithConstantShift(picture.columnShift,
                                                     [&](auto shift) { return variantsOf<TakeTones<shift>>.For(set); });
            const ComponentView& luma = picture.plane[0];
            m_tones.resize(luma.width);
            // Each row of chroma before the luma that it covers, which still is what weighs the grain then.
            for (unsigned y = 0; y < luma.height; ++y) {
                for (unsigned p = 1; p < 3 && coloured; ++p) {
                    const SharedAxis columns = ColumnsOf(picture, p), rows = RowsOf(picture, p);
                    const unsigned row = y >> rows.shift;
                    if (row >= rows.size || rows.First(row) != y) continue;
                    takeTones(m_tones.data(), luma.Row(y), columns.size);
                    grainSamples(picture.plane[p].Row(row), m_tones.data(), columns.size, false,
                                 grain(p, row, chromaUnits[picture.columnShift + picture.rowShift]));
                }
                grainSamples(luma.Row(y), luma.Row(y), luma.width, false,
                             grain(0, y, coloured ? colouredLumaUnit : lumaUnit));
            }
        },
        *frame);
}

}  // namespace AVBased
