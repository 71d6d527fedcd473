#include "effects/FadeEffects.h"

#include "effects/property_table.h"
#include "effects/row_loops.h"

namespace AVBased {
namespace {

using Settings = CFadeVideoImageEffect::Settings;

constexpr Property<Settings> fadeProperties[] = {
    {"FadeMin", "0", &Settings::lowest},
    {"FadeMax", "255", &Settings::highest},
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

}  // namespace

CFadeVideoImageEffect::CFadeVideoImageEffect(const char* name, Direction direction)
    : CBasedVideoImageEffect(name), m_direction(direction) {
    DeclareProperties(*this, fadeProperties);
}

void CFadeVideoImageEffect::OnSetProperty(const std::string& name, PropertyNode& node) {
    CBasedVideoImageEffect::OnSetProperty(name, node);
    StoreProperty(m_settings, fadeProperties, name, node);
}

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
    ForFrame([&](PackedView picture) { Pick<FadeRgba32Effect>()(picture, level); },
             [&](PlanarView picture) { Pick<FadeComponentEffect>()(picture, level); }, *frame);
}

}  // namespace AVBased
