#include "dvd_effects/templates/moods.h"

#include <algorithm>

#include "effects/base/row_loops.h"

namespace AVBased {

namespace {

struct Row {
    std::string_view templateName;
    MoodColours light, dark;
};

constexpr Row rows[] = {
    // White walls, and night.
    {"menu_fullscreen", {{236, 238, 240}, {255, 255, 255}}, {{0, 0, 0}, {24, 24, 28}}},
    {"menu_layeredtitles", {{226, 232, 238}, {250, 246, 238}}, {{16, 18, 24}, {44, 48, 58}}},
    {"menu_resizingpanels", {{238, 238, 236}, {255, 255, 255}}, {{0, 0, 0}, {18, 20, 24}}},
    {"menu_push", {{250, 246, 238}, {255, 255, 255}}, {{18, 22, 30}, {44, 52, 66}}},
    {"menu_videowall", {{214, 220, 228}, {246, 248, 250}}, {{0, 0, 0}, {22, 24, 30}}},
    {"menu_performance", {{214, 200, 226}, {255, 246, 250}}, {{4, 6, 10}, {52, 60, 76}}},
    {"menu_rectangles", {{206, 226, 230}, {244, 250, 250}}, {{6, 8, 12}, {38, 44, 54}}},
    {"menu_vignette", {{226, 212, 198}, {252, 246, 236}}, {{6, 8, 12}, {44, 52, 66}}},
    // Bleached wood, linen and new paper; ebony, velvet and a map of the night.
    {"menu_memories", {{206, 192, 172}, {246, 238, 226}}, {{12, 10, 10}, {66, 58, 54}}},
    {"menu_memories2", {{206, 192, 172}, {246, 238, 226}}, {{12, 10, 12}, {64, 56, 60}}},
    {"menu_stacking", {{204, 210, 212}, {246, 246, 242}}, {{8, 8, 14}, {48, 42, 66}}},
    {"menu_travel", {{196, 212, 214}, {255, 252, 244}}, {{10, 18, 32}, {62, 78, 96}}},
    {"menu_oldage", {{214, 206, 192}, {250, 246, 236}}, {{12, 16, 22}, {60, 70, 82}}},
    // A morning, and a night with the moon.
    {"menu_pets", {{232, 224, 190}, {255, 252, 236}}, {{14, 24, 44}, {62, 82, 104}}},
    {"menu_babygirl", {{250, 226, 224}, {255, 252, 248}}, {{34, 18, 44}, {96, 62, 96}}},
    {"menu_babyboy", {{216, 232, 240}, {252, 254, 255}}, {{10, 22, 52}, {54, 80, 126}}},
    {"menu_specialoccasion", {{236, 218, 196}, {255, 250, 240}}, {{6, 12, 24}, {40, 56, 82}}},
    {"menu_festival", {{226, 196, 206}, {255, 238, 222}}, {{4, 6, 10}, {44, 50, 58}}},
    {"submenu_festival", {{226, 196, 206}, {255, 238, 222}}, {{4, 6, 10}, {44, 50, 58}}},
    {"instructionmenu_festival", {{226, 196, 206}, {255, 238, 222}}, {{4, 6, 10}, {44, 50, 58}}},
    {"submenu_common", {{222, 226, 232}, {252, 252, 252}}, {{8, 10, 14}, {46, 50, 60}}},
    {"instructionmenu_common", {{222, 226, 232}, {252, 252, 252}}, {{8, 10, 14}, {46, 50, 60}}},
};

constexpr std::uint32_t BrightnessOf(std::uint32_t red, std::uint32_t green, std::uint32_t blue) {
    return (red * 77 + green * 150 + blue * 29 + 128) >> 8;
}
constexpr std::uint8_t Between(std::uint32_t dark, std::uint32_t bright, std::uint32_t part, std::uint32_t of) {
    return static_cast<std::uint8_t>((dark * (of - part) + bright * part + of / 2) / of);
}
constexpr Colour Mixed(const MoodColours& ends, std::uint32_t part, std::uint32_t of) {
    return {Between(ends.dark.red, ends.bright.red, part, of), Between(ends.dark.green, ends.bright.green, part, of),
            Between(ends.dark.blue, ends.bright.blue, part, of)};
}

// What each of 256 levels becomes. The ends are those that a hundredth of all pixels lies beyond.
struct Tones {
    std::uint32_t pixels[256];

    Tones(const std::uint32_t (&histogram)[256], LayerKind kind, const MoodColours& colours) {
        std::uint32_t all = 0, least = 0, most = 255, below = 0, above = 0;
        for (const std::uint32_t count : histogram) all += count;
        while (least < 255 && (below += histogram[least]) * 100ull <= all) ++least;
        while (most > least && (above += histogram[most]) * 100ull <= all) --most;
        const std::uint32_t of = std::max(1u, most - least);
        for (std::uint32_t i = 0; i < 256; ++i)
            pixels[i] = PixelOf(kind, Mixed(colours, std::clamp(i, least, most) - least, of));
    }
};

}  // namespace

Colour MoodColours::Of(Colour own) const {
    Colour colour = Mixed(*this, BrightnessOf(own.red, own.green, own.blue), 255);
    colour.alpha = own.alpha;
    return colour;
}

const MoodColours* MoodOf(std::string_view templateName, std::int32_t mood) {
    if (mood != moodLight && mood != moodDark) return nullptr;
    const auto* const row = std::find_if(std::begin(rows), std::end(rows),
                                         [&](const Row& each) { return each.templateName == templateName; });
    return row == std::end(rows) ? nullptr : mood == moodLight ? &row->light : &row->dark;
}

void Recolour(const Canvas& canvas, LayerKind kind, const MoodColours& colours) {
    std::uint32_t histogram[256] = {};
    ForFrame(
        [&](const PackedView& view) {
            const auto level = [](std::uint32_t pixel) { return BrightnessOf(Red(pixel), Green(pixel), Blue(pixel)); };
            for (unsigned y = 0; y < view.height; ++y)
                for (unsigned x = 0; x < view.width; ++x) ++histogram[level(LoadWord(view.Row(y) + x))];
            const Tones tones(histogram, kind, colours);
            ForEachPixel(view, [&](std::uint32_t pixel) {
                const std::uint32_t tone = tones.pixels[level(pixel)];
                return WithAlphaOf(pixel, Blue(tone), Green(tone), Red(tone));
            });
        },
        [&](const PlanarView& view) {
            const ComponentView& luma = view.plane[0];
            for (unsigned y = 0; y < luma.height; ++y)
                for (unsigned x = 0; x < luma.width; ++x) ++histogram[luma.Row(y)[x]];
            const Tones tones(histogram, kind, colours);
            for (unsigned p = 1; p < 3; ++p)
                for (unsigned y = 0; y < view.plane[p].height; ++y)
                    for (unsigned x = 0; x < view.plane[p].width; ++x)
                        view.plane[p].Row(y)[x] =
                            std::uint8_t(tones.pixels[luma.Row(std::min(y << view.rowShift, luma.height - 1))[std::min(
                                             x << view.columnShift, luma.width - 1)]] >>
                                             (8 * p) &
                                         255);
            ForEachSample(luma, [&](std::uint8_t level) { return std::uint8_t(tones.pixels[level]); });
        },
        canvas.Frame());
}

}  // namespace AVBased
