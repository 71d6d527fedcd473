#include "host/films/button_list.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "host/base/errors.h"
#include "host/base/log.h"
#include "host/films/text_renderer.h"

namespace Nifikral {
namespace {

// Parts of the font's size.
constexpr double sidePadding = 0.55, boxHeight = 1.65, gapHeight = 0.3, cornerRadius = 0.3;
constexpr int mostColumns = 4, smallestFont = 12;

int PartOf(double part, int size) { return int(std::lround(part * size)); }

// Equal boxes in columns, for texts of one font size.
struct Grid {
    int size = 0, columns = 1, rows = 1, textWidth = 0;

    int BoxWidth() const { return textWidth + 2 * PartOf(sidePadding, size); }
    int BoxHeight() const { return PartOf(boxHeight, size); }
    int Gap() const { return std::max(2, PartOf(gapHeight, size)); }
    int Width() const { return columns * (BoxWidth() + Gap()) - Gap(); }
    int Height() const { return rows * (BoxHeight() + Gap()) - Gap(); }
};

FilmBox SafeArea(const Film& film) {
    const int left = (film.width + 9) / 10, top = (film.height + 9) / 10;
    return {left, top, film.width - 2 * left, film.height - 2 * top};
}

StyledText StyleOf(const MenuProject& page) {
    StyledText style{{}, {}, {.bold = true}, 0, 255, 255, 255};
    if (!page.texts.empty()) style = page.texts.front().styled;
    // The shade does what these are for.
    style.style.outline = style.style.shadow = style.style.underline = false;
    return style;
}

int WidthOf(StyledText text, const std::string& words, int size) {
    text.text = words;
    text.size = size;
    return words.empty() ? 0 : RenderText(text)->width;
}

int LargestFont(const Film& film) { return std::max(smallestFont, film.height / 16); }

int WidestOf(const MenuProject& page, const StyledText& style, int size) {
    int widest = 0;
    for (const std::string& words : page.buttons) widest = std::max(widest, WidthOf(style, words, size));
    return widest;
}

// Those that fit with fonts of at least a readable size; where none does, those of smaller ones, and then those of the
// smallest with as much width as there is.
std::vector<Grid> FittingGrids(const MenuProject& page, const StyledText& style, const FilmBox& safe) {
    const int largest = LargestFont(page.film), readable = std::max(smallestFont, largest * 7 / 10);
    const int least = std::max(smallestFont, largest / 2), widest = WidestOf(page, style, largest);
    const auto count = int(page.buttons.size());
    std::vector<Grid> fitting, small, tight;
    for (int columns = 1; columns <= std::min(mostColumns, count); ++columns)
        for (int size = largest; size >= least; --size) {
            Grid grid{size, columns, (count + columns - 1) / columns, 0};
            grid.textWidth = int(std::ceil(double(widest) * size / largest)) + 1;
            if (grid.Height() > safe.height) continue;
            if (grid.Width() <= safe.width) (size >= readable ? fitting : small).push_back(grid);
            if (grid.Width() <= safe.width || size > least) continue;
            grid.textWidth = (safe.width + grid.Gap()) / columns - grid.Gap() - 2 * PartOf(sidePadding, size);
            if (grid.textWidth > size) tight.push_back(grid);
        }
    return !fitting.empty() ? fitting : !small.empty() ? small : tight;
}

std::string Cut(const StyledText& style, const std::string& words, const Grid& grid) {
    if (WidthOf(style, words, grid.size) <= grid.textWidth) return words;
    PrintWarning("the button \"" + words + "\" is too long for its place and cut; give it fewer characters");
    std::string kept = words;
    const auto cut = [&] { return kept + "\xe2\x80\xa6"; };
    while (!kept.empty() && WidthOf(style, cut(), grid.size) > grid.textWidth) {
        while (!kept.empty() && (static_cast<unsigned char>(kept.back()) & 0xC0) == 0x80) kept.pop_back();
        if (!kept.empty()) kept.pop_back();
        while (!kept.empty() && kept.back() == ' ') kept.pop_back();
    }
    return cut();
}

struct PlacedGrid {
    Grid grid;
    FilmBox all;
};

// The grid and its place that hide the least, as a part of the frame: no text if that can be, a small font is as bad as
// hiding something, and of places that are alike the one in the middle of the left side is taken.
PlacedGrid BestPlace(const std::vector<Grid>& grids, const Film& film, const FilmBox& safe, const MenuWatch& watch) {
    constexpr int steps = 16;
    constexpr double smallFontWeight = 0.2, farWeight = 0.0002;
    PlacedGrid best;
    double least = 0;
    for (const Grid& grid : grids) {
        const double part = double(grid.Width()) * grid.Height() / (double(film.width) * film.height);
        const double small = smallFontWeight * (1 - double(grid.size) / LargestFont(film));
        for (int down = 0; down <= steps; ++down)
            for (int across = 0; across <= steps; ++across) {
                const FilmBox box{safe.left + (safe.width - grid.Width()) * across / steps,
                                  safe.top + (safe.height - grid.Height()) * down / steps, grid.Width(), grid.Height()};
                const double text = watch.Cover(PlaceKind::Text, box);
                const double hidden = part * (watch.Cover(PlaceKind::Picture, box) + text) + (text > 0 ? 1 : 0);
                const double cost = hidden + small + farWeight * (across + std::abs(2 * down - steps));
                if (!best.all.IsEmpty() && cost >= least) continue;
                least = cost;
                best = {grid, box};
            }
    }
    return best;
}

unsigned ShadeFor(const StyledText& style, bool isBusy) {
    const bool isLight = 3 * style.red + 6 * style.green + style.blue > 1100;
    const unsigned alpha = isBusy ? 0xB0 : 0x60;
    return alpha << 24 | (isLight ? 0x101420u : 0xF4F4F0u);
}

// How much of a pixel lies within a box with round corners.
double Within(const FilmBox& box, double radius, int x, int y) {
    const auto beyond = [&](int place, int begin, int size) {
        const double middle = place + 0.5 - begin;
        return std::max({radius - middle, middle - (size - radius), 0.0});
    };
    const double across = beyond(x, box.left, box.width), down = beyond(y, box.top, box.height);
    return std::clamp(radius + 0.5 - std::hypot(across, down), 0.0, 1.0);
}

void DrawShade(AVFrame& picture, const FilmBox& box, unsigned shade, double radius) {
    for (int y = box.top; y < box.top + box.height; ++y)
        for (int x = box.left; x < box.left + box.width; ++x) {
            std::uint8_t* const to = picture.data[0] + std::ptrdiff_t(y) * picture.linesize[0] + std::ptrdiff_t(x) * 4;
            for (int c = 0; c < 3; ++c) to[c] = std::uint8_t(shade >> 8 * c);
            to[3] = std::uint8_t(std::lround((shade >> 24) * Within(box, radius, x, y)));
        }
}

void DrawText(AVFrame& picture, const AVFrame& text, int left, int top, const FilmBox& box) {
    for (int y = std::max(top, box.top); y < std::min(top + text.height, box.top + box.height); ++y)
        for (int x = std::max(left, box.left); x < std::min(left + text.width, box.left + box.width); ++x) {
            const std::uint8_t* const from =
                text.data[0] + std::ptrdiff_t(y - top) * text.linesize[0] + std::ptrdiff_t(x - left) * 4;
            std::uint8_t* const to = picture.data[0] + std::ptrdiff_t(y) * picture.linesize[0] + std::ptrdiff_t(x) * 4;
            const int over = from[3] * 255, under = to[3] * (255 - from[3]);
            if (over + under == 0) continue;
            for (int c = 0; c < 3; ++c) to[c] = std::uint8_t((from[c] * over + to[c] * under) / (over + under));
            to[3] = std::uint8_t((over + under) / 255);
        }
}

}  // namespace

ButtonList LayOutButtons(const MenuProject& page, const MenuWatch& watch) {
    ButtonList list;
    if (page.buttons.empty()) return list;
    const FilmBox safe = SafeArea(page.film);
    StyledText style = StyleOf(page);
    const std::vector<Grid> grids = FittingGrids(page, style, safe);
    if (grids.empty())
        throw HostError(ExitCode::Usage, std::to_string(page.buttons.size()) + " buttons do not fit a menu of " +
                                             std::to_string(page.film.width) + " x " +
                                             std::to_string(page.film.height) + "; give fewer, or a larger menu");
    const auto [grid, all] = BestPlace(grids, page.film, safe, watch);
    style.size = grid.size;
    for (std::size_t i = 0; i < page.buttons.size(); ++i) {
        const int column = int(i) / grid.rows, row = int(i) % grid.rows;
        list.boxes.push_back({all.left + column * (grid.BoxWidth() + grid.Gap()),
                              all.top + row * (grid.BoxHeight() + grid.Gap()), grid.BoxWidth(), grid.BoxHeight()});
        style.text = Cut(style, page.buttons[i], grid);
        list.texts.push_back(style);
    }
    list.shade = ShadeFor(style, watch.Cover(PlaceKind::Picture, all) > 0.01);
    return list;
}

FramePtr DrawButtons(const ButtonList& list, const Film& film) {
    FramePtr picture = NewPicture(AV_PIX_FMT_BGRA, film.width, film.height);
    for (int y = 0; y < film.height; ++y)
        std::memset(picture->data[0] + std::ptrdiff_t(y) * picture->linesize[0], 0, std::size_t(film.width) * 4);
    for (std::size_t i = 0; i < list.boxes.size(); ++i) {
        const FilmBox& box = list.boxes[i];
        const int size = list.texts[i].size;
        DrawShade(*picture, box, list.shade, cornerRadius * size);
        const FramePtr text = RenderText(list.texts[i]);
        DrawText(*picture, *text, box.left + PartOf(sidePadding, size), box.top + (box.height - text->height) / 2, box);
    }
    return picture;
}

}  // namespace Nifikral
