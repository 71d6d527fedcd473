#include "effects/light/RadiateEffect.h"

#include "effects/light/RadiateEffect_avx2.h"

namespace AVBased {
namespace {

constexpr Property<RadiateSettings> radiateProperties[] = {
    {"radiate_x", "300", &RadiateSettings::x},
    {"radiate_y", "300", &RadiateSettings::y},
    {"radiate_level", "300", &RadiateSettings::level},
};

// Deliberate: 17 values are summed and divided by 16. A bias below 0 that outweighs the sum wraps round to white.
std::uint32_t Mean(std::uint32_t sum, std::uint32_t bias) { return std::min((sum >> 4) + bias, 255u); }

}  // namespace

void RadiateRgba32Effect(const RadiateAxis& columns, const RadiateAxis& rows, std::uint32_t bias, const PackedView& to,
                         const PackedView& from) {
    for (unsigned y = 0; y < rows.size(); ++y)
        for (unsigned x = 0; x < columns.size(); ++x) {
            const Rgba32 own = from.Row(y)[x];
            std::uint32_t blue = own.blue, green = own.green, red = own.red;
            for (unsigned k = 0; k < radiateSamples; ++k) {
                const Rgba32& sample = from.Row(rows[y][k])[columns[x][k]];
                blue += sample.blue;
                green += sample.green;
                red += sample.red;
            }
            to.Row(y)[x] = {std::uint8_t(Mean(blue, bias)), std::uint8_t(Mean(green, bias)),
                            std::uint8_t(Mean(red, bias)), own.alpha};
        }
}

void RadiateComponentEffect(const RadiateAxis& columns, const RadiateAxis& rows, std::uint32_t bias,
                            const ComponentView& to, const ComponentView& from) {
    for (unsigned y = 0; y < rows.size(); ++y)
        for (unsigned x = 0; x < columns.size(); ++x) {
            std::uint32_t sum = from.Row(y)[x];
            for (unsigned k = 0; k < radiateSamples; ++k) sum += from.Row(rows[y][k])[columns[x][k]];
            to.Row(y)[x] = std::uint8_t(Mean(sum, bias));
        }
}

CRadiateVideoImageEffect::CRadiateVideoImageEffect() : CSettingsEffect(effectNameRadiate, radiateProperties) {}

void CRadiateVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    const auto x = m_settings.x, y = m_settings.y, level = m_settings.level;
    const std::uint32_t bias = std::uint32_t(level >> 3);
    const FrameCopy source(*frame);
    ForFrame(
        [&](const PackedView& to) {
            variantsOf<RadiateRgba32Effect, RadiateRgba32EffectAvx2>.For(Instructions())(
                {ColumnsOf(to), x, level}, {RowsOf(to), y, level}, bias, to, source.Of(to));
        },
        [&](const PlanarView& to) {
            const PlanarView from = source.Of(to);
            for (unsigned p = 0; p < 3; ++p)
                variantsOf<RadiateComponentEffect, RadiateComponentEffectAvx2>.For(Instructions())(
                    {ColumnsOf(to, p), x, level}, {RowsOf(to, p), y, level}, IsChroma(p) ? 0 : bias, to.plane[p],
                    from.plane[p]);
        },
        *frame);
}

}  // namespace AVBased
