#include "effects/light/FadeEffects.h"

#include "effects/base/row_loops.h"

namespace AVBased {
namespace {

constexpr Property<FadeSettings> fadeProperties[] = {
    {"FadeMin", "0", &FadeSettings::lowest},
    {"FadeMax", "255", &FadeSettings::highest},
};

// A level beyond 256 keeps the low byte of the product; bits of the level above the low sixteen never reach it.
void FadeRgba32Effect(PackedView picture, std::uint32_t level) {
    ForEachPixel(picture, [factor = level << 16](std::uint32_t p) {
        return (p & ~alphaMask) | ((p >> 24) * factor & alphaMask);
    });
}

void FadeComponentEffect(PlanarView picture, std::uint32_t level) {
    ForEachSample(picture.plane[3], [factor = std::uint16_t(level)](std::uint8_t alpha) {
        return std::uint8_t(std::uint16_t(alpha * std::uint32_t(factor)) >> 8);
    });
}

void ScaleOpacity(IRawVideoFrame& frame, std::uint32_t level, InstructionSet set) {
    ForFrame([&](PackedView picture) { variantsOf<FadeRgba32Effect>.For(set)(picture, level); },
             [&](PlanarView picture) { variantsOf<FadeComponentEffect>.For(set)(picture, level); }, frame);
}

constexpr std::uint32_t wholeLevel = 256;

constexpr Property<TransparencySettings> transparencyProperties[] = {
    {"transparency_opacity", "50", &TransparencySettings::opacity},
};

}  // namespace

void fade_in_out_direct_rgba32_c(unsigned char* data, unsigned width, unsigned pitch, unsigned height, unsigned level) {
    const PackedView picture{data, width / unsigned(sizeof(Rgba32)), pitch, height};
    ForEachPixel(picture, [factor = std::min(level, wholeLevel)](std::uint32_t p) {
        constexpr std::uint32_t blueAndRed = 0xFF00FF, green = 0xFF00;
        return (p & alphaMask) | ((p & blueAndRed) * factor >> 8 & blueAndRed) | ((p & green) * factor >> 8 & green);
    });
}

void fade_in_out_direct_component_c(unsigned char* data, unsigned width, unsigned pitch, unsigned height,
                                    unsigned level, unsigned rest) {
    const ComponentView plane{data, width, pitch, height};
    // All in 16 bits: the sum stays below 2^16.
    const auto factor = std::uint16_t(std::min(level, wholeLevel));
    const auto base = std::uint16_t(rest * (wholeLevel - factor) + wholeLevel / 2);
    ForEachSample(plane, [=](std::uint8_t sample) {
        return std::uint8_t(std::uint16_t(std::uint16_t(sample * std::uint32_t(factor)) + base) >> 8);
    });
}

CFadeVideoImageEffect::CFadeVideoImageEffect(const char* name, Direction direction)
    : CSettingsEffect(name, fadeProperties), m_direction(direction) {}

std::uint32_t CFadeVideoImageEffect::Level(std::uint32_t position, std::uint32_t duration) const {
    const std::uint32_t elapsed = m_direction == Direction::In ? position : duration - position;
    const std::uint32_t level = elapsed * 256 / duration;
    // Deliberate: the limits are compared unsigned too, and the lower one is asked first.
    const std::uint32_t lowest = std::uint32_t(m_settings.lowest), highest = std::uint32_t(m_settings.highest);
    return level < lowest ? lowest : std::min(level, highest);
}

void CFadeVideoImageEffect::InnerProcFrame(ImagePostion*, int position, IRawVideoFrame* frame) {
    if (position == noPosition) position = frame->GetTimeStamp();
    // Deliberate: unsigned, so that a position before the start lies past the end.
    const std::uint32_t place = std::uint32_t(position), duration = std::uint32_t(GetDuration());
    if (place > duration || duration == 0) return;
    const std::uint32_t level = Level(place, duration);
    Scale(*frame, level);
}

void CFadeVideoImageEffect::Scale(IRawVideoFrame& frame, std::uint32_t level) {
    ScaleOpacity(frame, level, Instructions());
}

void CDirectFadeEffect::Scale(IRawVideoFrame& frame, std::uint32_t level) {
    ForFrame(
        [&](const PackedView& picture) {
            variantsOf<fade_in_out_direct_rgba32_c>.For(Instructions())(
                picture.data, picture.width * unsigned(sizeof(Rgba32)), picture.pitch, picture.height, level);
        },
        [&](const PlanarView& picture) {
            for (unsigned p = 0; p < 3; ++p) {
                const ComponentView& plane = picture.plane[p];
                variantsOf<fade_in_out_direct_component_c>.For(Instructions())(plane.data, plane.width, plane.pitch,
                                                                               plane.height, level, p == 0 ? 16 : 128);
            }
        },
        frame);
}

CTransparencyAjustEffect::CTransparencyAjustEffect()
    : CSettingsEffect(effectNameTransparency, transparencyProperties) {}

void CTransparencyAjustEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    const std::uint32_t opacity = std::uint32_t(std::clamp(m_settings.opacity, 0, 100));
    ScaleOpacity(*frame, opacity * 256 / 100, Instructions());
}

}  // namespace AVBased
