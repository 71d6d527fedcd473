#include "effects/geometry/TensileEffect.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "avbase/avbase.h"
#include "effects/base/fixed_point.h"
#include "effects/geometry/row_sampler.h"

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

// A map of `size` entries that is filled from its first to its last and never falls.
class Map {
 public:
    explicit Map(unsigned size) : m_size(size) { m_entries.reserve(size); }
    /// Appends first, first + step / 256, first + 2 step / 256 and so on; what passes the map's end is dropped.
    void Append(std::uint32_t count, std::uint64_t first, std::uint64_t step) {
        count = std::min(count, Left());
        std::uint64_t accumulator = 0;
        for (; count > 0; --count, accumulator += step)
            m_entries.push_back(unsigned(std::min<std::uint64_t>(first + (accumulator >> 8), m_size - 1)));
    }
    std::uint32_t Left() const { return m_size - unsigned(m_entries.size()); }
    AxisMap Take() { return std::move(m_entries); }

 private:
    unsigned m_size;
    AxisMap m_entries;
};

// The step that spreads `from` positions over `to`.
std::uint64_t Spread(std::uint64_t from, std::uint32_t to) { return (from << 8) / to; }

}  // namespace

AxisMap TensileColumns(const TensileBand& band, unsigned width) {
    if (!CanBeStretched(band, width)) return {};
    const std::uint32_t length = LengthOfBand(band), step = StepInBand(band);
    const std::uint32_t grow = (length - (band.end - band.begin)) >> 1;
    const std::uint32_t left = band.begin - grow, right = band.end + grow;
    Map map(width);
    if (std::int32_t(left) > 0) {
        map.Append(left, 0, Spread(band.begin, left));
        if (width > right) {
            map.Append(length, band.begin, step);
            map.Append(width - right, band.end, Spread(width - band.end, width - right));
        } else {
            map.Append(map.Left(), band.begin, step);
        }
    } else {
        const std::uint32_t shown = std::min(width, right);
        const std::uint64_t hidden = std::uint64_t(grow - band.begin) * step >> 8;
        map.Append(shown, hidden + band.begin, step);
        if (width > shown) map.Append(width - shown, band.end, Spread(width - band.end, width - shown));
    }
    return map.Take();
}

AxisMap TensileRows(const TensileBand& band, unsigned height) {
    if (!CanBeStretched(band, height)) return {};
    const std::uint32_t length = LengthOfBand(band), step = StepInBand(band);
    Map map(height);
    if (length < band.end) {
        const std::uint32_t top = band.end - length;
        map.Append(top, 0, Spread(band.begin, top));
        map.Append(length, band.begin, step);
    } else {
        map.Append(band.end, (std::uint64_t(length - band.end) * step >> 8) + band.begin, step);
    }
    return map.Take();
}

namespace {

// Whole rows move; those below the map stay. Deliberate: their padding moves with them.
template <class Sample>
void MoveRows(const AxisMap& rows, const PlaneView<Sample>& plane) {
    if (plane.width == 0) return;
    ForEachRowInPlace(rows, [&](unsigned y, int) {
        if (rows[y] != y) AVBasedMemCopy(plane.Row(y), plane.Row(rows[y]), plane.pitch);
    });
}

template <class Sample>
void Stretch(const AxisMap& columns, const AxisMap& rows, const PlaneView<Sample>& plane, InstructionSet set) {
    const RowSampler<Sample> sampler(columns, plane.width, set);
    std::vector<Sample> own(plane.width);
    std::optional<unsigned> last;
    ForEachRowInPlace(rows, [&](unsigned y, int direction) {
        const Sample* from = plane.Row(rows[y]);
        // Where rows repeat, the one before is ready.
        if (last && rows[*last] == rows[y]) {
            std::copy_n(plane.Row(*last), plane.width, plane.Row(y));
            return;
        }
        last = y;
        if (rows[y] == y) from = std::copy_n(from, plane.width, own.data()) - plane.width;
        sampler(plane.Row(y), from, 2 * direction * std::ptrdiff_t(plane.pitch));
    });
}

// Rows outside the band's map stay where they are when columns are stretched as well.
AxisMap WithRowsBelow(AxisMap rows, unsigned height) {
    for (unsigned y = unsigned(rows.size()); y < height; ++y) rows.push_back(y);
    return rows;
}

}  // namespace

CTensileVideoImageEffect::CTensileVideoImageEffect() : CSettingsEffect(effectNameTensile, tensileProperties) {}

void CTensileVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    const TensileSettings& s = m_settings;
    const bool vertical = s.vertical == 1, horizontal = s.horizontal == 1;
    if (!vertical && !horizontal) return;
    const TensileBand columnBand{s.horizontalX1, s.horizontalX2, s.horizontalScale},
        rowBand{s.verticalY1, s.verticalY2, s.verticalScale};
    // Runs move(rows) or stretch(columns, rows) unless a band cannot be stretched.
    const auto run = [&](unsigned width, unsigned height, auto move, auto stretch) {
        AxisMap columns, rows;
        if (horizontal && (columns = TensileColumns(columnBand, width)).empty()) return;
        if (vertical && (rows = TensileRows(rowBand, height)).empty()) return;
        if (horizontal)
            stretch(columns, WithRowsBelow(std::move(rows), height));
        else
            move(rows);
    };
    ForFrame(
        [&](const PackedView& picture) {
            run(
                picture.width, picture.height, [&](const AxisMap& rows) { MoveRows(rows, picture); },
                [&](const AxisMap& columns, const AxisMap& rows) { Stretch(columns, rows, picture, Instructions()); });
        },
        [&](const PlanarView& picture) {
            const unsigned width = picture.plane[0].width, height = picture.plane[0].height;
            for (unsigned p = 0; p < 3; ++p) {
                const ComponentView& plane = picture.plane[p];
                const auto rowsOf = [&](const AxisMap& rows) {
                    return SharedMap(rows, {unsigned(rows.size()), RowsOf(picture, p).shift, plane.height});
                };
                run(
                    width, height, [&](const AxisMap& rows) { MoveRows(rowsOf(rows), plane); },
                    [&](const AxisMap& columns, const AxisMap& rows) {
                        Stretch(SharedMap(columns, ColumnsOf(picture, p)), rowsOf(rows), plane, Instructions());
                    });
            }
        },
        *frame);
}

}  // namespace AVBased
