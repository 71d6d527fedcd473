#include "effects/colour/AddNoiseEffect.h"

#include "effects/base/fixed_point.h"
#include "effects/base/place_hash.h"
#include "effects/base/shared_samples.h"

namespace AVBased {
namespace {

constexpr Property<AddNoiseSettings> addNoiseProperties[] = {
    {"addnoise_strength", "15", &AddNoiseSettings::strength},
    {"addnoise_color", "0", &AddNoiseSettings::colour},
    {"addnoise_seed", "0", &AddNoiseSettings::seed},
};

constexpr int packedUnit = 28, lumaUnit = 24, colouredLumaUnit = 16, chromaUnits[] = {16, 11, 8, 6, 4};

// -510 to 510, the middle values most often.
std::int16_t Grain(std::uint32_t hash) {
    const std::uint32_t pairs = (hash & 0xFF00FF) + (hash >> 8 & 0xFF00FF);
    return std::int16_t(std::uint16_t(pairs + (pairs >> 16)) - 510);
}

// In steps of 16 bits, which are as long as the hashes' are. Film is grainiest between black and white.
std::uint8_t Grained(std::uint8_t sample, std::uint8_t tone, std::uint32_t hash, std::uint16_t gain) {
    const auto weight = std::uint16_t(128 + (std::uint16_t(tone * (255 - tone)) >> 7));
    const auto slope = std::int16_t(std::uint32_t(std::uint16_t(weight << 8)) * gain >> 16);
    const auto grain = std::int16_t(8 * Grain(hash));
    const auto change = std::int16_t(((grain * slope >> 14) + 1) >> 1);
    return std::uint8_t(std::clamp<std::int16_t>(std::int16_t(sample + change), 0, 255));
}

void GrainPixels(Rgba32* row, unsigned width, RowHash hash, std::uint16_t gain) {
    for (unsigned x = 0; x < width; ++x) {
        const std::uint32_t p = LoadWord(row + x);
        const std::uint32_t random = hash(x);
        const auto grained = [=](std::uint32_t colour) {
            return Grained(std::uint8_t(colour), std::uint8_t(colour), random, gain);
        };
        StoreWord(row + x, WithAlphaOf(p, grained(Blue(p)), grained(Green(p)), grained(Red(p))));
    }
}

void GrainColours(Rgba32* row, unsigned width, RowHash blue, RowHash green, RowHash red, std::uint16_t gain) {
    for (unsigned x = 0; x < width; ++x) {
        const std::uint32_t p = LoadWord(row + x);
        const auto grained = [=](std::uint32_t colour, RowHash hash) {
            return Grained(std::uint8_t(colour), std::uint8_t(colour), hash(x), gain);
        };
        StoreWord(row + x, WithAlphaOf(p, grained(Blue(p), blue), grained(Green(p), green), grained(Red(p), red)));
    }
}

void GrainLuma(std::uint8_t* row, unsigned width, RowHash hash, std::uint16_t gain) {
    for (unsigned x = 0; x < width; ++x, hash = hash.Next()) row[x] = Grained(row[x], row[x], hash(0), gain);
}

template <unsigned shift>
void GrainChroma(std::uint8_t* __restrict row, unsigned width, const std::uint8_t* __restrict luma, RowHash hash,
                 std::uint16_t gain) {
    for (std::size_t x = 0; x < width; ++x) row[x] = Grained(row[x], luma[x << shift], hash(std::uint32_t(x)), gain);
}

}  // namespace

CAddNoiseVideoImageEffect::CAddNoiseVideoImageEffect() : CSettingsEffect(effectNameAddNoise, addNoiseProperties) {}

void CAddNoiseVideoImageEffect::InnerProcFrame(ImagePostion*, int position, IRawVideoFrame* frame) {
    if (position == noPosition) position = frame->GetTimeStamp();
    const int strength = std::clamp(m_settings.strength, 0, 255);
    if (strength == 0) return;
    const InstructionSet set = Instructions();
    const bool coloured = m_settings.colour != 0;
    const FrameHash hash(m_settings.seed, position);
    ForFrame(
        [&](const PackedView& picture) {
            const auto gain = std::uint16_t(packedUnit * strength);
            for (unsigned y = 0; y < picture.height; ++y)
                if (coloured)
                    variantsOf<GrainColours>.For(set)(picture.Row(y), picture.width, hash.Row(0, y), hash.Row(1, y),
                                                      hash.Row(2, y), gain);
                else
                    variantsOf<GrainPixels>.For(set)(picture.Row(y), picture.width, hash.Row(0, y), gain);
        },
        [&](const PlanarView& picture) {
            // Chroma first, while luma still is what it weighs the grain by.
            const auto grainChroma = WithConstantShift(
                picture.columnShift, [&](auto shift) { return variantsOf<GrainChroma<shift>>.For(set); });
            const ComponentView& luma = picture.plane[0];
            for (unsigned p = 1; p < 3 && coloured; ++p) {
                const SharedAxis columns = ColumnsOf(picture, p), rows = RowsOf(picture, p);
                for (unsigned y = 0; y < rows.size; ++y)
                    grainChroma(picture.plane[p].Row(y), columns.size, luma.Row(rows.First(y)), hash.Row(p, y),
                                std::uint16_t(chromaUnits[picture.columnShift + picture.rowShift] * strength));
            }
            const auto gain = std::uint16_t((coloured ? colouredLumaUnit : lumaUnit) * strength);
            for (unsigned y = 0; y < luma.height; ++y)
                variantsOf<GrainLuma>.For(set)(luma.Row(y), luma.width, hash.Row(0, y), gain);
        },
        *frame);
}

}  // namespace AVBased
