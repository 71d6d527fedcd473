#include "host/films/button_list.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "host/base/errors.h"
#include "host/films/picture_captions.h"

namespace Nifikral {
namespace {

// Parts of the font's size.
constexpr double gapHeight = 0.3;
constexpr int mostColumns = 6, smallestFont = 12;

// Boxes in columns, each as wide as its longest text, for texts of one font size.
struct Grid {
    int size = 0, lines = 1, rows = 1;
    std::vector<int> textWidths = {};  // of the columns

    int BoxWidth(int column) const { return textWidths[std::size_t(column)] + 2 * LabelPadding(size); }
    int BoxHeight() const { return LabelHeight(size, lines); }
    int Gap() const { return std::max(2, int(std::lround(gapHeight * size))); }
    int Columns() const { return int(textWidths.size()); }
    int Left(int column) const {
        int left = 0;
        for (int i = 0; i < column; ++i) left += BoxWidth(i) + Gap();
        return left;
    }
    int Width() const { return Left(Columns()) - Gap(); }
    int Height() const { return rows * (BoxHeight() + Gap()) - Gap(); }

    // Leaves the longest columns the same width, of which the grid gets no wider than that.
    void Narrow(int width) {
        while (Width() > width) {
            int& widest = *std::max_element(textWidths.begin(), textWidths.end());
            if (widest <= size) return;
            --widest;
        }
    }
};

// The marks of buttons are to stay within the safe area too.
FilmBox ListArea(const Film& film) {
    const FilmBox safe = SafeArea(film.width, film.height);
    return {safe.left + markRoom, safe.top + markRoom, safe.width - 2 * markRoom, safe.height - 2 * markRoom};
}

// Beside captions, buttons are but the way to the other pages.
int LargestFont(const MenuProject& page) {
    return std::max(smallestFont, page.film.height / (page.captions.empty() ? 16 : 21));
}

// How many buttons are too long for their places.
long CutsIn(const Grid& grid, const MenuProject& page, StyledText style) {
    style.size = grid.size;
    long cuts = 0;
    for (std::size_t i = 0; i < page.buttons.size(); ++i)
        cuts += BrokenInto(style, page.buttons[i], grid.textWidths[i / std::size_t(grid.rows)], grid.lines).empty();
    return cuts;
}

// Those that fit with fonts of at least a readable size; where none does, those of smaller ones, and then those of the
// smallest with as much width as there is, in one line or two, which cut the least.
std::vector<Grid> FittingGrids(const MenuProject& page, const StyledText& style, const FilmBox& safe) {
    const int largest = LargestFont(page), readable = std::max(smallestFont, largest * 7 / 10);
    const int least = std::max(smallestFont, largest / 2), count = int(page.buttons.size());
    std::vector<int> widths;
    for (const std::string& words : page.buttons) widths.push_back(TextWidth(style, words, largest));
    std::vector<Grid> fitting, small, tight;
    for (int columns = 1; columns <= std::min(mostColumns, count); ++columns)
        for (int size = largest; size >= least; --size) {
            Grid grid{size, 1, (count + columns - 1) / columns};
            for (int i = 0; i < count; ++i) {
                if (i % grid.rows == 0) grid.textWidths.push_back(0);
                int& width = grid.textWidths.back();
                // Letters of other sizes are not quite as wide in proportion.
                width = std::max(width, int(std::ceil(double(widths[std::size_t(i)]) * size / largest)) + 4);
            }
            if (grid.Height() > safe.height) continue;
            if (grid.Width() <= safe.width) (size >= readable ? fitting : small).push_back(grid);
            if (grid.Width() <= safe.width || size > least) continue;
            grid.Narrow(safe.width);
            if (grid.Width() > safe.width) continue;
            tight.push_back(grid);
            grid.lines = 2;
            if (grid.Height() <= safe.height) tight.push_back(grid);
        }
    if (!fitting.empty()) return fitting;
    if (!small.empty() || tight.empty()) return small;
    std::vector<long> cuts;
    for (const Grid& grid : tight) cuts.push_back(CutsIn(grid, page, style));
    const long fewest = *std::min_element(cuts.begin(), cuts.end());
    for (std::size_t i = 0; i < tight.size(); ++i)
        if (cuts[i] == fewest) small.push_back(tight[i]);
    return small;
}

struct PlacedGrid {
    Grid grid;
    FilmBox all;
    bool hides = false;  // something to be kept, or beside that, a text
};

// What no button may lie on, marks included, as long as there is another place.
std::vector<FilmBox> Kept(const ButtonList& list, const std::vector<RestingPlace>& places, const Film& film) {
    std::vector<FilmBox> kept;
    if (list.captions.empty()) return kept;
    for (const RestingPlace& place : places)
        if (place.kind == PlaceKind::Picture && place.Rests()) kept.push_back(place.Reach(film).Grown(2 * markRoom));
    for (const Label& caption : list.captions) kept.push_back(caption.box.Grown(markRoom));
    return kept;
}

// Where the title begins, if that is at the left, or there are texts alone: templates may have a panel there.
int TitleBegin(const MenuProject& page, const FilmBox& safe, int width) {
    const int title = page.texts.empty() ? 0 : page.texts.front().box[0];
    if (!page.sources.empty() && title > page.film.width / 4) return safe.left;
    return std::clamp(title, safe.left, std::max(safe.left, safe.left + safe.width - width));
}

// The grid and its place that hide the least, as a part of the frame: no text and nothing else that is to be kept, if
// that can be; a small font is as bad as hiding something. Of places that are alike the one at the title's beginning,
// in the middle, is taken, and below captions the one in the middle of the lower end.
PlacedGrid BestPlace(const std::vector<Grid>& grids, const MenuProject& page, const FilmBox& safe,
                     const MenuWatch& watch, const std::vector<FilmBox>& kept) {
    constexpr int steps = 16;
    constexpr double smallFontWeight = 0.2, farWeight = 0.0002;
    // Pages of text alone have theirs: the text in its upper part, the keys of a remote control, and buttons at its
    // end.
    constexpr int panelEnd = 28;
    const bool onPanel = page.sources.empty();
    PlacedGrid best;
    double least = 0;
    for (const Grid& grid : grids) {
        const double part = double(grid.Width()) * grid.Height() / (double(page.film.width) * page.film.height);
        const double small = smallFontWeight * (1 - double(grid.size) / LargestFont(page));
        const int title = TitleBegin(page, safe, grid.Width());
        for (int down = 0; down <= steps; ++down)
            for (int across = -1; across <= steps; ++across) {
                const int left = across < 0 ? title : safe.left + (safe.width - grid.Width()) * across / steps;
                const FilmBox box{left, safe.top + (safe.height - grid.Height()) * down / steps, grid.Width(),
                                  grid.Height()};
                const int aside = across + 1 + (onPanel && across >= 0 ? 3 * steps : 0);
                const int low = std::abs(2 * down - (onPanel ? panelEnd : steps));
                const int far = page.captions.empty()
                                    ? aside + low
                                    : steps * (grid.rows - 1) + steps - down + std::abs(2 * across - steps);
                const bool hides =
                    std::any_of(kept.begin(), kept.end(), [&](const FilmBox& other) { return box.Overlaps(other); });
                const double known = small + farWeight * far + (hides ? 2 : 0);
                if (!best.all.IsEmpty() && known >= least) continue;
                const double text = watch.Cover(PlaceKind::Text, box);
                const double cost = known + part * (watch.Cover(PlaceKind::Picture, box) + text) + (text > 0 ? 1 : 0);
                if (!best.all.IsEmpty() && cost >= least) continue;
                least = cost;
                best = {grid, box, hides || (!kept.empty() && text > 0)};
            }
    }
    return best;
}

}  // namespace

ButtonList LayOutButtons(const MenuProject& page, const MenuWatch& watch) {
    ButtonList list;
    const std::vector<RestingPlace> places = watch.Places();
    list.captions = LayOutCaptions(page, places);
    if (page.buttons.empty()) return list;
    const FilmBox area = ListArea(page.film);
    StyledText style = page.labels;
    const std::vector<Grid> grids = FittingGrids(page, style, area);
    if (grids.empty())
        throw HostError(ExitCode::Usage, std::to_string(page.buttons.size()) + " buttons do not fit a menu of " +
                                             std::to_string(page.film.width) + " x " +
                                             std::to_string(page.film.height) + "; give fewer, or a larger menu");
    const auto [grid, all, hides] = BestPlace(grids, page, area, watch, Kept(list, places, page.film));
    list.hides = hides;
    style.size = grid.size;
    for (std::size_t i = 0; i < page.buttons.size(); ++i) {
        const int column = int(i) / grid.rows, row = int(i) % grid.rows;
        Label& label = list.buttons.emplace_back();
        label.box = {all.left + grid.Left(column), all.top + row * (grid.BoxHeight() + grid.Gap()),
                     grid.BoxWidth(column), grid.BoxHeight()};
        label.text = style;
        label.text.text =
            CutInto(style, page.buttons[i], grid.textWidths[std::size_t(column)], grid.lines, "the button");
    }
    return list;
}

FramePtr DrawButtons(const ButtonList& list, const Film& film) {
    FramePtr picture = NewPicture(AV_PIX_FMT_BGRA, film.width, film.height);
    for (int y = 0; y < film.height; ++y)
        std::memset(picture->data[0] + std::ptrdiff_t(y) * picture->linesize[0], 0, std::size_t(film.width) * 4);
    for (const std::vector<Label>* labels : {&list.captions, &list.buttons})
        for (const Label& label : *labels) DrawLabel(*picture, label);
    return picture;
}

}  // namespace Nifikral
