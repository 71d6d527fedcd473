#include "effects/MosaicEffect.h"

#include <optional>

#include "effects/frame_views.h"
#include "effects/property_table.h"

namespace AVBased {
namespace {

constexpr Property<MosaicSettings> mosaicProperties[] = {
    {"mosaic_x1", "0", &MosaicSettings::x1},     {"mosaic_x2", "0", &MosaicSettings::x2},
    {"mosaic_y1", "0", &MosaicSettings::y1},     {"mosaic_y2", "0", &MosaicSettings::y2},
    {"mosaic_step", "0", &MosaicSettings::step},
};

// Where blocks start: at left, left + side and so on below right, and the same downwards. At least one does.
struct Blocks {
    std::size_t left, right, top, bottom, side;

    std::size_t LastStart() const { return left + (right - 1 - left) / side * side; }
    std::size_t BandEnd(std::size_t bandTop) const { return std::min(bandTop + side, bottom); }
};

std::optional<Blocks> CutIntoBlocks(const MosaicSettings& settings, unsigned width, unsigned height,
                                    unsigned leastStep) {
    if (std::max(settings.x1, settings.x2) > width || std::max(settings.y1, settings.y2) > height) return {};
    if (settings.step < leastStep) return {};
    // Deliberate: of the four limits only two are rounded, and a step of 32 starts again at single pixels.
    const std::uint32_t side = 1u << settings.step % 32, whole = ~(side - 1);
    const Blocks blocks{std::min(settings.x1, settings.x2), std::max(settings.x1, settings.x2) & whole,
                        std::min(settings.y1, settings.y2), std::max(settings.y1, settings.y2) & whole, side};
    if (blocks.left >= blocks.right || blocks.top >= blocks.bottom) return {};
    return blocks;
}

// Samples of the plane's memory from (x, y) on, over all the rows that follow.
template <class Sample>
std::size_t SamplesFrom(const PlaneView<Sample>& plane, std::size_t x, std::size_t y) {
    const std::size_t begin = y * plane.pitch + x * sizeof(Sample), end = plane.ByteCount();
    return begin < end ? (end - begin) / sizeof(Sample) : 0;
}

template <class Sample>
void Pixelate(const PlaneView<Sample>& plane, const Blocks& blocks) {
    const std::size_t last = blocks.LastStart();
    for (std::size_t bandTop = blocks.top; bandTop < blocks.bottom; bandTop += blocks.side) {
        Sample* const first = plane.Row(bandTop);
        for (std::size_t x = blocks.left; x < last; x += blocks.side)
            std::fill_n(first + x, blocks.side, Sample(first[x]));
        const Sample lastColour = first[last];
        for (std::size_t y = bandTop; y < blocks.BandEnd(bandTop); ++y) {
            Sample* const row = plane.Row(y);
            if (row != first)
                std::memcpy(row + blocks.left, first + blocks.left, (last - blocks.left) * sizeof(Sample));
            // Deliberate: the last block keeps its width even past the row's end, so it may change the start of the
            // next row, which that row then covers again from `left` on.
            std::fill_n(row + last, std::min(blocks.side, SamplesFrom(plane, last, y)), lastColour);
        }
    }
}

// One chroma plane. Deliberate: one sample for every fourth luma position is written, which leaves stripes where chroma
// is denser than that. `memory` is the plane as its owner reports it; `plane` may have another pitch.
void PixelateChroma(const ComponentView& plane, const ComponentView& memory, unsigned columnShift, unsigned rowShift,
                    const Blocks& blocks) {
    const std::size_t last = blocks.LastStart(), bytes = memory.ByteCount();
    const std::size_t luma = std::min<std::size_t>(blocks.side, 4);
    for (std::size_t bandTop = blocks.top; bandTop < blocks.bottom; bandTop += blocks.side) {
        const std::size_t source = (bandTop >> rowShift) * plane.pitch;
        for (std::size_t y = bandTop >> rowShift; y <= (blocks.BandEnd(bandTop) - 1) >> rowShift; ++y)
            for (std::size_t start = blocks.left; start <= last; start += blocks.side) {
                const std::size_t from = source + (start >> columnShift);
                if (from >= bytes) break;
                const std::uint8_t colour = plane.data[from];
                for (std::size_t x = start; x < start + blocks.side; x += luma) {
                    const std::size_t to = y * plane.pitch + (x >> columnShift);
                    if (to >= bytes) break;
                    plane.data[to] = colour;
                }
            }
    }
}

void PixelatePacked(PackedView picture, const MosaicSettings& settings, unsigned leastStep) {
    if (const auto blocks = CutIntoBlocks(settings, picture.width, picture.height, leastStep))
        Pixelate(picture, *blocks);
}

void MosaicRgba32Effect(PackedView picture, const MosaicSettings& settings) { PixelatePacked(picture, settings, 1); }

// Deliberate: what writes several samples at a time leaves blocks of two alone.
void MosaicRgba32EffectMMX(PackedView picture, const MosaicSettings& settings) { PixelatePacked(picture, settings, 2); }

void MosaicComponentEffect(PlanarView picture, const MosaicSettings& settings) {
    const ComponentView &luma = picture.plane[0], &u = picture.plane[1], &v = picture.plane[2];
    const auto blocks = CutIntoBlocks(settings, luma.width, luma.height, 2);
    if (!blocks) return;
    Pixelate(luma, *blocks);
    PixelateChroma(u, u, picture.columnShift, picture.rowShift, *blocks);
    PixelateChroma(WithPitchOf(u, v), v, picture.columnShift, picture.rowShift, *blocks);
}

}  // namespace

CMosaicVideoImageEffect::CMosaicVideoImageEffect(unsigned cpuFeatures)
    : CBasedVideoImageEffect(effectNameMosaic), m_vectorised(cpuFeatures & (cpuFeatureMmx | cpuFeatureSse2)) {
    DeclareProperties(*this, mosaicProperties);
}

void CMosaicVideoImageEffect::OnSetProperty(const std::string& name, PropertyNode& node) {
    CBasedVideoImageEffect::OnSetProperty(name, node);
    StoreProperty(m_settings, mosaicProperties, name, node);
}

void CMosaicVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    const auto packed = m_vectorised ? Pick<MosaicRgba32EffectMMX>() : Pick<MosaicRgba32Effect>();
    ForFrame([&](PackedView picture) { packed(picture, m_settings); },
             [&](PlanarView picture) { Pick<MosaicComponentEffect>()(picture, m_settings); }, *frame);
}

}  // namespace AVBased
