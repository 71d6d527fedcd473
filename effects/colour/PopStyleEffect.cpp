#include "effects/colour/PopStyleEffect.h"

#include <vector>

#include "effects/base/row_loops.h"
#include "effects/colour/chroma_blocks.h"

namespace AVBased {
namespace {

constexpr Property<PopStyleSettings> popStyleProperties[] = {
    {"popstyle_colors", "4", &PopStyleSettings::colours},
    {"popstyle_palette", "0", &PopStyleSettings::palette},
    {"popstyle_panels", "0", &PopStyleSettings::panels},
};

constexpr unsigned mostColours = 5, palettes = 4;

// From dark to light, so that the picture stays readable in each.
constexpr std::uint32_t paletteColours[palettes][mostColours] = {
    {0x2B0B6E, 0xE6007E, 0xFF6A00, 0xFFB400, 0xFFF04D},
    {0x14145A, 0xE3172D, 0x00A9E0, 0x6FD9C4, 0xFFF3C4},
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
    std::uint8_t steps[mostColours - 1], luma[mostColours], u[mostColours], v[mostColours];
    std::uint32_t words[mostColours];

    Inks(unsigned palette, unsigned count) {
        for (unsigned i = 0; i < mostColours; ++i) {
            const unsigned k = std::min(i, count - 1);
            if (i > 0) steps[i - 1] = std::uint8_t(i < count ? 16 + 219 * i / count : 255);
            words[i] = paletteColours[palette][(8 * k + count - 1) / (2 * count - 2)];
            luma[i] = std::uint8_t(LumaOf(words[i]));
            u[i] = UOf(words[i]);
            v[i] = VOf(words[i]);
        }
    }
};

// Written out, so that it becomes compares and blends.
template <class Value, class Tone>
Value Choose(Tone tone, const Inks& inks, const Value (&values)[mostColours]) {
    Value value = values[0];
    for (unsigned i = 1; i < mostColours; ++i) value = tone >= inks.steps[i - 1] ? values[i] : value;
    return value;
}

void PrintPixels(Rgba32* row, const std::uint8_t* tones, const std::uint8_t* alphas, unsigned begin, unsigned end,
                 const Inks& given) {
    const Inks inks = given;  // a copy, which the stores below cannot change
    for (unsigned x = begin; x < end; ++x)
        StoreWord(row + x, Choose(std::uint32_t(tones[x]), inks, inks.words) | std::uint32_t(alphas[x]) << 24);
}

void PrintSamples(std::uint8_t* __restrict luma, std::uint8_t* __restrict u, std::uint8_t* __restrict v,
                  const std::uint8_t* __restrict tones, unsigned begin, unsigned end, const Inks& given) {
    const Inks inks = given;
    for (unsigned x = begin; x < end; ++x) {
        luma[x] = Choose(tones[x], inks, inks.luma);
        u[x] = Choose(tones[x], inks, inks.u);
        v[x] = Choose(tones[x], inks, inks.v);
    }
}

void Halve(std::uint8_t* __restrict half, const std::uint8_t* __restrict upper, const std::uint8_t* __restrict lower,
           unsigned width) {
    for (unsigned x = 0; x < width / 2; ++x)
        half[x] = std::uint8_t((upper[2 * x] + upper[2 * x + 1] + lower[2 * x] + lower[2 * x + 1] + 2) >> 2);
    if (width % 2) half[width / 2] = std::uint8_t((upper[width - 1] + lower[width - 1] + 1) >> 1);
}

void ReadRow(const PackedView& picture, unsigned y, std::uint8_t* __restrict tones, std::uint8_t* __restrict alphas) {
    const Rgba32* const row = picture.Row(y);
    for (unsigned x = 0; x < picture.width; ++x) {
        const std::uint32_t p = LoadWord(row + x);
        tones[x] = std::uint8_t(LumaOf(p));
        alphas[x] = std::uint8_t(p >> 24);
    }
}

void ReadRow(const PlanarView& picture, unsigned y, std::uint8_t* tones, std::uint8_t* alphas) {
    const ComponentView &luma = picture.plane[0], &alpha = picture.plane[3];
    std::copy_n(luma.Row(y), luma.width, tones);
    if (y < alpha.height) std::copy_n(alpha.Row(y), std::min(alpha.width, luma.width), alphas);
}

// One print that fills the frame, or four of half the size, row by row.
class Prints {
 public:
    Prints(unsigned width, unsigned height, const PopStyleSettings& settings)
        : m_width(width),
          m_height(height),
          m_panels(settings.panels != 0),
          m_across(m_panels ? width - width / 2 : width),
          m_down(m_panels ? height - height / 2 : height),
          m_rows(4 * std::size_t(width)),
          m_small(m_panels ? 2 * std::size_t(m_across) * m_down : 0) {
        const unsigned colours = unsigned(std::clamp(settings.colours, 2, int(mostColours)));
        for (unsigned i = 0; i < palettes; ++i)
            m_inks.emplace_back((std::uint32_t(settings.palette) + i) % palettes, colours);
    }

    bool HasPanels() const { return m_panels; }
    unsigned Across() const { return m_across; }
    std::uint8_t* Tones() { return m_rows.data(); }
    std::uint8_t* Alphas() { return Tones() + m_width; }
    const Inks& InksAt(unsigned y, bool right) const { return m_inks[(y < m_down ? 0 : 2) + (right ? 1 : 0)]; }

