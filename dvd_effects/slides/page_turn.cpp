#include "dvd_effects/slides/page_turn.h"

#include <algorithm>
#include <cmath>

#include "dvd_effects/canvas/animation.h"
#include "dvd_effects/canvas/layer.h"
#include "dvd_effects/slides/rasters.h"

namespace AVBased {

namespace {

// Fractions that are kept in an int are of 256.
inline int Part(double value) { return int(std::min(std::max(value, 0.0), 1.0) * 256); }
inline int Mixed(int a, int b, int part) { return a + (((b - a) * part + 128) >> 8); }

// Of an angle whose sine is from 0 to 1; within 0.0001, by steps that are the same on every machine.
double ArcSine(double sine) {
    constexpr double rightAngle = 1.57079632679489662;
    const double polynomial = 1.5707288 + sine * (-0.2121144 + sine * (0.0742610 - sine * 0.0187293));
    return rightAngle - std::sqrt(1 - sine) * polynomial;
}

// What a sample shows of the page: the print at (x, y), in pixels, over what is there.
struct Sight {
    double x = 0, y = 0;
    int covers = 0;  // how much of the sample the page hides
    int pale = 0;    // how little of the print shows
    int dark = 0;    // on the page
    int shadow = 0;  // on what is under it
};

// The page at one moment. A place lies `behind` the fold by so many pixels in the direction from which the page is
// turned: before the fold it lies flat, behind it it bends around a cylinder and comes back over itself.
struct Page {
    double width, height;
    double directionX, directionY, fold, radius, shadowWidth;

    Page(FrameSize size, std::int64_t t) : width(size.width), height(size.height) {
        const double done = double(t) / double(fixedOne);
        directionY = 0.45 * (1 - done);
        directionX = std::sqrt(1 - directionY * directionY);
        radius = width * 0.07 + 1;
        shadowWidth = radius * 0.9;
        const double farthest = width * directionX + height * directionY;
        fold = farthest - (farthest + radius + shadowWidth) * done;
    }

    // Where a row reaches a place behind the fold.
    double ColumnBehind(double behind, double y) const { return (fold + behind - y * directionY) / directionX; }
    double Behind(double x, double y) const { return x * directionX + y * directionY - fold; }
    // Where on a row the page's back, or its shadow, begins: before, the print lies too far outside the page.
    double FirstBack(double y) const {
        const double atLeft = directionX * (HalfTurn() + 2 * (fold - y * directionY));
        return (atLeft - width - BackShadow()) / (2 * directionX * directionX - 1);
    }

    // How far within the page a place of the print lies; below 0 outside.
    double Within(const Sight& at) const {
        return std::min(std::min(at.x, width - at.x), std::min(at.y, height - at.y));
    }
    // The page as it is seen where its paper lies `advance` farther.
    Sight Advanced(double x, double y, double advance) const {
        Sight sight;
        sight.x = x + directionX * advance;
        sight.y = y + directionY * advance;
        return sight;
    }

    // Before the fold: the page's back over its flat part.
    Sight FlatAt(double x, double y) const {
        const double behind = Behind(x, y);
        Sight sight = Advanced(x, y, HalfTurn() - 2 * behind);
        const double within = Within(sight);
        sight.covers = Part(within + 0.5);
        sight.pale = backPale;
        sight.dark = Part(std::min(-behind * (0.06 / radius), 0.12));
        const double near = std::max(1 + within / BackShadow(), 0.0);
        sight.shadow = Part(std::min(near * near, 1.0) * 0.4);
        return sight;
    }

    // On the bend: the upper half, which shows the back, else the lower half, else what is beneath.
    Sight BentAt(double x, double y) const {
        const double behind = Behind(x, y), sine = std::min(std::max(behind / radius, 0.0), 1.0);
        const double alongBend = radius * ArcSine(sine);
        const int edge = Part(radius - behind + 0.5);
        Sight sight = Advanced(x, y, HalfTurn() - alongBend - behind);
        sight.covers = std::min(Part(Within(sight) + 0.5), edge);
        sight.pale = backPale;
        sight.dark = Part(0.5 * sine * sine * sine);
        if (!sight.covers) {
            sight = Advanced(x, y, alongBend - behind);
            sight.covers = std::min(Part(Within(sight) + 0.5), edge);
            sight.dark = Part(0.5 * sine);
        }
        sight.shadow = Part(shadowDarkness);
        return sight;
    }

    // Behind the bend: its shadow.
    Sight BeyondAt(double x, double y) const {
        const double near = std::max(1 - (Behind(x, y) - radius) / shadowWidth, 0.0);
        Sight sight;
        sight.shadow = Part(near * near * shadowDarkness);
        return sight;
    }

 private:
    static constexpr int backPale = 190;
    static constexpr double shadowDarkness = 0.45;

    double HalfTurn() const { return radius * 3.14159265358979324; }
    double BackShadow() const { return radius * 0.6; }
};

template <class Sample>
class PagePainter {
    static constexpr unsigned lanes = Raster<Sample>::lanes;

 public:
    PagePainter(const Raster<Sample>& to, const Raster<Sample>& print, const Page& page)
        : m_to(to), m_print(print), m_page(page), m_columnWidth(1u << to.columnShift), m_rowHeight(1u << to.rowShift) {}

