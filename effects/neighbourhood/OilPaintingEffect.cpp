#include "effects/neighbourhood/OilPaintingEffect.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "effects/neighbourhood/OilPaintingEffect_avx2.h"

namespace AVBased {
namespace {

// Deliberate: coarseness is registered as 3 while the member starts at 50.
constexpr Property<OilPaintingSettings> oilPaintingProperties[] = {
    {"oilpainting_brushsize", "3", &OilPaintingSettings::radius},
    {"oilpainting_coarseness", "3", &OilPaintingSettings::coarseness},
};

constexpr unsigned mostClasses = 256, blockClasses = 16;

// Counts and channel sums of the brush, by class. Wraps like the 32-bit counters that it is made of.
struct Histogram {
    std::uint32_t count[mostClasses] = {};
    std::uint32_t sum[mostClasses][4] = {};

    void Add(std::uint32_t pixel) {
        const unsigned group = pixel >> 24;
        ++count[group];
        for (unsigned k = 0; k < 4; ++k) sum[group][k] += pixel >> 8 * k & 255;
    }
    void Remove(std::uint32_t pixel) {
        const unsigned group = pixel >> 24;
        --count[group];
        for (unsigned k = 0; k < 4; ++k) sum[group][k] -= pixel >> 8 * k & 255;
    }
    // The lowest of the most frequent classes.
    unsigned Mode(unsigned classes) const {
        std::uint32_t most = 0;
        unsigned mode = 0;
        for (unsigned block = 0; block < classes; block += blockClasses) {
            std::uint32_t highest = 0;
            for (unsigned c = block; c < block + blockClasses; ++c) highest = std::max(highest, count[c]);
            if (highest <= most) continue;
            most = highest;
            mode = block;
        }
        while (count[mode] != most) ++mode;
        return mode;
    }
    std::uint8_t Mean(unsigned group, unsigned channel) const {
        return std::uint8_t(sum[group][channel] / count[group]);
    }
};

// The last rows of a picture as it was before painting: a pixel's three channels and, in the top byte, its class.
class UnpaintedRows {
 public:
    UnpaintedRows(OilPicture& picture, const OilPaintingSettings& settings, std::size_t rows)
        : m_picture(picture),
          m_coarseness(settings.coarseness),
          m_rows(rows),
          m_pixels(rows * picture.width),
          m_channels(std::size_t(3) * picture.width) {}

    const std::uint32_t* Row(std::size_t y) const { return m_pixels.data() + y % m_rows * m_picture.width; }
    void ReadUpTo(std::size_t end) {
        std::uint8_t* const channel[3] = {Channel(0), Channel(1), Channel(2)};
        for (; m_next < end; ++m_next) {
            m_picture.Read(unsigned(m_next), channel);
            std::uint32_t* const row = m_pixels.data() + m_next % m_rows * m_picture.width;
            for (unsigned x = 0; x < m_picture.width; ++x)
                row[x] = std::uint32_t(OilClass(channel[m_picture.intensity][x], m_coarseness)) << 24 |
                         channel[2][x] << 16 | channel[1][x] << 8 | channel[0][x];
        }
    }
    std::uint8_t* Channel(unsigned k) { return m_channels.data() + std::size_t(k) * m_picture.width; }

 private:
    OilPicture& m_picture;
    std::uint32_t m_coarseness;
    std::size_t m_rows, m_next = 0;
    std::vector<std::uint32_t> m_pixels;
    std::vector<std::uint8_t> m_channels;
};

// Paints with one histogram that slides along each row.
void PaintBySliding(OilPicture& picture, const OilPaintingSettings& settings) {
    const std::size_t width = picture.width, height = picture.height;
    if (width == 0 || height == 0) return;
    // A brush that reaches past every edge is no different for reaching further.
    const std::size_t down = std::min<std::size_t>(settings.radius, height),
                      across = std::min<std::size_t>(settings.radius, width);
    const unsigned classes = OilClass(255, settings.coarseness) + 1u;
    UnpaintedRows rows(picture, settings, std::min(2 * down + 1, height));
    std::vector<const std::uint32_t*> brush;
    for (std::size_t y = 0; y < height; ++y) {
        const std::size_t top = y - std::min(y, down), bottom = std::min(y + down + 1, height);
        rows.ReadUpTo(bottom);
        Histogram histogram;
        brush.clear();
        for (std::size_t row = top; row < bottom; ++row) brush.push_back(rows.Row(row));
        const auto addColumn = [&](std::size_t x) {
            for (const std::uint32_t* row : brush) histogram.Add(row[x]);
        };
        const auto removeColumn = [&](std::size_t x) {
            for (const std::uint32_t* row : brush) histogram.Remove(row[x]);
        };
        for (std::size_t x = 0; x < across; ++x) addColumn(x);
        std::uint8_t* const channel[3] = {rows.Channel(0), rows.Channel(1), rows.Channel(2)};
        for (std::size_t x = 0; x < width; ++x) {
            if (x + across < width) addColumn(x + across);
            const unsigned mode = histogram.Mode(classes);
            for (unsigned k = 0; k < 3; ++k) channel[k][x] = histogram.Mean(mode, k);
            if (x >= across) removeColumn(x - across);
        }
        picture.Write(unsigned(y), channel);
    }
}

void Paint(OilPicture&& picture, const OilPaintingSettings& settings, InstructionSet set) {
    const auto& paint =
        OilStripsServe(picture, settings) ? variantsOf<PaintBySliding, PaintByStripsAvx2> : variantsOf<PaintBySliding>;
    paint.For(set)(picture, settings);
}

void OilPaintingRgba32Effect(const PackedView& view, const OilPaintingSettings& settings, InstructionSet set) {
    Paint(PackedOilPicture(view, set), settings, set);
}

void OilPaintingComponentEffect(const PlanarView& view, const OilPaintingSettings& settings, InstructionSet set) {
    Paint(PlanarOilPicture(view, set), settings, set);
}

}  // namespace

COilPaintingVideoImageEffect::COilPaintingVideoImageEffect()
    : CSettingsEffect(effectNameOilPainting, oilPaintingProperties) {}

void COilPaintingVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    ForFrame([&](const PackedView& view) { OilPaintingRgba32Effect(view, m_settings, Instructions()); },
             [&](const PlanarView& view) { OilPaintingComponentEffect(view, m_settings, Instructions()); }, *frame);
}

}  // namespace AVBased
