#include "effects/light/SpotlightEffect.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <type_traits>
#include <vector>

#include "effects/base/row_loops.h"
#include "effects/base/shared_samples.h"
#include "effects/light/spotlight_rows.h"

namespace AVBased {
namespace {

constexpr Property<SpotlightSettings> spotlightProperties[] = {
    {"spotlight_x", "250", &SpotlightSettings::x},
    {"spotlight_y", "250", &SpotlightSettings::y},
    {"spotlight_r", "250", &SpotlightSettings::radius},
    {"spotlight_brightness", "250", &SpotlightSettings::brightness},
    {"spotlight_color", "250", &SpotlightSettings::colour},
    {"spotlight_density", "250", &SpotlightSettings::density},
};

// (channel * (65536 - weight) + colour * weight) / 65536 + added, modulo 2^32: what falls below black turns white.
std::uint32_t Tint(std::uint32_t channel, std::uint32_t colour, std::uint32_t weight, std::uint32_t added) {
    return std::min((((channel << 16) + (colour - channel) * weight) >> 16) + added, 255u);
}

constexpr unsigned groupColumns = 64;                // a vector of bytes that are shared by two columns each
constexpr unsigned pieceColumns = 4 * groupColumns;  // between fetches

// Widened to whole groups of columns, so that the loops over them need no scalar ends.
Span Groups(Span columns) {
    return {columns.begin / groupColumns * groupColumns,
            (columns.end + groupColumns - 1) / groupColumns * groupColumns};
}

// The row of a plane that serves the luma row in work, in whole groups: what the picture lacks stands in a spare row.
template <class Sample>
class GroupedRow {
 public:
    GroupedRow(const PlaneView<Sample>& plane, unsigned columnShift, unsigned rowShift, unsigned columns)
        : m_plane(plane), m_columnShift(columnShift), m_rowShift(rowShift), m_spare(columns >> columnShift) {}

    void GoTo(unsigned y) {
        const unsigned row = y >> m_rowShift;
        const bool exists = row < m_plane.height;
        m_row = exists ? m_plane.Row(row) : m_spare.data();
        m_width = exists ? m_plane.width : 0;
    }
    // Fetches columns of the next row but one.
    void Fetch(Span columns) const {
        for (unsigned x = columns.begin >> m_columnShift; x < columns.end >> m_columnShift;
             x += cacheLine / sizeof(Sample))
            PrefetchToWrite(m_row + x, 2 * std::ptrdiff_t(m_plane.pitch));
    }
    // How many columns stand in whole groups of the picture.
    unsigned Whole() const { return (m_width << m_columnShift) / groupColumns * groupColumns; }
    Sample* Row() const { return m_row; }
    // The rest of the row from a column on, in the spare row until it is put back.
    Sample* TakeOut(unsigned column) {
        CopyRest(m_row, m_spare.data(), column);
        return m_spare.data();
    }
    void PutBack(unsigned column) { CopyRest(m_spare.data(), m_row, column); }

 private:
    void CopyRest(const Sample* from, Sample* to, unsigned column) const {
        const std::size_t begin = column >> m_columnShift, end = std::min<std::size_t>(m_width, m_spare.size());
        if (begin < end) std::copy(from + begin, from + end, to + begin);
    }

    PlaneView<Sample> m_plane;
    unsigned m_columnShift, m_rowShift, m_width = 0;
    Sample* m_row = nullptr;
    std::vector<Sample> m_spare;
};

// Tints the columns of a range, a multiple of groups, in the light of the distances that are walked.
template <bool weak>
struct TintPixels {
    static constexpr unsigned shift = 0;
    SpotLevels<weak> levels;
    SpotTint<weak> blueTint, greenTint, redTint;

