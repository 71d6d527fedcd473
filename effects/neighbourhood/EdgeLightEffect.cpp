#include "effects/neighbourhood/EdgeLightEffect.h"

#include <cmath>
#include <limits>

#include "effects/base/frame_views.h"
#include "effects/neighbourhood/EdgeLightEffect_avx2.h"

namespace AVBased {
namespace {

constexpr Property<EdgeLightSettings> properties[] = {
    {"edgelight_level", "3", &EdgeLightSettings::level},
};

// Deliberate: only the low byte is kept, so strong edges wrap around.
std::uint8_t Gradient(std::uint8_t here, std::uint8_t right, std::uint8_t below, double level) {
    constexpr double highest = std::numeric_limits<std::uint32_t>::max();
    const int toRight = here - right, toBelow = here - below;
    const double length = std::sqrt(double(toRight * toRight + toBelow * toBelow)) * level;
    return std::uint8_t(std::uint64_t(std::min(length, highest)));
}

}  // namespace

void GradientComponentRow(unsigned char* row, unsigned bytes, unsigned pitch, unsigned level, unsigned char bias) {
    for (unsigned x = 0; x < bytes; ++x)
        row[x] = std::uint8_t(Gradient(row[x], row[x + 1], row[x + std::size_t(pitch)], level) + bias);
}

void GradientRgba32Row(unsigned char* row, unsigned bytes, unsigned pitch, unsigned level, unsigned char) {
    for (unsigned x = 0; x < bytes; ++x)
        if (x % 4 < 3) row[x] = Gradient(row[x], row[x + 4], row[x + std::size_t(pitch)], level);
}

void CEdgeLightVideoImageEffect::EdgeLightRgba32Effect(unsigned char* data, unsigned width, unsigned pitch,
                                                       unsigned height) const {
    const auto gradients = variantsOf<GradientRgba32Row, GradientRgba32RowAvx2>.For(Instructions());
    if (width == 0) return;
    for (unsigned y = 0; y + 1 < height; ++y)
        gradients(data + std::size_t(y) * pitch, (width - 1) * unsigned(sizeof(Rgba32)), pitch, m_settings.level, 0);
}

// Deliberate: the last column's right neighbour is the byte after the row, padding or the next row's first sample. It
// is inside the plane, since the last row keeps its values.
void CEdgeLightVideoImageEffect::EdgeLightComponent(unsigned char* data, unsigned width, unsigned pitch,
                                                    unsigned height, unsigned char bias) const {
    const auto gradients = variantsOf<GradientComponentRow, GradientComponentRowAvx2>.For(Instructions());
    for (unsigned y = 0; y + 1 < height; ++y)
        gradients(data + std::size_t(y) * pitch, width, pitch, m_settings.level, bias);
}

void CEdgeLightVideoImageEffect::EdgeLightCompYEffect(unsigned char* data, unsigned width, unsigned pitch,
                                                      unsigned height) const {
    EdgeLightComponent(data, width, pitch, height, 0);
}

void CEdgeLightVideoImageEffect::EdgeLightCompUVEffect(unsigned char* data, unsigned width, unsigned pitch,
                                                       unsigned height) const {
    EdgeLightComponent(data, width, pitch, height, 128);
}

CEdgeLightVideoImageEffect::CEdgeLightVideoImageEffect() : CSettingsEffect(effectNameEdgeLight, properties) {}

void CEdgeLightVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    ForFrame(
        [this](const PackedView& picture) {
            EdgeLightRgba32Effect(picture.data, picture.width, picture.pitch, picture.height);
        },
        [this](const PlanarView& picture) {
            const auto &luma = picture.plane[0], &u = picture.plane[1], &v = picture.plane[2];
            EdgeLightCompYEffect(luma.data, luma.width, luma.pitch, luma.height);
            EdgeLightCompUVEffect(u.data, u.width, u.pitch, u.height);
            EdgeLightCompUVEffect(v.data, v.width, v.pitch, v.height);
        },
        *frame);
}

}  // namespace AVBased
