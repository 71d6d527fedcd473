#include "effects/TensileEffect.h"

#include <algorithm>
#include <numeric>

#include "avbase/avbase.h"
#include "effects/coordinate_table.h"
#include "effects/fixed_point.h"
#include "effects/property_table.h"

namespace AVBased {
namespace {

constexpr Property<TensileSettings> tensileProperties[] = {
    {"tensile_vertical", "0", &TensileSettings::vertical},
    {"tensile_vertical_y1", "0", &TensileSettings::verticalY1},
    {"tensile_vertical_y2", "0", &TensileSettings::verticalY2},
    {"tensile_vertical_scale", "0", &TensileSettings::verticalScale},
    {"tensile_horizontal", "0", &TensileSettings::horizontal},
    {"tensile_horizontal_x1", "0", &TensileSettings::horizontalX1},
    {"tensile_horizontal_x2", "0", &TensileSettings::horizontalX2},
    {"tensile_horizontal_scale", "0", &TensileSettings::horizontalScale},
};

bool CanBeStretched(const TensileBand& band, unsigned size) {
    return !(band.end > size || band.end <= band.begin || band.scale < 1.0);
}

std::uint32_t StepInBand(const TensileBand& band) { return TruncateToUint32(256.0 / band.scale); }
std::uint32_t LengthOfBand(const TensileBand& band) { return TruncateToUint32(band.scale * (band.end - band.begin)); }

// A map of `size` entries that is filled from its first to its last.
class Map {
 public:
    explicit Map(unsigned size) : m_size(size) { m_entries.reserve(size); }
    /// Appends first, first + step / 256, first + 2 step / 256 and so on; what passes the map's end is dropped.
    void Append(std::uint32_t count, std::uint32_t first, std::uint32_t step) {
        count = std::min(count, m_size - unsigned(m_entries.size()));
        std::uint32_t accumulator = 0;
        for (; count > 0; --count, accumulator += step)
            m_entries.push_back(std::min(first + (accumulator >> 8), m_size - 1));
    }
    unsigned Left() const { return m_size - unsigned(m_entries.size()); }
    std::vector<unsigned> Take() { return std::move(m_entries); }

 private:
    unsigned m_size;
    std::vector<unsigned> m_entries;
};

}  // namespace

std::vector<unsigned> TensileColumns(const TensileBand& band, unsigned width) {
    if (!CanBeStretched(band, width)) return {};
    const std::uint32_t length = LengthOfBand(band), step = StepInBand(band);
    const std::uint32_t grow = (length - (band.end - band.begin)) >> 1;
    const std::uint32_t left = band.begin - grow, right = band.end + grow;
    Map map(width);
    if (std::int32_t(left) > 0) {
        map.Append(left, 0, (band.begin << 8) / left);
        if (width > right) {
            map.Append(length, band.begin, step);
            map.Append(width - right, band.end, ((width - band.end) << 8) / (width - right));
        } else {
            map.Append(map.Left(), band.begin, step);
        }
    } else {
        const std::uint32_t shown = std::min(width, right), hidden = (grow - band.begin) * step >> 8;
        map.Append(shown, hidden + band.begin, step);
        if (width > shown) map.Append(width - shown, band.end, ((width - band.end) << 8) / (width - shown));
    }
    return map.Take();
}

std::vector<unsigned> TensileRows(const TensileBand& band, unsigned height) {
    if (!CanBeStretched(band, height)) return {};
    const std::uint32_t length = LengthOfBand(band), step = StepInBand(band);
    Map map(height);
    if (length < band.end) {
        const std::uint32_t top = band.end - length;
        map.Append(top, 0, (band.begin << 8) / top);
        map.Append(length, band.begin, step);
    } else {
        map.Append(band.end, ((length - band.end) * step >> 8) + band.begin, step);
    }
    return map.Take();
}

namespace {

template <class Sample>
void CopyRow(const PlaneView<Sample>& to, unsigned y, const PlaneView<Sample>& from, unsigned source) {
    // Deliberate: whole rows, padding included.
    if (to.Contains(0, y) && from.Contains(0, source))
        AVBasedMemCopy(to.Row(y), from.Row(source), std::min(to.pitch, from.pitch));
}

// Rows below the map stay.
void VerticalTensileRgba32Effect(const std::vector<unsigned>& rows, const PackedView& to, const PackedView& from) {
    for (unsigned y = 0; y < rows.size(); ++y) CopyRow(to, y, from, rows[y]);
}

void VerticalTensileComponentEffect(const std::vector<unsigned>& rows, const PlanarView& to, const PlanarView& from) {
    for (unsigned y = 0; y < rows.size(); ++y) {
        CopyRow(to.plane[0], y, from.plane[0], rows[y]);
        for (unsigned p = 1; p < 3; ++p) {
            const ComponentView& chroma = from.plane[p];
            if (chroma.Contains(0, 0))
                CopyRow(to.plane[p], y >> to.rowShift, chroma, std::min(rows[y] >> to.rowShift, chroma.height - 1));
        }
    }
}

template <class Place>
void PlaceAll(const std::vector<unsigned>& columns, const std::vector<unsigned>& rows, unsigned height, Place place) {
    if (columns.empty() || rows.empty()) return;
    for (unsigned y = 0; y < height; ++y)
        for (unsigned x = 0; x < columns.size(); ++x) place(x, y, {columns[x], y < rows.size() ? rows[y] : y});
}

}  // namespace

CTensileVideoImageEffect::CTensileVideoImageEffect() : CBasedVideoImageEffect(effectNameTensile) {
    DeclareProperties(*this, tensileProperties);
}

void CTensileVideoImageEffect::OnSetProperty(const std::string& name, PropertyNode& node) {
    CBasedVideoImageEffect::OnSetProperty(name, node);
    StoreProperty(m_settings, tensileProperties, name, node);
}

void CTensileVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    const TensileSettings& s = m_settings;
    const bool vertical = s.vertical == 1, horizontal = s.horizontal == 1;
    if (!vertical && !horizontal) return;
    const auto columns = [&](unsigned width) {
        return TensileColumns({s.horizontalX1, s.horizontalX2, s.horizontalScale}, width);
    };
    // Alone, the horizontal stretch leaves every row where it is.
    const auto rows = [&](unsigned height) {
        if (vertical) return TensileRows({s.verticalY1, s.verticalY2, s.verticalScale}, height);
        std::vector<unsigned> identity(height);
        std::iota(identity.begin(), identity.end(), 0u);
        return identity;
    };
    const FrameCopy source(*frame);
    ForFrame(
        [&](const PackedView& to, const PackedView& from) {
            if (!horizontal) return VerticalTensileRgba32Effect(rows(to.height), to, from);
            PlaceAll(columns(to.width), rows(to.height), to.height, PlacePacked{to, from});
        },
        [&](const PlanarView& to, const PlanarView& from) {
            const auto [data, width, pitch, height] = to.plane[0];
            if (!horizontal) return VerticalTensileComponentEffect(rows(height), to, from);
            PlaceAll(columns(width), rows(height), height, PlacePlanar{to, from});
        },
        *frame, *source);
}

}  // namespace AVBased