    template <class Walk>
    void operator()(Span range, Walk walk, Rgba32* row) const {
        const TintPixels tint = *this;
#pragma GCC ivdep  // pixels and distances share no memory
        for (std::size_t x = range.begin; x < range.end; ++x) {
            const SpotLevel level = walk(x, 0, tint.levels);
            const std::uint32_t p = LoadWord(row + x);
            // In halves of 16 bits, which need no widening.
            const auto low = std::uint16_t(p), high = std::uint16_t(p >> 16);
            const std::uint16_t blue = tint.blueTint.Brightened(low & 255, level),
                                green = tint.greenTint.Brightened(low >> 8, level),
                                red = tint.redTint.Brightened(high & 255, level);
            const auto newLow = std::uint16_t(blue | green << 8), newHigh = std::uint16_t(red | (high & 0xFF00));
            StoreWord(row + x, newLow | std::uint32_t(newHigh) << 16);
        }
    }
};

// Deliberate: shared chroma is tinted once for each luma position, and never brightened.
template <bool weak, unsigned columnShift>
struct TintComponents {
    static constexpr unsigned shift = columnShift, shared = 1 << shift;
    // The samples that share chroma as parts of one number, so that none needs to be moved to another lane.
    using Lumas =
        std::conditional_t<shift == 0, std::uint8_t, std::conditional_t<shift == 1, std::uint16_t, std::uint32_t>>;
    SpotLevels<weak> levels;
    SpotTint<weak> lumaTint, uTint, vTint;

