#include "effects/colour/PopStyleEffect.h"

#include <vector>

#include "effects/base/box.h"
#include "effects/base/shared_samples.h"
#include "effects/colour/print_tones.h"

namespace AVBased {
namespace {

constexpr Property<PopStyleSettings> popStyleProperties[] = {
    {"popstyle_colors", "4", &PopStyleSettings::colours},
    {"popstyle_palette", "0", &PopStyleSettings::palette},
    {"popstyle_panels", "0", &PopStyleSettings::panels},
};

constexpr unsigned mostColours = 5, palettes = 4;

// From dark to light, so that the picture stays readable in each, and from cool to warm, so that skin is no sky.
constexpr std::uint32_t paletteColours[palettes][mostColours] = {
    {0x2B0B6E, 0xC2107E, 0xFF5A1F, 0xFFAE1A, 0xFFF04D},
    {0x14145A, 0x0A84C6, 0xE3172D, 0xFFC23A, 0xFFF6D6},
    {0x3A0066, 0x009E4F, 0x8CC63F, 0xFF8FC7, 0xFFF0A8},
    {0x062B3F, 0x00838F, 0xF15A24, 0xFF9EB5, 0xFFE94A},
};

constexpr std::uint32_t LumaOf(std::uint32_t p) {
    return ((66 * Red(p) + 129 * Green(p) + 25 * Blue(p) + 128) >> 8) + 16;
}
constexpr std::uint8_t UOf(std::uint32_t p) {
    return std::uint8_t(((112 * int(Blue(p)) - 38 * int(Red(p)) - 74 * int(Green(p)) + 128) >> 8) + 128);
}
constexpr std::uint8_t VOf(std::uint32_t p) {
    return std::uint8_t(((112 * int(Red(p)) - 94 * int(Green(p)) - 18 * int(Blue(p)) + 128) >> 8) + 128);
}

// What the tones from each step on become; of fewer colours the last is repeated.
struct Inks {
    std::int16_t steps[mostColours - 1];
    std::uint8_t samples[3][mostColours];
    std::uint32_t words[mostColours];

