#include <functional>

#include "tests/support/sweep.h"

namespace AVBased::Testing {
namespace {

// The shift of every cell, from v - u of the pixels.
Plane CellShifts(int width, int height, int strength, const std::function<int(int, int)>& warmth) {
    const int columns = (width + 15) / 16, rows = (height + 15) / 16;
    Plane cells(columns, rows, [&](int column, int row) {
        int sum = 0, count = 0;
        for (int y = row * 16; y < std::min(row * 16 + 16, height); y += 4)
            for (int x = column * 16; x < std::min(column * 16 + 16, width); x += 4, ++count) sum += warmth(x, y);
        const int place = 255 * (2 * row + 1) / (2 * rows);
        return 256 * std::clamp(place * 160 / 256 + 48 + (sum / count * 3 >> 2), 0, 255);
    });
    for (int pass = 0; pass < 2; ++pass)
        for (const bool along : {true, false}) {
            const int radius = std::max(1, (along ? columns : rows) / 8);
            cells = cells.Like([&](int x, int y) {
                int sum = 0;
                for (int k = -radius; k <= radius; ++k) sum += along ? cells.Near(x + k, y) : cells.Near(x, y + k);
                return sum / (2 * radius + 1);
            });
        }
    // The middle stands at the screen.
    long long sum = 0, count = 0;
    for (int y = rows / 3; y < rows - rows / 3; ++y)
        for (int x = columns / 3; x < columns - columns / 3; ++x, ++count) sum += cells(x, y);
    const int screen = int(sum / count);
    return cells.Like([&](int x, int y) { return int((long long)(cells(x, y) - screen) * width * strength / 510000); });
}

// One eye's view of a plane, whose samples cover 2^across x 2^down pixels.
Plane View(const Plane& plane, const Plane& shifts, int across, int down, int direction) {
    return plane.Like([&](int x, int y) {
        const auto cellAt = [](int place) { return (place + 8) / 16; };
        const int px = x << across, py = y << down;
        const auto column = [&](int i) {
            const int part = (py + 8) % 16, below = cellAt(py);
            return (shifts.Near(i, below - 1) * (16 - part) + shifts.Near(i, below) * part) >> 4;
        };
        const int part = (px + 8) % 16, from = column(cellAt(px) - 1), to = column(cellAt(px));
        const int shift = (from * 16 + (to - from) * part) >> (4 + across);
        const int place = std::clamp(x * 256 + direction * shift, 0, (plane.width - 1) * 256);
        return (plane.Near(place / 256, y) * (256 - place % 256) + plane.Near(place / 256 + 1, y) * (place % 256)) /
               256;
    });
}

// Side by side or top and bottom.
Plane Halves(const Plane& left, const Plane& right, bool beside) {
    return left.Like([&](int x, int y) {
        const int half = (beside ? left.width : left.height) / 2, place = beside ? x : y;
        const Plane& view = place < half ? left : right;
        const int at = 2 * (place < half ? place : place - half);
        return beside ? (view.Near(at, y) + view.Near(at + 1, y) + 1) / 2
                      : (view.Near(x, at) + view.Near(x, at + 1) + 1) / 2;
    });
}

int HeldBack(int red) { return red > 40 ? 40 + ((red - 40) >> 2) : red < -40 ? -40 + ((red + 40) >> 2) : red; }

void Judge(Picture& picture, int strength, int output, int swap) {
    std::vector<Plane>& planes = picture.planes;
    const Picture from = picture;
    const int across = picture.columnShift, down = picture.rowShift;
    const Plane shifts = CellShifts(from.Width(), from.Height(), strength, [&](int x, int y) {
        if (from.packed)
            return (171 * from.planes[2](x, y) - 22 * from.planes[1](x, y) - 149 * from.planes[0](x, y)) >> 8;
        const int *const u = picture.At(1, x, y), *const v = picture.At(2, x, y);
        return u && v ? *v - *u : 0;
    });
    std::vector<Plane> left, right;
    for (unsigned p = 0; p < planes.size(); ++p)
        for (const bool isLeft : {true, false})
            (isLeft ? left : right)
                .push_back(
                    View(planes[p], shifts, from.ColumnShift(p), from.RowShift(p), isLeft == bool(swap) ? 1 : -1));
    if (output != 0) {
        for (unsigned p = 0; p < planes.size(); ++p) planes[p] = Halves(left[p], right[p], output == 1);
    } else if (from.packed) {
        planes = {right[0], right[1], right[2].Like([&](int x, int y) {
                      return right[2](x, y) + HeldBack(left[2](x, y) - right[2](x, y));
                  }),
                  planes[3]};
    } else {
        // The difference between the eyes' reds, as luma and chroma.
        const auto dv = [&](int x, int y) { return left[2].Near(x, y) - right[2].Near(x, y); };
        const auto dy = [&](int x, int y) { return left[0].Near(x, y) - right[0].Near(x, y); };
        planes[0] = planes[0].Like([&](int x, int y) {
            const int red = HeldBack((298 * dy(x, y) + 409 * dv(x >> across, y >> down)) >> 8);
            return std::clamp(right[0](x, y) + (66 * red >> 8), 0, 255);
        });
        for (unsigned p : {1u, 2u})
            planes[p] = planes[p].Like([&](int x, int y) {
                int sum = 0;
                for (int k = 0; k < 1 << across; ++k) sum += dy((x << across) + k, y << down);
                const int red = HeldBack((298 * (sum >> across) + 409 * dv(x, y)) >> 8);
                return std::clamp(right[p](x, y) + (p == 1 ? -(38 * red >> 8) : 112 * red >> 8), 0, 255);
            });
    }
}

TEST(Trans2D3D, ShowsEachEyeAViewOfItsOwn) {
    SweepFrames(400, [](const TestFrame& frame, std::mt19937& random) {
        const int strength = 5 * Between(0, 20, random), output = Between(0, 2, random), swap = Between(0, 1, random);
        Picture picture(frame);
        Judge(picture, strength, output, swap);
        const Settings views =
            Numbers("2D_3D_TransForm_", {{"strength", strength}, {"output", output}, {"swap", swap}});
        ExpectEffect("2D_3D_TransForm", views, frame, picture);
    });
}

// White bars on black, of which the lower ones stand nearer: the eyes see them apart, without a fringe of full colour.
TEST(Trans2D3D, HoldsBackFringesAtSharpEdges) {
    TestFrame frame(30, 400, 96);
    frame.SetSamples(0, Grid(96, [] {
                         std::vector<unsigned> bars(400, 0xFF000000);
                         for (std::size_t x = 0; x < bars.size(); ++x)
                             if (x / 20 % 2) bars[x] = 0xFFFFFFFF;
                         return bars;
                     }()));
    Apply(*MakeEffect("2D_3D_TransForm", Numbers("2D_3D_TransForm_", {{"strength", 60}})), frame);
    const Picture after(frame);
    const auto fringe = [&](int y) {
        int widest = 0;
        for (int x = 0; x < 400; ++x)
            widest = std::max(widest, std::abs(after.planes[2](x, y) - after.planes[1](x, y)));
        return widest;
    };
    EXPECT_GT(fringe(2), 60);
    EXPECT_GT(fringe(93), 60);
    for (int y = 0; y < 96; ++y) EXPECT_LE(fringe(y), 94);
    EXPECT_LT(fringe(48), 40) << "the middle stands at the screen";
}

}  // namespace
}  // namespace AVBased::Testing
