#include "effects/EmbossEffect.h"

#include "avbase/avbase.h"
#include "effects/fixed_point.h"
#include "effects/frame_views.h"
#include "effects/property_table.h"

namespace AVBased {
namespace {

constexpr Property<CEmbossVideoImageEffect::Settings> properties[] = {
    {"emboss_level", "0", &CEmbossVideoImageEffect::Settings::level},
};

// Calls work(row, above) from the last row to the second, so that the row above is still as it came.
template <class Sample, class Work>
void ForEachRowUpwards(const PlaneView<Sample>& plane, Work work) {
    for (unsigned y = plane.height; y > 1; --y) work(plane.Row(y - 1), plane.Row(y - 2));
}

// Every colour becomes lane(colour, the colour above).
template <class Lane>
void EmbossColours(Rgba32* row, const Rgba32* above, unsigned width, Lane lane) {
    for (unsigned x = 0; x < width; ++x) {
        const std::uint32_t p = LoadWord(row + x), a = LoadWord(above + x);
        StoreWord(row + x, WithAlphaOf(p, lane(Blue(p), Blue(a)), lane(Green(p), Green(a)), lane(Red(p), Red(a))));
    }
}

// In a 16-bit lane products keep their low 16 bits, the addition wraps and the subtraction saturates, which the clamp
// to a byte hides.
std::uint8_t VectorLane(std::uint32_t sample, std::uint32_t above, std::uint32_t level) {
    return ClampToByte(std::int16_t(sample * level + 128) - std::int16_t(above * level));
}

}  // namespace

std::atomic<EmbossRoutine> emboss_effect_component = emboss_effect_component_c;
std::atomic<EmbossRoutine> emboss_effect_rgba32 = emboss_effect_rgba32_c;

void emboss_effect_component_c(unsigned char* data, unsigned width, unsigned pitch, unsigned height, unsigned level) {
    ForEachRowUpwards(ComponentView{data, width, pitch, height}, [=](std::uint8_t* row, const std::uint8_t* above) {
        for (unsigned x = 0; x < width; ++x) {
            // Deliberate: taken as unsigned, a negative value is a large one and turns white.
            const std::uint32_t value = std::uint32_t(row[x] - above[x]) * level + 128;
            row[x] = std::uint8_t(std::min(value, 255u));
        }
    });
}

void emboss_effect_rgba32_c(unsigned char* data, unsigned width, unsigned pitch, unsigned height, unsigned level) {
    ForEachRowUpwards(PackedView{data, width, pitch, height}, [=](Rgba32* row, const Rgba32* above) {
        EmbossColours(row, above, width, [=](std::uint32_t c, std::uint32_t a) {
            return std::uint32_t(std::clamp(std::int32_t((c - a) * level), -128, 127) + 128);
        });
    });
}

void EmbossGroups(unsigned char* row, const unsigned char* above, unsigned bytes, unsigned, unsigned level) {
    for (unsigned x = 0; x < bytes; ++x) row[x] = VectorLane(row[x], above[x], level);
}

void EmbossPixels(unsigned char* row, const unsigned char* above, unsigned bytes, unsigned, unsigned level) {
    EmbossColours(reinterpret_cast<Rgba32*>(row), reinterpret_cast<const Rgba32*>(above), bytes / sizeof(Rgba32),
                  [=](std::uint32_t c, std::uint32_t a) { return VectorLane(c, a, level); });
}

void emboss_effect_component_mmx(unsigned char* data, unsigned width, unsigned pitch, unsigned height, unsigned level) {
    const unsigned grouped = width / 4 * 4;
    const auto embossRow = embossGroupsVariants.For(BestInstructionSet());
    ForEachRowUpwards(ComponentView{data, width, pitch, height}, [=](std::uint8_t* row, const std::uint8_t* above) {
        embossRow(row, above, grouped, pitch, level);
        // Deliberate: the samples that fill no group of four ignore the level.
        for (unsigned x = grouped; x < width; ++x) row[x] = ClampToByte(2 * (row[x] - above[x]) + 128);
    });
}

void emboss_effect_rgba32_mmx(unsigned char* data, unsigned width, unsigned pitch, unsigned height, unsigned level) {
    const auto embossRow = embossPixelsVariants.For(BestInstructionSet());
    ForEachRowUpwards(ComponentView{data, width, pitch, height}, [=](std::uint8_t* row, const std::uint8_t* above) {
        embossRow(row, above, width * unsigned(sizeof(Rgba32)), pitch, level);
    });
}

CEmbossVideoImageEffect::CEmbossVideoImageEffect() : CBasedVideoImageEffect(effectNameEmboss) {
    DeclareProperties(*this, properties);
    if (HasVectorUnit(AVBasedGetCPUFeatures())) {
        emboss_effect_component = emboss_effect_component_mmx;
        emboss_effect_rgba32 = emboss_effect_rgba32_mmx;
    }
}

void CEmbossVideoImageEffect::OnSetProperty(const std::string& name, PropertyNode& node) {
    CBasedVideoImageEffect::OnSetProperty(name, node);
    StoreProperty(m_settings, properties, name, node);
}

void CEmbossVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    const auto emboss = [this](EmbossRoutine routine, const auto& plane) {
        routine(plane.data, plane.width, plane.pitch, plane.height, unsigned(m_settings.level));
    };
    ForFrame([&](const PackedView& picture) { emboss(emboss_effect_rgba32, picture); },
             [&](const PlanarView& picture) {
                 for (unsigned p = 0; p < 3; ++p) emboss(emboss_effect_component, picture.plane[p]);
             },
             *frame);
}

}  // namespace AVBased