    Inks(unsigned palette, unsigned count) {
        for (unsigned i = 0; i < mostColours; ++i) {
            const unsigned k = std::min(i, count - 1);
            if (i > 0) steps[i - 1] = std::int16_t((16 + 219 * k / count) * toneUnit);
            words[i] = paletteColours[palette][(8 * k + count - 1) / (2 * count - 2)];
            samples[0][i] = std::uint8_t(LumaOf(words[i]));
            samples[1][i] = UOf(words[i]);
            samples[2][i] = VOf(words[i]);
        }
    }
    const std::uint8_t (&Of(const ComponentView&, unsigned plane) const)[mostColours] { return samples[plane]; }
    const std::uint32_t (&Of(const PackedView&, unsigned) const)[mostColours] { return words; }
};

// Written out, so that it becomes compares and blends of tones and values in lanes of one size.
template <class Lane, class Value>
void Choose(Value* __restrict chosen, const std::int16_t* __restrict tones, unsigned count, const Inks& inks,
            const Value (&values)[mostColours]) {
    Lane steps[mostColours - 1], lanes[mostColours];
    std::copy_n(inks.steps, mostColours - 1, steps);
    std::copy_n(values, mostColours, lanes);
    for (std::size_t x = 0; x < count; ++x) {
        Lane value = lanes[0];
        for (unsigned i = 1; i < mostColours; ++i) value = Lane(tones[x]) >= steps[i - 1] ? lanes[i] : value;
        chosen[x] = Value(value);
    }
}
constexpr auto chooseSamples = variantsOf<Choose<std::int16_t, std::uint8_t>>;
constexpr auto chooseWords = variantsOf<Choose<std::int32_t, std::uint32_t>>;
auto Chooser(const ComponentView&, InstructionSet set) { return chooseSamples.For(set); }
auto Chooser(const PackedView&, InstructionSet set) { return chooseWords.For(set); }

std::uint8_t Mean(std::uint8_t a, std::uint8_t b) { return std::uint8_t((a + b + 1) >> 1); }
void Print(std::uint8_t* __restrict row, std::uint8_t* __restrict above, const std::uint8_t* __restrict below,
           unsigned count) {
    for (std::size_t x = 0; x < count; ++x) row[x] = Mean(Mean(above[x], below[x]), Mean(above[x + 1], below[x + 1]));
}
// All bytes of the words alike, then the pixels' own alpha.
void Print(Rgba32* row, std::uint32_t* __restrict above, const std::uint32_t* __restrict below, unsigned count) {
    auto* const means = reinterpret_cast<std::uint8_t*>(above);
    const auto* const others = reinterpret_cast<const std::uint8_t*>(below);
    constexpr std::size_t next = sizeof(std::uint32_t);
    for (std::size_t i = 0; i < next * count; ++i)
        means[i] = Mean(Mean(means[i], others[i]), Mean(means[i + next], others[i + next]));
    for (std::size_t x = 0; x < count; ++x) StoreWord(row + x, (LoadWord(row + x) & alphaMask) | above[x]);
}

void MeanTones(std::int16_t* __restrict means, const std::int16_t* __restrict a, const std::int16_t* __restrict b,
               unsigned count) {
    for (std::size_t x = 0; x < count; ++x) means[x] = std::int16_t((a[x] + b[x]) >> 1);
}

// In the middle of cells and, before each, between two.
void SpreadTones(std::int16_t* __restrict corners, const std::int16_t* __restrict cells, unsigned count) {
    for (std::size_t x = 0; x < count; ++x) {
        corners[2 * x] = std::int16_t((cells[std::ptrdiff_t(x) - 1] + cells[x]) >> 1);
        corners[2 * x + 1] = cells[x];
    }
}

template <unsigned shift>
void EveryCorner(std::int16_t* __restrict some, const std::int16_t* __restrict corners, unsigned count) {
    for (std::size_t x = 0; x < count; ++x) some[x] = corners[x << shift];
}

// The tones at the corners of a print's pixels.
class Corners {
 public:
    Corners(unsigned columns, unsigned rows, bool halved, InstructionSet set, PrintTones::Read read)
        : m_halved(halved),
          m_columns(columns),
          m_tones(columns, rows, halved ? rows : 4, set, std::move(read)),
          m_between(columns + 2),
          m_corners(2 * std::size_t(columns) + 1),
          m_mean(variantsOf<MeanTones>.For(set)),
          m_spread(variantsOf<SpreadTones>.For(set)) {}

    /// Those above row y, from the left edge on. Pixels are as large as cells in a halved print, else half as large.
    const std::int16_t* Above(unsigned y) {
        const int cell = int(m_halved ? y : y / 2);
        const std::int16_t* tones = m_tones.Row(cell);
        if (m_halved || y % 2 == 0) {
            m_mean(m_between.data(), m_tones.Row(cell - 1) - 1, tones - 1, m_columns + 2);
            tones = &m_between[1];
        }
        if (m_halved) {
            m_mean(m_corners.data(), tones - 1, tones, m_columns + 1);
        } else {
            m_spread(m_corners.data(), tones, m_columns);
            m_corners.back() = std::int16_t((tones[m_columns - 1] + tones[m_columns]) >> 1);
        }
        return m_corners.data();
    }

 private:
    bool m_halved;
    unsigned m_columns;
    PrintTones m_tones;
    std::vector<std::int16_t> m_between, m_corners;
    decltype(&MeanTones) m_mean;
    decltype(&SpreadTones) m_spread;
};

// The samples along an axis whose first pixels are those of a print, and where their corners are in it.
struct Stretch {
    unsigned begin, length, first, count, shift;

