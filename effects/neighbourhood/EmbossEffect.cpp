#include "effects/neighbourhood/EmbossEffect.h"

#include <vector>

#include "avbase/avbase.h"
#include "effects/base/fixed_point.h"
#include "effects/base/frame_views.h"
#include "effects/base/row_loops.h"
#include "effects/base/shared_samples.h"
#include "effects/neighbourhood/EmbossEffect_avx2.h"

namespace AVBased {
namespace {

constexpr Property<EmbossSettings> properties[] = {
    {"emboss_level", "0", &EmbossSettings::level},
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

// Calls work(row, above, count) for stretches of every row but the first, where `above` holds the row above as it came
// and then takes the row's own place for the next one. Four bands of the plane are walked side by side, since a core
// keeps more lines in flight on four streams than on one.
template <class Work>
void ForEachStretchDownwards(const ComponentView& plane, Work work) {
    constexpr std::size_t bands = 4, stretch = 8 * cacheLine;
    if (plane.height < 2) return;
    const std::size_t width = plane.width, bandRows = (plane.height - 1) / bands, end = 1 + bandRows * bands;
    std::vector<std::uint8_t> above(width * bands);
    const auto walk = [&](std::size_t begin, std::size_t rows, std::size_t count) {
        for (std::size_t band = 0; band < count; ++band)
            std::copy_n(plane.Row(begin + band * rows - 1), width, above.data() + band * width);
        for (std::size_t y = begin; y < begin + rows; ++y)
            for (std::size_t x = 0; x < width; x += stretch)
                for (std::size_t band = 0; band < count; ++band)
                    work(plane.Row(y + band * rows) + x, above.data() + band * width + x,
                         unsigned(std::min(stretch, width - x)));
    };
    // What fills no band comes first, since it needs the last band's last row as it came.
    walk(end, plane.height - end, 1);
    walk(1, bandRows, bands);
}

void EmbossVectorised(const ComponentView& plane, unsigned level, InstructionSet set) {
    const auto emboss = variantsOf<EmbossGroups, EmbossGroupsAvx2>.For(set);
    ForEachStretchDownwards(plane, [=](std::uint8_t* row, std::uint8_t* above, unsigned count) {
        const unsigned grouped = count / 4 * 4;
        emboss(row, above, grouped, level);
        // Deliberate: the samples that fill no group of four ignore the level.
        for (unsigned x = grouped; x < count; ++x) {
            const std::uint8_t own = row[x];
            row[x] = ClampToByte(2 * (own - above[x]) + 128);
            above[x] = own;
        }
    });
}

void EmbossVectorised(const PackedView& picture, unsigned level, InstructionSet set) {
    const auto emboss = variantsOf<EmbossPixels, EmbossPixelsAvx2>.For(set);
    ForEachStretchDownwards(
        ComponentView{picture.data, picture.width * unsigned(sizeof(Rgba32)), picture.pitch, picture.height},
        [=](std::uint8_t* row, std::uint8_t* above, unsigned count) { emboss(row, above, count, level); });
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

void EmbossGroups(unsigned char* row, unsigned char* above, unsigned bytes, unsigned level) {
    for (unsigned x = 0; x < bytes; ++x) {
        const std::uint8_t own = row[x];
        row[x] = VectorLane(own, above[x], level);
        above[x] = own;
    }
}

void EmbossPixels(unsigned char* row, unsigned char* above, unsigned bytes, unsigned level) {
    for (unsigned x = 0; x < bytes; ++x) {
        const std::uint8_t own = row[x];
        if (x % 4 != 3) row[x] = VectorLane(own, above[x], level);
        above[x] = own;
    }
}

void emboss_effect_component_mmx(unsigned char* data, unsigned width, unsigned pitch, unsigned height, unsigned level) {
    EmbossVectorised(ComponentView{data, width, pitch, height}, level, BestInstructionSet());
}

void emboss_effect_rgba32_mmx(unsigned char* data, unsigned width, unsigned pitch, unsigned height, unsigned level) {
    EmbossVectorised(PackedView{data, width, pitch, height}, level, BestInstructionSet());
}

CEmbossVideoImageEffect::CEmbossVideoImageEffect() : CSettingsEffect(effectNameEmboss, properties) {
    if (HasVectorUnit(AVBasedGetCPUFeatures())) {
        emboss_effect_component = emboss_effect_component_mmx;
        emboss_effect_rgba32 = emboss_effect_rgba32_mmx;
    }
}

void CEmbossVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    const unsigned level = unsigned(m_settings.level);
    ForEachPlane(*frame, Planes::Colours, [&]<class Sample>(const PlaneView<Sample>& plane) {
        constexpr bool packed = sizeof(Sample) == sizeof(Rgba32);
        const EmbossRoutine routine = packed ? emboss_effect_rgba32 : emboss_effect_component;
        if (routine == (packed ? emboss_effect_rgba32_mmx : emboss_effect_component_mmx))
            EmbossVectorised(plane, level, Instructions());
        else
            routine(plane.data, plane.width, plane.pitch, plane.height, level);
    });
}

}  // namespace AVBased
