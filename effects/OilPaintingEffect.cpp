#include "effects/OilPaintingEffect.h"

#include <vector>

#include "effects/frame_views.h"
#include "effects/oil_picture.h"
#include "effects/property_table.h"

namespace AVBased {
namespace {

// Deliberate: coarseness is registered as 3 while the member starts at 50.
constexpr Property<OilPaintingSettings> oilPaintingProperties[] = {
    {"oilpainting_brushsize", "3", &OilPaintingSettings::radius},
    {"oilpainting_coarseness", "3", &OilPaintingSettings::coarseness},
};

class PackedOilPicture final : public OilPicture {
 public:
    explicit PackedOilPicture(const PackedView& view) : m_view(view) {
        width = view.width;
        height = view.height;
        intensity = 1;
    }
    void Read(unsigned y, std::uint8_t* const channel[3]) override {
        const Rgba32* const row = m_view.Row(y);
        for (unsigned x = 0; x < width; ++x) {
            channel[0][x] = row[x].blue;
            channel[1][x] = row[x].green;
            channel[2][x] = row[x].red;
        }
    }
    void Write(unsigned y, const std::uint8_t* const channel[3]) override {
        Rgba32* const row = m_view.Row(y);
        // Deliberate: paint has no alpha.
        for (unsigned x = 0; x < width; ++x) row[x] = {channel[0][x], channel[1][x], channel[2][x], 0};
    }

 private:
    PackedView m_view;
};

class PlanarOilPicture final : public OilPicture {
 public:
    explicit PlanarOilPicture(const PlanarView& view)
        : m_luma(view.plane[0]), m_chroma{view.plane[1], WithPitchOf(view.plane[1], view.plane[2])} {
        width = m_luma.width;
        height = m_luma.height;
        columnShift = view.columnShift;
        rowShift = view.rowShift;
    }
    void Read(unsigned y, std::uint8_t* const channel[3]) override {
        std::copy_n(m_luma.Row(y), width, channel[0]);
        for (unsigned p = 0; p < 2; ++p) ReadChroma(m_chroma[p], y, m_lastRead[p], channel[1 + p]);
    }
    void Write(unsigned y, const std::uint8_t* const channel[3]) override {
        std::copy_n(channel[0], width, m_luma.Row(y));
        const bool lastOfItsRow = y + 1 == height || y >> rowShift != (y + 1) >> rowShift;
        if (!lastOfItsRow) return;
        for (unsigned p = 0; p < 2; ++p) WriteChroma(m_chroma[p], y >> rowShift, channel[1 + p]);
    }

 private:
    // Repeats the samples so that each stands under its luma. Where a plane ends early its last ones serve; a row that
    // serves twice is kept, since by then the plane may hold paint.
    void ReadChroma(const ComponentView& plane, unsigned y, std::vector<std::uint8_t>& kept, std::uint8_t* to) {
        if (plane.Contains(0, 0) && y >> rowShift << rowShift == y && y >> rowShift < plane.height)
            kept.assign(plane.Row(y >> rowShift), plane.Row(y >> rowShift) + plane.width);
        if (kept.empty()) kept.assign(1, 0);
        for (unsigned x = 0; x < width; ++x) to[x] = kept[std::min<std::size_t>(x >> columnShift, kept.size() - 1)];
    }
    void WriteChroma(const ComponentView& plane, unsigned row, const std::uint8_t* from) const {
        if (row >= plane.height) return;
        for (unsigned column = 0; column < plane.width && column <= (width - 1) >> columnShift; ++column) {
            const unsigned lastOfItsColumn = (column << columnShift) + (1u << columnShift) - 1;
            plane.Row(row)[column] = from[std::min(lastOfItsColumn, width - 1)];
        }
    }

    ComponentView m_luma, m_chroma[2];
    std::vector<std::uint8_t> m_lastRead[2];
};

void Paint(OilPicture& picture, const OilPaintingSettings& settings, InstructionSet set) {
    if (set == InstructionSet::Avx2 && PaintByVectors(picture, settings)) return;
    PaintBySliding(picture, settings);
}

void OilPaintingRgba32Effect(const PackedView& view, const OilPaintingSettings& settings, InstructionSet set) {
    PackedOilPicture picture(view);
    Paint(picture, settings, set);
}

void OilPaintingComponentEffect(const PlanarView& view, const OilPaintingSettings& settings, InstructionSet set) {
    PlanarOilPicture picture(view);
    Paint(picture, settings, set);
}

}  // namespace

COilPaintingVideoImageEffect::COilPaintingVideoImageEffect() : CBasedVideoImageEffect(effectNameOilPainting) {
    DeclareProperties(*this, oilPaintingProperties);
}

void COilPaintingVideoImageEffect::OnSetProperty(const std::string& name, PropertyNode& node) {
    CBasedVideoImageEffect::OnSetProperty(name, node);
    StoreProperty(m_settings, oilPaintingProperties, name, node);
}

void COilPaintingVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    ForFrame([&](const PackedView& view) { OilPaintingRgba32Effect(view, m_settings, Instructions()); },
             [&](const PlanarView& view) { OilPaintingComponentEffect(view, m_settings, Instructions()); }, *frame);
}

}  // namespace AVBased