    /// Reads the picture, as far as that must be done before anything is written.
    template <class View>
    void Prepare(const View& picture) {
        for (unsigned y = 0; m_panels && y < m_down; ++y) {
            std::uint8_t *const lowerTones = Alphas() + m_width, *const lowerAlphas = lowerTones + m_width;
            ReadRow(picture, 2 * y, Tones(), Alphas());
            ReadRow(picture, std::min(2 * y + 1, m_height - 1), lowerTones, lowerAlphas);
            Halve(SmallTones(y), Tones(), lowerTones, m_width);
            Halve(SmallAlphas(y), Alphas(), lowerAlphas, m_width);
        }
    }
    /// Brings what row y of the frame is to show to Tones() and Alphas().
    template <class View>
    void Load(const View& picture, unsigned y) {
        if (!m_panels) return ReadRow(picture, y, Tones(), Alphas());
        const unsigned row = y < m_down ? y : y - m_down;
        for (const auto& [to, from] : {std::pair{Tones(), SmallTones(row)}, {Alphas(), SmallAlphas(row)}}) {
            std::copy_n(from, m_across, to);
            std::copy_n(from, m_width - m_across, to + m_across);
        }
    }

 private:
    std::uint8_t* SmallTones(std::size_t y) { return m_small.data() + 2 * y * m_across; }
    std::uint8_t* SmallAlphas(std::size_t y) { return SmallTones(y) + m_across; }

    unsigned m_width, m_height;
    bool m_panels;
    unsigned m_across, m_down;
    std::vector<std::uint8_t> m_rows, m_small;
    std::vector<Inks> m_inks;
};

void PopStyleRgba32Effect(const PackedView& picture, Prints& prints) {
    if (!prints.HasPanels())
        return ForEachPixel(picture, [inks = prints.InksAt(0, false)](std::uint32_t p) {
            return Choose(LumaOf(p), inks, inks.words) | (p & alphaMask);
        });
    prints.Prepare(picture);
    for (unsigned y = 0; y < picture.height; ++y) {
        prints.Load(picture, y);
        Rgba32* const row = picture.Row(y);
        PrintPixels(row, prints.Tones(), prints.Alphas(), 0, prints.Across(), prints.InksAt(y, false));
        PrintPixels(row, prints.Tones(), prints.Alphas(), prints.Across(), picture.width, prints.InksAt(y, true));
    }
}

// Chroma of every pixel of a row, and its sums for the samples of a chroma plane.
struct ChromaRow {
    std::vector<std::uint8_t> pixels;
    std::vector<std::uint16_t> sums;

    void Mean(std::uint8_t* __restrict samples, unsigned logPixels) {
        std::uint16_t* const s = sums.data();
        const auto half = std::uint16_t(1u << logPixels >> 1);
        for (std::size_t i = 0, count = sums.size(); i < count; ++i)
            samples[i] = std::uint8_t(std::uint16_t(s[i] + half) >> logPixels);
        std::fill(sums.begin(), sums.end(), std::uint16_t(0));
    }
};

template <unsigned shift>
void PopStyleComponentEffect(const PlanarView& picture, Prints& prints, ChromaRow (&chroma)[2]) {
    const ComponentView& luma = picture.plane[0];
    const ComponentView& alpha = picture.plane[3];
    const unsigned group = 1u << picture.rowShift;
    prints.Prepare(picture);
    for (unsigned y = 0; y < luma.height; ++y) {
        prints.Load(picture, y);
        std::uint8_t *const u = chroma[0].pixels.data(), *const v = chroma[1].pixels.data();
        PrintSamples(luma.Row(y), u, v, prints.Tones(), 0, prints.Across(), prints.InksAt(y, false));
        PrintSamples(luma.Row(y), u, v, prints.Tones(), prints.Across(), luma.width, prints.InksAt(y, true));
        // The last row stands for those that its group lacks.
        const unsigned times = y + 1 < luma.height ? 1 : group - y % group;
        for (unsigned p : {1u, 2u}) {
            ChromaRow& row = chroma[p - 1];
            if (y >> picture.rowShift >= picture.plane[p].height) continue;
            for (unsigned n = 0; n < times; ++n)
                AddBlocks<shift>(row.sums.data(), row.pixels.data(), luma.width, unsigned(row.sums.size()));
            if (y % group + times == group)
                row.Mean(picture.plane[p].Row(y >> picture.rowShift), shift + picture.rowShift);
        }
        if (prints.HasPanels() && y < alpha.height)
            std::copy_n(prints.Alphas(), std::min(alpha.width, luma.width), alpha.Row(y));
    }
}

}  // namespace

CPopStyleVideoImageEffect::CPopStyleVideoImageEffect() : CSettingsEffect(effectNamePopStyle, popStyleProperties) {}

void CPopStyleVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    ForFrame(
        [&](const PackedView& picture) {
            Prints prints(picture.width, picture.height, m_settings);
            variantsOf<PopStyleRgba32Effect>.For(Instructions())(picture, prints);
        },
        [&](const PlanarView& picture) {
            const ComponentView& luma = picture.plane[0];
            Prints prints(luma.width, luma.height, m_settings);
            ChromaRow chroma[2];
            for (unsigned p : {1u, 2u})
                chroma[p - 1] = {std::vector<std::uint8_t>(luma.width),
                                 std::vector<std::uint16_t>(ColumnsOf(picture, p).size)};
            const auto print = WithConstantShift(picture.columnShift, [&](auto shift) {
                return variantsOf<PopStyleComponentEffect<shift>>.For(Instructions());
            });
            print(picture, prints, chroma);
        },
        *frame);
}

}  // namespace AVBased