    Stretch(const SharedAxis& axis, Span pixels)
        : begin(pixels.begin), length(pixels.end - pixels.begin), shift(axis.shift) {
        const auto sampleFrom = [&](unsigned pixel) {
            return std::min((pixel + (1u << shift) - 1) >> shift, axis.size);
        };
        first = sampleFrom(pixels.begin);
        count = sampleFrom(pixels.end) - first;
    }
    unsigned Corner(unsigned sample) const { return std::min(((first + sample) << shift) - begin, length); }
};

// A plane's part of a print: each sample is the mean of the inks at its corners, so that contours have no steps.
template <class Sample>
class PrintedPlane {
 public:
    PrintedPlane(const PlaneView<Sample>& plane, const Stretch& columns, const Stretch& rows, const Inks& inks,
                 unsigned number, InstructionSet set)
        : m_plane(plane),
          m_columns(columns),
          m_rows(rows),
          m_inks(inks),
          m_values(inks.Of(plane, number)),
          m_tones(columns.count + 1),
          m_above(columns.count + 1),
          m_below(columns.count + 1),
          m_set(set) {}

    /// Of each row of corners from the top down, the row of samples that ends there.
    void Take(unsigned y, const std::int16_t* corners) {
        if (m_columns.count == 0 || m_next > m_rows.count || y != m_rows.Corner(m_next)) return;
        m_above.swap(m_below);
        const std::int16_t* tones = corners + m_columns.Corner(0);
        if (m_columns.shift) {
            WithConstantShift(m_columns.shift, [&](auto shift) {
                variantsOf<EveryCorner<shift>>.For(m_set)(m_tones.data(), tones, m_columns.count);
            });
            m_tones.back() = corners[m_columns.Corner(m_columns.count)];
            tones = m_tones.data();
        }
        Chooser(m_plane, m_set)(m_below.data(), tones, m_columns.count + 1, m_inks, m_values);
        if (m_next++ == 0) return;
        variantsOf<static_cast<PrintRow*>(Print)>.For(m_set)(m_plane.Row(m_rows.first + m_next - 2) + m_columns.first,
                                                             m_above.data(), m_below.data(), m_columns.count);
    }

 private:
    using Value = std::conditional_t<std::is_same_v<Sample, Rgba32>, std::uint32_t, std::uint8_t>;
    using PrintRow = void(Sample*, Value*, const Value*, unsigned);

    PlaneView<Sample> m_plane;
    Stretch m_columns, m_rows;
    const Inks& m_inks;
    const Value (&m_values)[mostColours];
    std::vector<std::int16_t> m_tones;
    std::vector<Value> m_above, m_below;
    unsigned m_next = 0;
    InstructionSet m_set;
};

template <unsigned step>
void MeanAlphas(std::uint8_t* __restrict means, const std::uint8_t* upper, const std::uint8_t* lower, unsigned width) {
    const auto sum = [=](std::size_t x) { return upper[step * x] + lower[step * x]; };
    for (std::size_t x = 0; x < width / 2; ++x) means[x] = std::uint8_t((sum(2 * x) + sum(2 * x + 1) + 2) >> 2);
    if (width % 2) means[width / 2] = std::uint8_t((sum(width - 1) + 1) >> 1);
}
template <unsigned step>
void StoreAlphas(std::uint8_t* row, const std::uint8_t* __restrict alphas, unsigned count) {
    for (std::size_t x = 0; x < count; ++x) row[step * x] = alphas[x];
}

// The alphas of the picture, `step` bytes apart, in cells: for panels, each of which shows all of it.
template <unsigned step>
class PanelAlphas {
 public:
    PanelAlphas(const ComponentView& plane, InstructionSet set)
        : m_plane(plane),
          m_width(plane.width / step),
          m_columns(m_width - m_width / 2),
          m_rows(plane.height - plane.height / 2),
          m_set(set),
          m_alphas(std::size_t(m_columns) * m_rows) {}

