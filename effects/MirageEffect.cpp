#include "effects/MirageEffect.h"

#include "effects/coordinate_table.h"
#include "effects/property_table.h"

namespace AVBased {
namespace {

constexpr Property<MirageSettings> mirageProperties[] = {
    {"mirage_width", "10", &MirageSettings::width},
    {"mirage_alpha", "10", &MirageSettings::alpha},
};

// One axis of the enlargement in 16.16: the source of the first position, and the step to the next one's.
struct ZoomAxis {
    std::uint32_t first, step;

    ZoomAxis(std::uint32_t factor, unsigned size) {
        const std::uint32_t zoom = (factor << 16) / 200;
        step = 0xC80000 / factor;
        first = ((zoom * size >> 16) - size) * step >> 1;
    }
    unsigned At(unsigned position) const { return (first + position * step) >> 16; }
};

template <class Place>
void Zoom(const ZoomAxis& across, const ZoomAxis& down, unsigned width, unsigned height, Place place) {
    for (unsigned y = 0; y < height; ++y)
        for (unsigned x = 0; x < width; ++x) place(x, y, {across.At(x), down.At(y)});
}

// The weights of the picture and of its enlarged copy, in 1/256.
struct Blend {
    std::uint32_t weight;

    explicit Blend(std::uint32_t alpha) : weight(((alpha + 40) << 7) / 100) {}
    std::uint8_t operator()(std::uint8_t source, std::uint8_t zoomed) const {
        return std::uint8_t((source * (256 - weight) + zoomed * weight) >> 8);
    }
};

void BlendRgba32(const Blend& blend, const PackedView& to, const PackedView& from) {
    for (unsigned y = 0; y < to.height; ++y)
        for (unsigned x = 0; x < to.width; ++x) {
            Rgba32& p = to.Row(y)[x];
            const Rgba32 s = from.Row(y)[x];
            p = {blend(s.blue, p.blue), blend(s.green, p.green), blend(s.red, p.red), p.alpha};
        }
}

void BlendComponent(const Blend& blend, const PlanarView& to, const PlanarView& from) {
    for (unsigned y = 0; y < to.plane[0].height; ++y)
        for (unsigned x = 0; x < to.plane[0].width; ++x)
            // Deliberate: a chroma sample is blended again for each luma position that it covers.
            for (unsigned p = 0; p < 3; ++p)
                if (std::uint8_t* const sample = to.At(p, x, y)) *sample = blend(*from.At(p, x, y), *sample);
}

}  // namespace

CMirageVideoImageEffect::CMirageVideoImageEffect() : CBasedVideoImageEffect(effectNameMirage) {
    DeclareProperties(*this, mirageProperties);
}

void CMirageVideoImageEffect::OnSetProperty(const std::string& name, PropertyNode& node) {
    CBasedVideoImageEffect::OnSetProperty(name, node);
    StoreProperty(m_settings, mirageProperties, name, node);
}

void CMirageVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    const std::uint32_t factor = m_settings.width + 200;
    if (m_settings.alpha > 100 || factor == 0) return;
    const Blend blend(m_settings.alpha);
    const FrameCopy source(*frame);
    ForFrame(
        [&](const PackedView& to, const PackedView& from) {
            Zoom({factor, to.width}, {factor, to.height}, to.width, to.height, PlacePacked{to, from});
            BlendRgba32(blend, to, from);
        },
        [&](const PlanarView& to, const PlanarView& from) {
            const auto [data, width, pitch, height] = to.plane[0];
            Zoom({factor, width}, {factor, height}, width, height, PlacePlanar{to, from});
            BlendComponent(blend, to, from);
        },
        *frame, *source);
}

}  // namespace AVBased
