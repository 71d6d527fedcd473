#include <gtest/gtest.h>

#include <array>

#include "tests/support/random_frames.h"

namespace AVBased::Testing {
namespace {

Settings PopStyle(const std::string& colours, const std::string& palette, const std::string& panels) {
    return {{"popstyle_colors", colours}, {"popstyle_palette", palette}, {"popstyle_panels", panels}};
}

TEST(PopStyle, GivesEachToneTheColourOfItsClass) {
    // Greys 0, 62, 63, 126, 127, 190, 191 and 255 are tones 16, 69, 70, 124, 125, 179, 180 and 235.
    const std::vector<unsigned> greys = {0x50000000, 0x503E3E3E, 0x503F3F3F, 0x507E7E7E,
                                         0x507F7F7F, 0x50BEBEBE, 0x50BFBFBF, 0x50FFFFFF};
    const std::pair<Settings, std::vector<unsigned>> expectations[] = {
        {{}, {0x502B0B6E, 0x502B0B6E, 0x50E6007E, 0x50E6007E, 0x50FFB400, 0x50FFB400, 0x50FFF04D, 0x50FFF04D}},
        {PopStyle("2", "5", "0"),
         {0x5014145A, 0x5014145A, 0x5014145A, 0x5014145A, 0x50FFF3C4, 0x50FFF3C4, 0x50FFF3C4, 0x50FFF3C4}},
        {PopStyle("3", "-2", "0"),
         {0x503A0066, 0x503A0066, 0x503A0066, 0x508CC63F, 0x508CC63F, 0x50FFF0A8, 0x50FFF0A8, 0x50FFF0A8}},
        {PopStyle("2147483647", "3", "0"),
         {0x50062B3F, 0x5000838F, 0x5000838F, 0x50F15A24, 0x50F15A24, 0x50FF9EB5, 0x50FF9EB5, 0x50FFE94A}},
    };
    for (const auto& [settings, expected] : expectations) {
        TestFrame frame(30, 8, 1);
        frame.SetSamples(0, {greys});
        Apply(*MakeEffect("popstyle", settings), frame);
        EXPECT_EQ(frame.Samples(), Grid{expected});
    }
}

TEST(PopStyle, ShowsTheShrunkPictureInFourPanels) {
    // The third and fourth columns make one pixel of a panel, a middle grey of middle alpha.
    TestFrame frame(30, 5, 3);
    const std::vector<unsigned> row = {0xFF000000, 0xFF000000, 0x80000000, 0x40FFFFFF, 0xFFFFFFFF};
    frame.SetSamples(0, {row, row, row});
    Apply(*MakeEffect("popstyle", PopStyle("3", "0", "1")), frame);
    const std::vector<unsigned> upper = {0xFF2B0B6E, 0x60FF6A00, 0xFFFFF04D, 0xFF14145A, 0x6000A9E0},
                                lower = {0xFF3A0066, 0x608CC63F, 0xFFFFF0A8, 0xFF062B3F, 0x60F15A24};
    EXPECT_EQ(frame.Samples(), (Grid{upper, upper, lower}));
}

// What each tone becomes in a palette, asked of the effect itself with grey pixels.
std::array<unsigned, 256> ColoursOfTones(const Settings& settings, unsigned palette) {
    TestFrame frame(30, 256, 1);
    std::vector<unsigned> greys;
    for (unsigned grey = 0; grey < 256; ++grey) greys.push_back(grey * 0x010101);
    frame.SetSamples(0, {greys});
    Apply(*MakeEffect("popstyle", PopStyle(settings[0].second, std::to_string(palette), "0")), frame);
    std::array<unsigned, 256> colours{};
    for (unsigned tone = 0, grey = 0; tone < 256; ++tone) {
        while (grey < 255 && ((220 * grey + 128) >> 8) + 16 < tone) ++grey;
        colours[tone] = frame.Samples()[0][grey];
    }
    return colours;
}

// One pixel at a time, through its panel.
struct Judge {
    std::array<unsigned, 256> colours[4];
    bool panels;

