#include "effects/colour/PopStyleEffect.h"

#include <cstring>
#include <vector>

#include "effects/base/box.h"
#include "effects/base/shared_samples.h"
#include "effects/colour/PopStyleEffect_avx2.h"
#include "effects/colour/print_tones.h"

namespace AVBased {
namespace {

constexpr Property<PopStyleSettings> popStyleProperties[] = {
    {"popstyle_colors", "4", &PopStyleSettings::colours},
    {"popstyle_palette", "0", &PopStyleSettings::palette},
    {"popstyle_panels", "0", &PopStyleSettings::panels},
};

constexpr unsigned palettes = 4;

// From dark to light, so that the picture stays readable in each, and from cool to warm, so that skin is no sky.
constexpr std::uint32_t paletteColours[palettes][mostInks] = {
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

InkSteps StepsOf(unsigned count) {
    InkSteps steps;
    for (unsigned i = 1; i < mostInks; ++i) steps[i - 1] = std::uint8_t(16 + 219 * std::min(i, count - 1) / count);
    return steps;
}

struct Inks {
    std::uint8_t samples[3][mostInks];
    std::uint32_t words[mostInks];

    Inks(unsigned palette, unsigned count) {
        for (unsigned i = 0; i < mostInks; ++i) {
            const unsigned k = std::min(i, count - 1);
            words[i] = paletteColours[palette][(8 * k + count - 1) / (2 * count - 2)];
            samples[0][i] = std::uint8_t(LumaOf(words[i]));
            samples[1][i] = UOf(words[i]);
            samples[2][i] = VOf(words[i]);
        }
    }
    const std::uint8_t (&Of(const ComponentView&, unsigned plane) const)[mostInks] { return samples[plane]; }
    const std::uint32_t (&Of(const PackedView&, unsigned) const)[mostInks] { return words; }
};

// The numbers of the inks at a row of corners, from the left edge on. Pixels are as large as cells in a halved print,
// else half as large: every other corner is in the middle of a cell.
template <bool halved>
void InkCorners(std::uint8_t* __restrict numbers, const std::int16_t* upper, const std::int16_t* lower, unsigned cells,
                const InkSteps& steps) {
    std::int16_t from[mostInks - 1];
    std::transform(steps.begin(), steps.end(), from, [](int step) { return std::int16_t(step * toneUnit); });
    const auto numberOf = [&from](std::int16_t tone) {
        std::int16_t number = 0;
        for (std::int16_t i = 1; i < std::int16_t(mostInks); ++i) number = tone >= from[i - 1] ? i : number;
        return std::uint8_t(number);
    };
    for (std::size_t x = 0; x < cells; ++x) {
        const std::int16_t left = Half(upper[std::ptrdiff_t(x) - 1], lower[std::ptrdiff_t(x) - 1]),
                           here = Half(upper[x], lower[x]);
        if (halved) {
            numbers[x] = numberOf(Half(left, here));
        } else {
            numbers[2 * x] = numberOf(Half(left, here));
            numbers[2 * x + 1] = numberOf(here);
        }
    }
}

template <unsigned shift>
void EveryCorner(std::uint8_t* __restrict some, const std::uint8_t* __restrict corners, unsigned count) {
    for (std::size_t x = 0; x < count; ++x) some[x] = corners[x << shift];
}

// The inks at the corners of a print's pixels.
class Corners {
 public:
    Corners(unsigned columns, unsigned rows, bool halved, unsigned colours, InstructionSet set, PrintTones::Read read)
        : m_halved(halved),
          m_columns(columns),
          m_steps(StepsOf(colours)),
          m_tones(columns, rows, halved ? rows : 4, set, std::move(read)),
          m_corners(2 * (std::size_t(columns) + CellRows::spare)),
          m_ink((halved ? variantsOf<InkCorners<true>> : variantsOf<InkCorners<false>, InkCornersAvx2>).For(set)) {}

    /// The numbers of those above row y of pixels.
    const std::uint8_t* Above(unsigned y) {
        const int cell = int(m_halved ? y : y / 2);
        const bool between = m_halved || y % 2 == 0;
        const std::int16_t* const lower = m_tones.Row(cell);
        m_ink(m_corners.data(), between ? m_tones.Row(cell - 1) : lower, lower, m_columns + 1, m_steps);
        return m_corners.data();
    }

 private:
    bool m_halved;
    unsigned m_columns;
    InkSteps m_steps;
    PrintTones m_tones;
    std::vector<std::uint8_t> m_corners;
    decltype(&InkCorners<false>) m_ink;
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

std::uint8_t Mean(std::uint8_t a, std::uint8_t b) { return std::uint8_t((a + b + 1) >> 1); }

// The inks of that many pixels are chosen at once. Without branches, so that it becomes vectors.
constexpr unsigned someInks = 64;
template <class Ink>
void Choose(Ink* __restrict chosen, const std::uint8_t* __restrict numbers, unsigned count,
            const Ink (&inks)[mostInks]) {
    Ink own[mostInks];  // which the stores below cannot change
    for (unsigned i = 0; i < mostInks; ++i) own[i] = inks[i];
    for (std::size_t x = 0; x < count; ++x) {
        Ink ink = 0;
        for (unsigned i = 0; i < mostInks; ++i) ink = Ink(ink | (own[i] & -Ink(numbers[x] == i)));
        chosen[x] = ink;
    }
}

template <class Sample, class Ink, class Store>
void PrintInks(Sample* row, const std::uint8_t* above, const std::uint8_t* below, unsigned count,
               const Ink (&inks)[mostInks], Store store) {
    for (unsigned begin = 0; begin < count; begin += someInks) {
        const unsigned some = std::min(count - begin, someInks);
        const std::uint8_t number = above[begin];
        const auto alike = [=](const std::uint8_t* numbers) {
            return numbers[0] == number && std::memcmp(numbers, numbers + 1, some) == 0;
        };
        // Most of a print is of one ink.
        if (alike(above + begin) && alike(below + begin)) {
            for (std::size_t x = 0; x < some; ++x) store(row + begin + x, inks[number]);
            continue;
        }
        Ink upper[someInks + 1], lower[someInks + 1];
        Choose(upper, above + begin, some + 1, inks);
        Choose(lower, below + begin, some + 1, inks);
        auto* const means = reinterpret_cast<std::uint8_t*>(upper);
        const auto* const others = reinterpret_cast<const std::uint8_t*>(lower);
        constexpr std::size_t next = sizeof(Ink);
        for (std::size_t i = 0; i < next * (some + 1); ++i) means[i] = Mean(means[i], others[i]);
        for (std::size_t i = 0; i < next * some; ++i) means[i] = Mean(means[i], means[i + next]);
        for (std::size_t x = 0; x < some; ++x) store(row + begin + x, upper[x]);
    }
}

void PrintSamples(std::uint8_t* row, const std::uint8_t* above, const std::uint8_t* below, unsigned count,
                  const std::uint8_t (&inks)[mostInks]) {
    PrintInks(row, above, below, count, inks, [](std::uint8_t* sample, std::uint8_t ink) { *sample = ink; });
}
void PrintPixels(Rgba32* row, const std::uint8_t* above, const std::uint8_t* below, unsigned count,
                 const std::uint32_t (&inks)[mostInks]) {
    PrintInks(row, above, below, count, inks,
              [](Rgba32* pixel, std::uint32_t ink) { StoreWord(pixel, (LoadWord(pixel) & alphaMask) | ink); });
}
auto Printer(const ComponentView&, InstructionSet set) { return variantsOf<PrintSamples, PrintSamplesAvx2>.For(set); }
auto Printer(const PackedView&, InstructionSet set) { return variantsOf<PrintPixels, PrintPixelsAvx2>.For(set); }

// A plane's part of a print: each sample is the mean of the inks at its corners, so that contours have no steps.
template <class Sample>
class PrintedPlane {
 public:
    PrintedPlane(const PlaneView<Sample>& plane, const Stretch& columns, const Stretch& rows, const Inks& inks,
                 unsigned number, InstructionSet set)
        : m_plane(plane),
          m_columns(columns),
          m_rows(rows),
          m_inks(inks.Of(plane, number)),
          m_above(columns.count + 1),
          m_below(columns.count + 1),
          m_some(WithConstantShift(columns.shift, [&](auto shift) { return variantsOf<EveryCorner<shift>>.For(set); })),
          m_print(Printer(plane, set)) {}

    /// Of each row of corners from the top down, the row of samples that ends there.
    void Take(unsigned y, const std::uint8_t* corners) {
        if (m_columns.count == 0 || m_next > m_rows.count || y != m_rows.Corner(m_next)) return;
        m_above.swap(m_below);
        m_some(m_below.data(), corners + m_columns.Corner(0), m_columns.count);
        m_below.back() = corners[m_columns.Corner(m_columns.count)];
        if (m_next++ == 0) return;
        m_print(m_plane.Row(m_rows.first + m_next - 2) + m_columns.first, m_above.data(), m_below.data(),
                m_columns.count, m_inks);
    }

 private:
    using Ink = std::conditional_t<std::is_same_v<Sample, Rgba32>, std::uint32_t, std::uint8_t>;

    PlaneView<Sample> m_plane;
    Stretch m_columns, m_rows;
    const Ink (&m_inks)[mostInks];
    std::vector<std::uint8_t> m_above, m_below;
    decltype(&EveryCorner<0>) m_some;
    decltype(Printer(PlaneView<Sample>{}, InstructionSet{})) m_print;
    unsigned m_next = 0;
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
    const unsigned colours = unsigned(std::clamp(settings.colours, 2, int(mostInks)));
    Corners corners(columns, rows, panels, colours, set, [&](unsigned y, std::int16_t* tones) {
        ReadTones(picture, y, tones, set);
        alphas.Read(y);
    });
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
            const std::uint8_t* const above = corners.Above(y);
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