    template <class Walk>
    void operator()(Span range, Walk walk, std::uint8_t* luma, std::uint8_t* u, std::uint8_t* v) const {
        const TintComponents tint = *this;
#pragma GCC ivdep  // samples and distances share no memory
        for (std::size_t x = range.begin >> shift; x < range.end >> shift; ++x) {
            std::uint16_t newU = u[x], newV = v[x];
            Lumas lumas, newLumas = 0;
            std::memcpy(&lumas, luma + x * shared, shared);
            for (unsigned i = 0; i < shared; ++i) {
                const SpotLevel level = walk(x, i, tint.levels);
                const unsigned bit = 8 * (std::endian::native == std::endian::little ? i : shared - 1 - i);
                const auto sample = std::uint16_t(lumas >> bit & 255);
                newLumas = Lumas(newLumas | Lumas(tint.lumaTint.Brightened(sample, level)) << bit);
                newU = tint.uTint(newU, level);
                newV = tint.vTint(newV, level);
            }
            std::memcpy(luma + x * shared, &newLumas, shared);
            u[x] = std::uint8_t(newU);
            v[x] = std::uint8_t(newV);
        }
    }
};

// Lights the rows of a disc's box: of a packed picture, or of three planes.
template <class Tint, class... Samples>
void LightRows(const SpotDisc& disc, const Tint& tint, unsigned width, unsigned height, GroupedRow<Samples>... rows) {
    const Span box = disc.Columns(width), down = disc.Rows(height), all = Groups(box);
    SpotDistances distances(disc, all, width, Tint::shift, down.begin);
    for (unsigned y = down.begin; y < down.end; ++y) {
        const Span chord = Groups(disc.Chord(y, box));
        (rows.GoTo(y), ...);
        const auto lightRow = [&](auto walk) {
            const unsigned whole = std::min({rows.Whole()...});
            const Span inside{chord.begin, std::min(chord.end, whole)}, rest{std::max(chord.begin, whole), chord.end};
            for (Span piece = inside; piece.begin < inside.end; piece.begin = piece.end) {
                piece.end = std::min(piece.begin + pieceColumns, inside.end);
                (rows.Fetch(piece), ...);
                tint(piece, walk, rows.Row()...);
            }
            if (rest.begin >= rest.end) return;
            tint(rest, walk, rows.TakeOut(rest.begin)...);
            (rows.PutBack(rest.begin), ...);
        };
        const bool approaches = distances.Approaches();
        if (distances.CrossesCore(disc))
            approaches ? lightRow(distances.FromHere<true, true>()) : lightRow(distances.FromHere<false, true>());
        else
            approaches ? lightRow(distances.FromHere<true, false>()) : lightRow(distances.FromHere<false, false>());
        if (approaches) {
            distances.Skip({all.begin, chord.begin});
            distances.Skip({chord.end, all.end});
        }
        distances.NextRow();
    }
}

template <bool weak>
void LightPacked(const SpotlightSettings& s, const SpotDisc& disc, const PackedView& picture) {
    const bool darkens = s.brightness < 0;
    const TintPixels<weak> tint{
        SpotLevels<weak>(disc), {Blue(s.colour), darkens}, {Green(s.colour), darkens}, {Red(s.colour), darkens}};
    const unsigned columns = Groups(disc.Columns(picture.width)).end;
    LightRows(disc, tint, picture.width, picture.height, GroupedRow<Rgba32>(picture, 0, 0, columns));
}

template <bool weak, unsigned shift>
void LightPlanar(const SpotlightSettings& s, const SpotDisc& disc, const PlanarView& picture) {
    const bool darkens = s.brightness < 0;
    const TintComponents<weak, shift> tint{
        SpotLevels<weak>(disc), {s.yuv[0], darkens}, {s.yuv[1], darkens}, {s.yuv[2], darkens}};
    const ComponentView& luma = picture.plane[0];
    const unsigned columns = Groups(disc.Columns(luma.width)).end;
    using Row = GroupedRow<std::uint8_t>;
    LightRows(disc, tint, luma.width, luma.height, Row(luma, 0, 0, columns),
              Row(picture.plane[1], shift, picture.rowShift, columns),
              Row(picture.plane[2], shift, picture.rowShift, columns));
}

std::array<std::uint8_t, 3> YuvOf(std::uint32_t colour) {
    const double red = Red(colour), green = Green(colour), blue = Blue(colour);
    return {std::uint8_t(0.257 * red + 0.504 * green + 0.098 * blue + 16),
            std::uint8_t(-0.148 * red - 0.291 * green + 0.439 * blue + 128),
            std::uint8_t(0.439 * red - 0.368 * green - 0.071 * blue + 128)};
}

}  // namespace

void SpotlightRgba32Effect(const SpotlightSettings& settings, const PackedView& picture) {
    const std::uint32_t colour = settings.colour;
    SpotDisc(settings).ForEachPixel(picture.width, picture.height, [&](unsigned x, unsigned y, SpotLight light) {
        Rgba32& p = picture.Row(y)[x];
        p.blue = std::uint8_t(Tint(p.blue, Blue(colour), light.weight, light.brightness));
        p.green = std::uint8_t(Tint(p.green, Green(colour), light.weight, light.brightness));
        p.red = std::uint8_t(Tint(p.red, Red(colour), light.weight, light.brightness));
    });
}

void SpotlightComponentEffect(const SpotlightSettings& settings, const PlanarView& picture) {
    const ComponentView& luma = picture.plane[0];
    SpotDisc(settings).ForEachPixel(luma.width, luma.height, [&](unsigned x, unsigned y, SpotLight light) {
        for (unsigned p = 0; p < 3; ++p)
            if (std::uint8_t* const sample = picture.At(p, x, y))
                *sample = std::uint8_t(Tint(*sample, settings.yuv[p], light.weight, p == 0 ? light.brightness : 0));
    });
}

CSpotlightVideoImageEffect::CSpotlightVideoImageEffect() : CSettingsEffect(effectNameSpotlight, spotlightProperties) {}

void CSpotlightVideoImageEffect::OnSetProperty(const std::string& name, PropertyNode& node) {
    CSettingsEffect::OnSetProperty(name, node);
    // Deliberate: both members hold what follows from their properties, each time that these are set.
    if (name == "spotlight_color") std::ranges::copy(YuvOf(m_settings.colour), m_settings.yuv);
    if (name == "spotlight_brightness")
        m_settings.brightness = std::int32_t(std::uint32_t(m_settings.brightness) << 8) / 100;
}

void CSpotlightVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    const SpotDisc disc(m_settings);
    const InstructionSet set = Instructions();
    ForFrame(
        [&](const PackedView& picture) {
            if (!disc.Lights(picture.width, picture.height)) return;
            if (!disc.Fits16Bits()) return SpotlightRgba32Effect(m_settings, picture);
            const auto light =
                disc.IsWeak() ? variantsOf<LightPacked<true>>.For(set) : variantsOf<LightPacked<false>>.For(set);
            light(m_settings, disc, picture);
        },
        [&](const PlanarView& picture) {
            const ComponentView& luma = picture.plane[0];
            if (!disc.Lights(luma.width, luma.height)) return;
            if (!disc.Fits16Bits()) return SpotlightComponentEffect(m_settings, picture);
            const auto light = WithConstantShift(picture.columnShift, [&](auto shift) {
                return disc.IsWeak() ? variantsOf<LightPlanar<true, shift>>.For(set)
                                     : variantsOf<LightPlanar<false, shift>>.For(set);
            });
            light(m_settings, disc, picture);
        },
        *frame);
}

}  // namespace AVBased