    explicit Judge(const Settings& settings) : panels(settings[2].second != "0") {
        for (unsigned i = 0; i < 4; ++i)
            colours[i] = ColoursOfTones(settings, unsigned(std::stoi(settings[1].second)) + i);
    }
    // valueAt(x, y) as the frame shows it at (x, y), and which palette it does so in.
    template <class ValueAt>
    std::pair<unsigned, unsigned> Shown(unsigned x, unsigned y, unsigned width, unsigned height, ValueAt at) const {
        if (!panels) return {at(x, y), 0};
        const unsigned across = (width + 1) / 2, down = (height + 1) / 2;
        const bool right = x >= across, low = y >= down;
        const unsigned left = 2 * (right ? x - across : x), top = 2 * (low ? y - down : y);
        const unsigned nextX = std::min(left + 1, width - 1), nextY = std::min(top + 1, height - 1);
        const unsigned sum = at(left, top) + at(nextX, top) + at(left, nextY) + at(nextX, nextY);
        return {(sum + 2) / 4, (right ? 1 : 0) + (low ? 2 : 0)};
    }

    void operator()(const PackedView& to, const PackedView& from) const {
        for (unsigned y = 0; y < to.height; ++y)
            for (unsigned x = 0; x < to.width; ++x) {
                const auto at = [&](auto value) {
                    return Shown(x, y, to.width, to.height,
                                 [&](unsigned i, unsigned j) { return unsigned(value(from.Row(j)[i])); });
                };
                const auto [tone, palette] =
                    at([](Rgba32 p) { return (66 * p.red + 129 * p.green + 25 * p.blue + 128) / 256 + 16; });
                const unsigned alpha = at([](Rgba32 p) { return p.alpha; }).first;
                StoreWord(to.Row(y) + x, colours[palette][tone] | alpha << 24);
            }
    }
    void operator()(const PlanarView& to, const PlanarView& from) const {
        const ComponentView& luma = from.plane[0];
        const auto sampleAt = [&](unsigned p) {
            return [&from, p](unsigned x, unsigned y) { return unsigned(from.plane[p].Row(y)[x]); };
        };
        const auto colourAt = [&](unsigned x, unsigned y) {
            const auto [tone, palette] = Shown(x, y, luma.width, luma.height, sampleAt(0));
            return colours[palette][tone];
        };
        const auto part = [](unsigned colour, int red, int green, int blue, int base) {
            return unsigned(
                ((red * int(Red(colour)) + green * int(Green(colour)) + blue * int(Blue(colour)) + 128) >> 8) + base);
        };
        for (unsigned y = 0; y < luma.height; ++y)
            for (unsigned x = 0; x < luma.width; ++x) {
                to.plane[0].Row(y)[x] = std::uint8_t(part(colourAt(x, y), 66, 129, 25, 16));
                if (from.HasAlpha())
                    to.plane[3].Row(y)[x] = std::uint8_t(Shown(x, y, luma.width, luma.height, sampleAt(3)).first);
            }
        const unsigned columns = 1u << from.columnShift, rows = 1u << from.rowShift;
        for (unsigned p : {1u, 2u})
            for (unsigned y = 0; y < from.plane[p].height; ++y)
                for (unsigned x = 0; x < from.plane[p].width; ++x) {
                    unsigned sum = columns * rows / 2;
                    for (unsigned i = 0; i < columns * rows; ++i) {
                        const unsigned colour = colourAt(std::min(x * columns + i % columns, luma.width - 1),
                                                         std::min(y * rows + i / columns, luma.height - 1));
                        sum += p == 1 ? part(colour, -38, -74, 112, 128) : part(colour, 112, -94, -18, 128);
                    }
                    to.plane[p].Row(y)[x] = std::uint8_t(sum / (columns * rows));
                }
    }
};

TEST(PopStyle, AgreesWithOnePixelAtATimeInEveryFormat) {
    const auto settings = [](unsigned, unsigned, std::mt19937& random) {
        return PopStyle(Between(2, 5, random), Between(0, 3, random), Between(0, 1, random));
    };
    CompareOnRandomFrames("popstyle", 200, settings,
                          [](const auto& to, const auto& from, const Settings& chosen) { Judge{chosen}(to, from); });
}

}  // namespace
}  // namespace AVBased::Testing
