#include "effects/EdgeLightEffect.h"

#include <cmath>
#include <limits>

#include "effects/frame_views.h"
#include "effects/property_table.h"

namespace AVBased {
namespace {

constexpr Property<CEdgeLightVideoImageEffect::Settings> properties[] = {
    {"edgelight_level", "3", &CEdgeLightVideoImageEffect::Settings::level},
};

// Deliberate: only the low byte is kept, so strong edges wrap around.
std::uint8_t Gradient(std::int32_t toRight, std::int32_t toBelow, double level) {
    constexpr double highest = std::numeric_limits<std::uint32_t>::max();
    const double length = std::sqrt(double(toRight * toRight + toBelow * toBelow)) * level;
    return std::uint8_t(std::uint64_t(std::min(length, highest)));
}

// Deliberate: the last column's right neighbour is the byte behind the row, padding or the next row's first sample; it
// is inside the plane since the last row keeps its values.
void EdgeLightComponent(ComponentView plane, double level, std::uint8_t bias) {
    for (unsigned y = 0; y + 1 < plane.height; ++y) {
        std::uint8_t* const row = plane.Row(y);
        const std::uint8_t* const below = plane.Row(y + 1);
        for (unsigned x = 0; x < plane.width; ++x)
            row[x] = std::uint8_t(Gradient(row[x] - row[x + 1], row[x] - below[x], level) + bias);
    }
}

}  // namespace

void CEdgeLightVideoImageEffect::EdgeLightRgba32Effect(unsigned char* data, unsigned width, unsigned pitch,
                                                       unsigned height) const {
    const PackedView picture{data, width, pitch, height};
    const double level = m_settings.level;
    for (unsigned y = 0; y + 1 < height; ++y) {
        Rgba32* const row = picture.Row(y);
        const Rgba32* const below = picture.Row(y + 1);
        for (unsigned x = 0; x + 1 < width; ++x) {
            const Rgba32 here = row[x], right = row[x + 1];
            row[x].blue = Gradient(here.blue - right.blue, here.blue - below[x].blue, level);
            row[x].green = Gradient(here.green - right.green, here.green - below[x].green, level);
            row[x].red = Gradient(here.red - right.red, here.red - below[x].red, level);
        }
    }
}

void CEdgeLightVideoImageEffect::EdgeLightCompYEffect(unsigned char* data, unsigned width, unsigned pitch,
                                                      unsigned height) const {
    EdgeLightComponent({data, width, pitch, height}, m_settings.level, 0);
}

void CEdgeLightVideoImageEffect::EdgeLightCompUVEffect(unsigned char* data, unsigned width, unsigned pitch,
                                                       unsigned height) const {
    EdgeLightComponent({data, width, pitch, height}, m_settings.level, 128);
}

CEdgeLightVideoImageEffect::CEdgeLightVideoImageEffect() : CBasedVideoImageEffect("edgelight") {
    DeclareProperties(*this, properties);
}

void CEdgeLightVideoImageEffect::OnSetProperty(const std::string& name, PropertyNode& node) {
    CBasedVideoImageEffect::OnSetProperty(name, node);
    StoreProperty(m_settings, properties, name, node);
}

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