    void Read(unsigned y) {
        if (y >= m_rows) return;
        const unsigned below = std::min(2 * y + 1, m_plane.height - 1);
        variantsOf<MeanAlphas<step>>.For(m_set)(&m_alphas[std::size_t(y) * m_columns], m_plane.Row(2 * y),
                                                m_plane.Row(below), m_width);
    }
    void Write(unsigned y) const {
        if (y >= m_plane.height) return;
        const std::uint8_t* const alphas = &m_alphas[std::size_t(y < m_rows ? y : y - m_rows) * m_columns];
        variantsOf<StoreAlphas<step>>.For(m_set)(m_plane.Row(y), alphas, m_columns);
        variantsOf<StoreAlphas<step>>.For(m_set)(m_plane.Row(y) + step * m_columns, alphas, m_width - m_columns);
    }

 private:
    ComponentView m_plane;
    unsigned m_width, m_columns, m_rows;
    InstructionSet m_set;
    std::vector<std::uint8_t> m_alphas;
};

PanelAlphas<4> AlphasOf(PackedView picture, bool panels, InstructionSet set) {
    // From the first alpha on; the bytes after the last one are not touched.
    if (!panels || picture.width == 0) return {{}, set};
    return {{picture.data + 3, 4 * picture.width, picture.pitch, picture.height}, set};
}
PanelAlphas<1> AlphasOf(const PlanarView& picture, bool panels, InstructionSet set) {
    return {panels && picture.HasAlpha() ? picture.plane[3] : ComponentView{}, set};
}

template <class Work>
void ForEachColourPlane(const PackedView& picture, Work work) {
    work(picture, ColumnsOf(picture), RowsOf(picture), 0);
}
template <class Work>
void ForEachColourPlane(const PlanarView& picture, Work work) {
    for (unsigned p = 0; p < 3; ++p) work(picture.plane[p], ColumnsOf(picture, p), RowsOf(picture, p), p);
}

// One print that fills the frame, or four of half the size.
template <class Sample, class View>
void PopStyle(const View& picture, unsigned width, unsigned height, const PopStyleSettings& settings,
              InstructionSet set) {
    if (width == 0 || height == 0) return;
    const bool panels = settings.panels != 0;
    const unsigned columns = width - width / 2, rows = height - height / 2;
    auto alphas = AlphasOf(picture, panels, set);
    Corners corners(columns, rows, panels, set, [&](unsigned y, std::int16_t* tones) {
        ReadTones(picture, y, tones, set);
        alphas.Read(y);
    });
    const unsigned colours = unsigned(std::clamp(settings.colours, 2, int(mostColours)));
    const unsigned across = panels ? columns : width, down = panels ? rows : height;
    unsigned palette = std::uint32_t(settings.palette) % palettes;
    for (unsigned top = 0; top < height; top += down, palette += 2) {
        const Span pixelRows{top, std::min(top + down, height)};
        const Inks inks[] = {{palette % palettes, colours}, {(palette + 1) % palettes, colours}};
        std::vector<PrintedPlane<Sample>> planes;
        for (unsigned left = 0, panel = 0; left < width; left += across, ++panel)
            ForEachColourPlane(picture, [&](const auto& plane, const SharedAxis& x, const SharedAxis& y, unsigned p) {
                planes.emplace_back(plane, Stretch(x, {left, std::min(left + across, width)}), Stretch(y, pixelRows),
                                    inks[panel], p, set);
            });
        for (unsigned y = 0; y <= pixelRows.end - top; ++y) {
            const std::int16_t* const above = corners.Above(y);
            if (y > 0) alphas.Write(top + y - 1);
            for (auto& plane : planes) plane.Take(y, above);
        }
    }
}

}  // namespace

CPopStyleVideoImageEffect::CPopStyleVideoImageEffect() : CSettingsEffect(effectNamePopStyle, popStyleProperties) {}

void CPopStyleVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    const InstructionSet set = Instructions();
    ForFrame(
        [&](const PackedView& picture) { PopStyle<Rgba32>(picture, picture.width, picture.height, m_settings, set); },
        [&](const PlanarView& picture) {
            const ComponentView& luma = picture.plane[0];
            PopStyle<std::uint8_t>(picture, luma.width, luma.height, m_settings, set);
        },
        *frame);
}

}  // namespace AVBased