    void PaintRow(unsigned row) {
        const double y = std::min((row + 0.5) * m_rowHeight, m_page.height - 0.5);
        const unsigned bend = ColumnFrom(m_page.ColumnBehind(0, y));
        const unsigned back = std::min(ColumnFrom(m_page.FirstBack(y)), bend);
        const unsigned beyond = ColumnFrom(m_page.ColumnBehind(m_page.radius, y));
        const unsigned end = ColumnFrom(m_page.ColumnBehind(m_page.radius + m_page.shadowWidth, y));
        LayFlat(row, bend);
        PaintColumns(row, back, bend, [&](double x) { return m_page.FlatAt(x, y); });
        PaintColumns(row, bend, beyond, [&](double x) { return m_page.BentAt(x, y); });
        PaintColumns(row, beyond, end, [&](double x) { return m_page.BeyondAt(x, y); });
    }

 private:
    // What a stretch of a row shows, places in 1/256 samples.
    static constexpr unsigned tileColumns = 256;
    struct Tile {
        std::int32_t x[tileColumns], y[tileColumns], covers[tileColumns], pale[tileColumns], dark[tileColumns],
            shadow[tileColumns];
        std::uint8_t print[tileColumns * lanes];
    };

    // The first column whose middle lies beyond a place. One beyond an odd edge stands for the last pixel.
    unsigned ColumnFrom(double x) const {
        if (x > m_page.width - 0.5) return m_to.view.width;
        return unsigned(std::ceil(std::clamp(x / m_columnWidth - 0.5, 0.0, double(m_to.view.width))));
    }

    void LayFlat(unsigned row, unsigned end) const {
        std::uint8_t* const to = m_to.Row(row);
        const std::uint8_t* const from = m_print.Row(std::min(row, m_print.view.height - 1));
        const unsigned printed = m_print.view.width;
        std::memcpy(to, from, std::size_t(std::min(end, printed)) * lanes);
        for (unsigned x = printed; x < end; ++x)
            std::memcpy(to + std::size_t(x) * lanes, from + std::size_t(printed - 1) * lanes, lanes);
    }

    template <class See>
    void PaintColumns(unsigned row, unsigned begin, unsigned end, See see) {
        Tile& tile = m_tile;
        const double perColumn = 256 / m_columnWidth, perRow = 256 / m_rowHeight;
        const double lastX = (m_print.view.width - 1) * 256.0, lastY = (m_print.view.height - 1) * 256.0;
        const double columnWidth = m_columnWidth, lastPixel = m_page.width - 0.5;
        for (; begin < end; begin += tileColumns) {
            const int count = int(std::min(tileColumns, end - begin)), first = int(begin);
#pragma GCC unroll 1
            for (int i = 0; i < count; ++i) {
                const Sight sight = see(std::min((first + i + 0.5) * columnWidth, lastPixel));
                tile.x[i] = int(std::min(std::max(sight.x * perColumn - 128, 0.0), lastX));
                tile.y[i] = int(std::min(std::max(sight.y * perRow - 128, 0.0), lastY));
                tile.covers[i] = sight.covers;
                tile.pale[i] = sight.pale;
                tile.dark[i] = sight.dark;
                tile.shadow[i] = sight.shadow;
            }
            for (int i = 0; i < count; ++i)
                if (tile.covers[i]) FetchPrint(tile, i);
            Mix(m_to.Row(row) + std::size_t(begin) * lanes, tile, count);
        }
    }

    void FetchPrint(Tile& tile, int i) const {
        const auto column = unsigned(tile.x[i] >> 8), row = unsigned(tile.y[i] >> 8);
        const int across = tile.x[i] & 255, down = tile.y[i] & 255;
        // The last ones have none beside them; the neighbour's part is 0 there.
        const unsigned next = column + 1 < m_print.view.width ? lanes : 0;
        const std::uint8_t* const upper = m_print.Row(row) + std::size_t(column) * lanes;
        const std::uint8_t* const lower = row + 1 < m_print.view.height ? upper + m_print.view.pitch : upper;
        const auto along = [&](const std::uint8_t* at) { return at[0] * (256 - across) + at[next] * across; };
        for (unsigned lane = 0; lane < lanes; ++lane)
            tile.print[unsigned(i) * lanes + lane] =
                std::uint8_t((along(upper + lane) * (256 - down) + along(lower + lane) * down + (1 << 15)) >> 16);
    }

    // Shadow first, the page over it.
    void Mix(std::uint8_t* at, const Tile& tile, int count) const {
        for (unsigned lane = 0; lane < lanes; ++lane) {
            const int black = m_to.black[lane], white = m_to.white[lane];
#pragma GCC unroll 1
            for (int i = 0; i < count; ++i) {
                std::uint8_t& sample = at[unsigned(i) * lanes + lane];
                const int print = tile.print[unsigned(i) * lanes + lane];
                const int paper = Mixed(Mixed(print, white, tile.pale[i]), black, tile.dark[i]);
                sample = std::uint8_t(Mixed(Mixed(sample, black, tile.shadow[i]), paper, tile.covers[i]));
            }
        }
    }

    const Raster<Sample>&m_to, &m_print;
    const Page& m_page;
    double m_columnWidth, m_rowHeight;
    Tile m_tile{};
};

template <class Sample>
void TurnOnRaster(Raster<Sample> to, Raster<Sample> print, const Page* page) {
    if (!print.view.width || !print.view.height) return;
    PagePainter<Sample> painter(to, print, *page);
    for (unsigned row = 0; row < to.view.height; ++row) painter.PaintRow(row);
}

}  // namespace

void TurnPage(IRawVideoFrame& frame, IRawVideoFrame& page, std::int64_t t, InstructionSet set) {
    const Page turned(SizeOf(frame), t);
    ForEachRaster(
        [&]<class Sample>(const Raster<Sample>& to, const Raster<Sample>& print) {
            variantsOf<TurnOnRaster<Sample>>.For(set)(to, print, &turned);
        },
        frame, page);
}

}  // namespace AVBased
