#include "dvd_effects/menu/menu_motion.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "dvd_effects/canvas/compositor.h"
#include "dvd_effects/canvas/errors.h"
#include "effects/base/fixed_point.h"

namespace AVBased {

using namespace TarvoBased;

namespace {

constexpr int lineWarp = 210;
constexpr int borderWidth = 10;

// The nearer to `end` of the two ways: never past it.
std::int32_t StopAt(std::int32_t value, std::int32_t start, std::int32_t end) {
    return end < start ? std::max(value, end) : std::min(value, end);
}

// The line through two points at `x`; a vertical line is taken as level with its first point.
double LineAt(double x0, double y0, double x1, double y1, double x) {
    return x1 == x0 ? y0 : (x - x0) * (y1 - y0) / (x1 - x0) + y0;
}

struct WarpMap {
    unsigned char* coverage;
    unsigned char* side;
    int* sourceColumns;
    int* sourceRows;
    int width, height;

    std::size_t Size() const { return std::size_t(width) * std::size_t(height); }
    std::size_t Index(int x, int y) const { return std::size_t(y) * std::size_t(width) + std::size_t(x); }
    bool Contains(int x, int y) const { return x >= 0 && y >= 0 && x < width && y < height; }
};

// Every source column goes upright between the top and the bottom edge; what lands on a pixel last stays.
void PlacePanel(const WarpMap& map, const std::int32_t (&corner)[8], const formula_t* edges) {
    for (int i = 0; i < map.width; ++i) {
        const int x = TruncateToInt32((double(corner[2]) - corner[0]) * i / map.width + corner[0]);
        const int top = TruncateToInt32(LineAt(corner[0], corner[1], corner[2], corner[3], x));
        const int bottom = TruncateToInt32(LineAt(corner[4], corner[5], corner[6], corner[7], x));
        const double step = (double(bottom) - top) / map.height;
        for (int j = 0; j < map.height; ++j) {
            const int y = TruncateToInt32(j * step + top);
            if (!map.Contains(x, y) || InRange(x, y, edges) < 0) continue;
            const std::size_t index = map.Index(x, y);
            map.sourceColumns[index] = i;
            map.sourceRows[index] = j;
            map.coverage[index] = coveragePanel;
        }
    }
}

// Ten pixels from (x, y) in the direction (dx, dy) fade out as far as `inside` lets them.
template <class Inside>
void FadeBorder(const WarpMap& map, int x, int y, int dx, int dy, unsigned char side, Inside inside) {
    for (int n = 1; n <= borderWidth; ++n) {
        const int bx = x + n * dx, by = y + n * dy;
        if (!inside(bx, by) || !map.Contains(bx, by)) continue;
        const std::size_t index = map.Index(bx, by);
        map.coverage[index] = static_cast<unsigned char>(borderWidth - n);
        map.side[index] = side;
    }
}

// Deliberate: the four bands differ in width, and edges 1 and 3 share a side.
void PlaceBorders(const WarpMap& map, const std::int32_t (&limit)[8], const formula_t* edges) {
    const auto at = [&](int k, int x) { return x * edges[k].slope + edges[k].intercept; };
    for (int y = 0; y < map.height; ++y)
        for (int x = 0; x < map.width; ++x) {
            if (at(0, x) - 0.5 <= y && y <= at(0, x) + 0.5 && limit[0] <= x && x <= limit[2])
                FadeBorder(map, x, y, 1, 0, 1, [&](int bx, int) { return bx <= limit[2]; });
            if (at(1, x) <= y && y <= at(1, x) + 1 && limit[3] <= y && y <= limit[7])
                FadeBorder(map, x, y, 0, -1, 3, [&](int, int by) { return by >= limit[3]; });
            if (at(2, x) - 0.5 <= y && y <= at(2, x) && limit[4] <= x && x <= limit[6])
                FadeBorder(map, x, y, -1, 0, 2, [&](int bx, int) { return bx >= limit[4]; });
            if (at(3, x) <= y && y <= at(3, x) + 1 && limit[1] <= y && y <= limit[5])
                FadeBorder(map, x, y, 0, -1, 3, [&](int, int by) { return by >= limit[1]; });
        }
}

}  // namespace

point_t MovedPosition(point_t start, point_t end, const formula_t& formula, std::int32_t moveSpeed, std::int32_t n) {
    const std::int32_t x = WrappingSum(WrappingProduct(moveSpeed, n), start.x);
    // Deliberate: the line's value counts once for every frame so far.
    const std::int32_t y = TruncateToInt32(start.y + (x * formula.slope + formula.intercept) * n);
    return {StopAt(x, start.x, end.x), StopAt(y, start.y, end.y)};
}

point_t PositionOf(const additionsource_t& source, std::uint32_t n) {
    return MovedPosition(source.startPosition, source.endPosition, source.moveFormula, source.moveSpeed,
                         std::int32_t(n));
}

point_t PositionOf(const text_t& text, std::uint32_t n) {
    if (!text.moves) return text.boxPosition;
    return MovedPosition(text.boxPosition, text.endPosition, text.moveFormula, text.moveSpeed, std::int32_t(n));
}

std::uint8_t OpacityOf(const additionsource_t& source, std::uint32_t n) {
    const auto byte = [](std::int32_t value) { return std::int64_t(ClampToByte(value)); };
    const std::int64_t start = byte(source.startTrans), end = byte(source.endTrans);
    const std::int64_t step = std::min<std::int64_t>(std::abs(std::int64_t(source.fadeSpeed)), 255);
    const std::int64_t way = step * (std::int64_t(n) - 1);
    return std::uint8_t(start < end ? std::min(start + way, end) : std::max(start - way, end));
}

bool IsShown(const text_t& text, std::uint32_t n) {
    if (text.moves || !text.hasStillTail) return true;
    const std::int32_t now = std::int32_t(n), first = text.stillTail[0], last = text.stillTail[1];
    return (first <= 0 || now >= first) && (last <= 0 || now <= last);
}

unsigned char CalculateNewValue(unsigned char value, unsigned char delta, int mode) {
    switch (mode) {
        case 1:
            return ClampToByte(value + delta);
        case 0:
            return ClampToByte(value - delta);
        default:
            return 0;
    }
}

void CalculateYCondinate(int x0, int y0, int x1, int y1, int x, int& y) {
    y = TruncateToInt32((double(y1) - y0) / (double(x1) - x0) * (double(x) - x0) + y0);
}

int InRange(double x, double y, const formula_t* edges) {
    const auto above = [&](int k) { return y - edges[k].slope * x - edges[k].intercept; };
    // Deliberate: edge 2 alone is tested the other way.
    return above(0) >= 0 && above(1) >= 0 && above(2) <= 0 && above(3) >= 0 ? coveragePanel : -1;
}

int CondinateChange(unsigned char* coverage, unsigned char* side, int* sourceColumns, int* sourceRows,
                    const position_t& corners, const position_t& limits, const formula_t* edges, unsigned width,
                    unsigned height) {
    return AtBoundary(lineWarp, dvdEffectsUtilsName, [&] {
        Require(coverage && side && sourceColumns && sourceRows && edges, textNullPointer, lineWarp);
        const WarpMap map{coverage, side, sourceColumns, sourceRows, int(width), int(height)};
        // Deliberate: so many bytes of every plane, which is a quarter of the wider ones.
        for (void* plane : {static_cast<void*>(coverage), static_cast<void*>(side), static_cast<void*>(sourceColumns),
                            static_cast<void*>(sourceRows)})
            std::memset(plane, 0, map.Size());
        PlacePanel(map, corners.at, edges);
        PlaceBorders(map, limits.at, edges);
        return 1;
    });
}

}  // namespace AVBased
