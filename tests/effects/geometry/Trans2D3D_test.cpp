#include <gtest/gtest.h>

#include <functional>
#include <tuple>

#include "tests/support/grids.h"

namespace AVBased::Testing {
namespace {

Settings Views(int strength, int output, int swap = 0) {
    return {{"2D_3D_TransForm_strength", std::to_string(strength)},
            {"2D_3D_TransForm_output", std::to_string(output)},
            {"2D_3D_TransForm_swap", std::to_string(swap)}};
}

using Plane = std::vector<std::vector<int>>;

int At(const Plane& plane, int x, int y) {
    const auto& row = plane[unsigned(std::clamp(y, 0, int(plane.size()) - 1))];
    return row[unsigned(std::clamp(x, 0, int(row.size()) - 1))];
}

template <class Make>
Plane Filled(int width, int height, Make make) {
    Plane plane(static_cast<unsigned>(height), std::vector<int>(static_cast<unsigned>(width)));
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) plane[unsigned(y)][unsigned(x)] = make(x, y);
    return plane;
}

Plane Channel(const Grid& grid, unsigned channel = 0) {
    return Filled(grid.empty() ? 0 : int(grid[0].size()), int(grid.size()),
                  [&](int x, int y) { return Byte(grid[unsigned(y)][unsigned(x)], channel); });
}

Grid Joined(const std::vector<Plane>& channels) {
    Grid grid(channels[0].size());
    for (unsigned y = 0; y < grid.size(); ++y)
        for (unsigned x = 0; x < channels[0][y].size(); ++x) {
            unsigned value = 0;
            for (unsigned c = 0; c < channels.size(); ++c) value |= unsigned(channels[c][y][x]) << 8 * c;
            grid[y].push_back(value);
        }
    return grid;
}

// The shift of every cell, from v - u of the pixels.
Plane CellShifts(int width, int height, int strength, const std::function<int(int, int)>& warmth) {
    const int columns = (width + 15) / 16, rows = (height + 15) / 16;
    Plane cells = Filled(columns, rows, [&](int column, int row) {
        int sum = 0, count = 0;
        for (int y = row * 16; y < std::min(row * 16 + 16, height); y += 4)
            for (int x = column * 16; x < std::min(column * 16 + 16, width); x += 4, ++count) sum += warmth(x, y);
        const int place = 255 * (2 * row + 1) / (2 * rows);
        return 256 * std::clamp(place * 160 / 256 + 48 + (sum / count * 3 >> 2), 0, 255);
    });
    for (int pass = 0; pass < 2; ++pass)
        for (const bool along : {true, false}) {
            const int radius = std::max(1, (along ? columns : rows) / 8);
            cells = Filled(columns, rows, [&](int x, int y) {
                int sum = 0;
                for (int k = -radius; k <= radius; ++k) sum += along ? At(cells, x + k, y) : At(cells, x, y + k);
                return sum / (2 * radius + 1);
            });
        }
    return Filled(columns, rows,
                  [&](int x, int y) { return int((long long)(At(cells, x, y) - 32768) * width * strength / 510000); });
}

// One eye's view of a plane, whose samples cover 2^across x 2^down pixels.
Plane View(const Plane& plane, const Plane& shifts, int across, int down, int direction) {
    if (plane.empty()) return plane;
    const int width = int(plane[0].size());
    return Filled(width, int(plane.size()), [&](int x, int y) {
        const auto cellAt = [](int place) { return (place + 8) / 16; };
        const int px = x << across, py = y << down;
        const auto column = [&](int i) {
            const int part = (py + 8) % 16, below = cellAt(py);
            return (At(shifts, i, below - 1) * (16 - part) + At(shifts, i, below) * part) >> 4;
        };
        const int part = (px + 8) % 16, from = column(cellAt(px) - 1), to = column(cellAt(px));
        const int shift = (from * 16 + (to - from) * part) >> (4 + across);
        const int place = std::clamp(x * 256 + direction * shift, 0, (width - 1) * 256);
        return (At(plane, place / 256, y) * (256 - place % 256) + At(plane, place / 256 + 1, y) * (place % 256)) / 256;
    });
}

// Side by side or top and bottom.
Plane Halves(const Plane& left, const Plane& right, bool beside) {
    if (left.empty()) return left;
    const int width = int(left[0].size()), height = int(left.size());
    return Filled(width, height, [&](int x, int y) {
        const int half = (beside ? width : height) / 2, place = beside ? x : y;
        const Plane& view = place < half ? left : right;
        const int at = 2 * (place < half ? place : place - half);
        return beside ? (At(view, at, y) + At(view, at + 1, y) + 1) / 2
                      : (At(view, x, at) + At(view, x, at + 1) + 1) / 2;
    });
}

void Judge(TestFrame& frame, int strength, int output, int swap) {
    const FormatInfo& info = *FindFormat(frame.GetPixelFormat());
    std::vector<Plane> planes;
    for (unsigned i = 0; i < (info.packed ? 4u : info.PlaneCount()); ++i)
        planes.push_back(info.packed ? Channel(frame.Samples(0), i) : Channel(frame.Samples(i)));
    const int width = int(planes[0][0].size()), height = int(planes[0].size());
    const int across = int(info.ColumnShift()), down = int(info.RowShift());
    const Plane shifts = CellShifts(width, height, strength, [&](int x, int y) {
        if (info.packed) return (171 * At(planes[2], x, y) - 22 * At(planes[1], x, y) - 149 * At(planes[0], x, y)) >> 8;
        const unsigned row = unsigned(y >> down), column = unsigned(x >> across);
        return planes[1].size() > row && planes[1][row].size() > column
                   ? planes[2][row][column] - planes[1][row][column]
                   : 0;
    });
    std::vector<Plane> left, right;
    for (unsigned i = 0; i < planes.size(); ++i) {
        const bool chroma = !info.packed && (i == 1 || i == 2);
        left.push_back(View(planes[i], shifts, chroma ? across : 0, chroma ? down : 0, swap ? 1 : -1));
        right.push_back(View(planes[i], shifts, chroma ? across : 0, chroma ? down : 0, swap ? -1 : 1));
    }
    if (output != 0) {
        for (unsigned i = 0; i < planes.size(); ++i) planes[i] = Halves(left[i], right[i], output == 1);
    } else if (info.packed) {
        planes = {right[0], right[1], left[2], planes[3]};
    } else {
        const bool hasChroma = !planes[1].empty() && !planes[1][0].empty();
        const auto dv = [&](int x, int y) { return hasChroma ? At(left[2], x, y) - At(right[2], x, y) : 0; };
        const auto dy = [&](int x, int y) { return At(left[0], x, y) - At(right[0], x, y); };
        planes[0] = Filled(width, height, [&](int x, int y) {
            const int red = (298 * dy(x, y) + 409 * dv(x >> across, y >> down)) >> 8;
            return std::clamp(At(right[0], x, y) + (66 * red >> 8), 0, 255);
        });
        for (unsigned i : {1u, 2u})
            planes[i] = Filled(hasChroma ? int(planes[i][0].size()) : 0, int(planes[i].size()), [&](int x, int y) {
                int sum = 0;
                for (int k = 0; k < 1 << across; ++k) sum += dy((x << across) + k, y << down);
                const int red = (298 * (sum >> across) + 409 * dv(x, y)) >> 8;
                return std::clamp(At(right[i], x, y) + (i == 1 ? -(38 * red >> 8) : 112 * red >> 8), 0, 255);
            });
    }
    if (info.packed) return frame.SetSamples(0, Joined(planes));
    for (unsigned i = 0; i < planes.size(); ++i)
        if (!planes[i].empty()) frame.SetSamples(i, Joined({planes[i]}));
}

TEST(Trans2D3D, AgreesWithTheSlowRoutine) {
    std::mt19937 random(23);
    for (const unsigned format : {30u, 35u, 4u, 6u, 7u, 60u})
        for (const auto& [width, height] : {std::pair{1u, 1u}, {2u, 5u}, {17u, 9u}, {150u, 41u}})
            for (const auto& [strength, output, swap] : {std::tuple{25, 0, 0}, {100, 0, 1}, {60, 1, 0}, {60, 2, 1}}) {
                TestFrame frame(format, width, height, {{3, 1, 2, 0}, random() % 2 == 0});
                frame.Randomise(random);
                TestFrame expected = frame;
                Judge(expected, strength, output, swap);
                for (const InstructionSet set : allInstructionSets) {
                    if (!IsUsable(set)) continue;
                    TestFrame actual = frame;
                    const EffectOwner effect = MakeEffect("2D_3D_TransForm", Views(strength, output, swap));
                    dynamic_cast<CBasedVideoImageEffect&>(*effect).UseInstructionSet(set);
                    Apply(*effect, actual);
                    ASSERT_EQ(actual, expected)
                        << width << "x" << height << " output " << output << " set " << int(set);
                }
            }
}

TEST(Trans2D3D, TheLowerAndTheWarmerStandNearerAndNothingTears) {
    // Luma counts columns; the right half is warmer.
    TestFrame frame(60, 240, 120);
    frame.SetSamples(0, Joined({Filled(240, 120, [](int x, int) { return x; })}));
    frame.SetSamples(1, Joined({Filled(240, 120, [](int x, int) { return x < 120 ? 168 : 88; })}));
    frame.SetSamples(2, Joined({Filled(240, 120, [](int x, int) { return x < 120 ? 88 : 168; })}));
    Apply(*MakeEffect("2D_3D_TransForm", Views(100, 2)), frame);
    const Plane views = Channel(frame.Samples());
    const auto nearness = [&](int x, int y) { return At(views, x, 60 + y) - At(views, x, y); };
    EXPECT_GT(nearness(60, 55), nearness(60, 5));
    EXPECT_GT(nearness(180, 30), nearness(60, 30) + 4);
    EXPECT_LT(nearness(60, 5), 0) << "far: behind the screen";
    EXPECT_GT(nearness(180, 55), 0) << "near: before it";
    for (int y = 0; y < 120; ++y)
        for (int x = 1; x < 240; ++x) {
            const int step = At(views, x, y) - At(views, x - 1, y);
            ASSERT_TRUE(step >= 0 && step <= 2) << x << " " << y;
        }
}

}  // namespace
}  // namespace AVBased::Testing
