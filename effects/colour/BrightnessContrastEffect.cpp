#include "effects/colour/BrightnessContrastEffect.h"

#include "effects/base/row_loops.h"
#include "effects/colour/BrightnessContrastEffect_avx2.h"

namespace AVBased {
namespace {

constexpr int lineNoTable = 243;
constexpr double limit = 100;
constexpr std::size_t tones = 256;

constexpr Property<BrightnessContrastSettings> properties[] = {
    {"brightness", "0", &BrightnessContrastSettings::brightness},
    {"contrast", "0", &BrightnessContrastSettings::contrast},
    {"saturation", "0", &BrightnessContrastSettings::saturation},
};

std::int32_t Slope(double contrast) { return TruncateToInt32((contrast / 100 + 1) * 256); }

void ChangeTonesRgba32(PackedView picture, const PackedTones& tones) {
    ForEachPixel(picture, [table = tones.table](std::uint32_t p) {
        return WithAlphaOf(p, std::uint32_t(table[Blue(p)]), std::uint32_t(table[Green(p)]),
                           std::uint32_t(table[Red(p)]));
    });
}

void ChangeColoursRgba32(PackedView picture, const PackedTones& tones) {
    ForEachPixel(picture, [table = tones.table, factor = tones.colourFactor](std::uint32_t p) {
        const std::int32_t blue = table[Blue(p)], green = table[Green(p)], red = table[Red(p)];
        const std::int32_t mean = (blue + green + red) / 3;
        const auto moved = [=](std::int32_t colour) { return ClampToByte(mean + ((colour - mean) * factor >> 8)); };
        return WithAlphaOf(p, moved(blue), moved(green), moved(red));
    });
}

void ChangeTonesComponent(ComponentView plane, ToneLine line) { ForEachSample(plane, line); }

}  // namespace

ToneLine BrightnessContrastSettings::PackedTones() const {
    return {Slope(contrast), TruncateToInt32(brightness * 255 / 100) + 127};
}

ToneLine BrightnessContrastSettings::LumaTones() const {
    return {Slope(contrast), TruncateToInt32(1.27 * brightness) + 127};
}

std::int32_t BrightnessContrastSettings::ColourFactor() const { return TruncateToInt32((100 + saturation) * 5.12); }

CBrightnessContrastEffect::CBrightnessContrastEffect()
    : CSettingsEffect(effectNameBrightnessContrast, properties), m_table(tones, lineNoTable) {
    FillTable();
}

// Deliberate: the host reads the clamped number back.
void CBrightnessContrastEffect::OnParsed(PropertyNode& node) {
    if (node.type != typeReal) return;
    const double value = node.Value<double>();
    if (value < -limit || value > limit) {
        node.SetValue(value < 0 ? -limit : limit);
        node.text = value < 0 ? "-100" : "100";
    }
}

void CBrightnessContrastEffect::FillTable() {
    const ToneLine line = m_settings.PackedTones();
    for (std::size_t tone = 0; tone < tones; ++tone) m_table[tone] = line(std::int32_t(tone));
}

void CBrightnessContrastEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    const InstructionSet set = Instructions();
    const bool tonesChange = m_settings.ChangesTones(), coloursChange = m_settings.saturation != 0;
    ForFrame(
        [&](PackedView picture) {
            const PackedTones tones{m_table.get(), m_settings.PackedTones(), m_settings.ColourFactor()};
            if (coloursChange)
                variantsOf<ChangeColoursRgba32, ChangeColoursRgba32Avx2>.For(set)(picture, tones);
            else if (tonesChange)
                variantsOf<ChangeTonesRgba32, ChangeTonesRgba32Avx2>.For(set)(picture, tones);
        },
        [&](const PlanarView& picture) {
            const auto change = variantsOf<ChangeTonesComponent, ChangeTonesComponentAvx2>.For(set);
            if (tonesChange) change(picture.plane[0], m_settings.LumaTones());
            if (!coloursChange) return;
            const ToneLine colours{m_settings.ColourFactor(), 127};
            change(picture.plane[1], colours);
            change(picture.plane[2], colours);
        },
        *frame);
}

}  // namespace AVBased
