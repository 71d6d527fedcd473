#include <gtest/gtest.h>

#include <tuple>

#include "tests/support/grids.h"

namespace AVBased::Testing {
namespace {

struct Look {
    int strength, radius, glow;

    Settings AsSettings() const {
        return {{"portrait_strength", std::to_string(strength)},
                {"portrait_radius", std::to_string(radius)},
                {"portrait_glow", std::to_string(glow)}};
    }
};

int At(const Grid& grid, int x, int y) {
    return int(
        grid[unsigned(std::clamp(y, 0, int(grid.size()) - 1))][unsigned(std::clamp(x, 0, int(grid[0].size()) - 1))]);
}

// make(x, y) for each place of a grid.
template <class Make>
Grid Filled(int width, int height, Make make) {
    Grid grid(static_cast<unsigned>(height), std::vector<unsigned>(static_cast<unsigned>(width)));
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) grid[unsigned(y)][unsigned(x)] = unsigned(make(x, y));
    return grid;
}

// The mean over a square, with `bits` more binary digits.
std::uint64_t Mean(const Grid& grid, int x, int y, int radius, unsigned bits) {
    std::uint64_t sum = 0;
    for (int v = y - radius; v <= y + radius; ++v)
        for (int u = x - radius; u <= x + radius; ++u) sum += std::uint64_t(At(grid, u, v));
    const unsigned cells = unsigned((2 * radius + 1) * (2 * radius + 1));
    return (sum * (((1u << 24) + cells / 2) / cells)) >> (24 - bits);
}

// Chroma(x, y) answers the u and v of a pixel.
template <class Chroma>
Grid Softened(const Grid& tones, Look look, int white, Chroma chroma) {
    const int width = int(tones[0].size()), height = int(tones.size());
    const int columns = (width + 1) / 2, rows = (height + 1) / 2, radius = (look.radius + 1) / 2;
    const Grid cells = Filled(columns, rows, [&](int x, int y) {
        return (At(tones, 2 * x, 2 * y) + At(tones, 2 * x + 1, 2 * y) + At(tones, 2 * x, 2 * y + 1) +
                At(tones, 2 * x + 1, 2 * y + 1) + 2) /
               4;
    });
    const Grid squares = Filled(columns, rows, [&](int x, int y) { return At(cells, x, y) * At(cells, x, y); });
    const Grid light = Filled(columns, rows, [&](int x, int y) { return Mean(cells, x, y, radius, 8); });
    const Grid share = Filled(columns, rows, [&](int x, int y) {
        const std::uint64_t m = unsigned(At(light, x, y)), square = m * m / 256, q = Mean(squares, x, y, radius, 8);
        const int variance = std::min(q > square ? int((q - square) / 256) : 0, 4095);
        const auto [u, v] = chroma(2 * x, 2 * y);
        const int near = std::clamp(8 * (52 - std::abs(u - 108) - std::abs(v - 152)), 0, 255);
        const int flat = look.strength * look.strength * 9 / 100;
        return flat ? 255 * flat / (variance + flat) * (90 + near * 165 / 256) * std::min(int(m) / 128, 255) / 65536
                    : 0;
    });
    const Grid tone = Filled(columns, rows, [&](int x, int y) { return At(share, x, y) * At(light, x, y) / 256; });
    const auto means = [&](const Grid& grid, unsigned bits) {
        return Filled(columns, rows, [&](int x, int y) { return Mean(grid, x, y, radius, bits); });
    };
    const Grid a = means(share, 8), b = means(tone, 0), l = means(light, 0);
    return Filled(width, height, [&](int x, int y) {
        const auto full = [&](const Grid& grid) {
            const int besideX = x % 2 ? x / 2 + 1 : x / 2 - 1, besideY = y % 2 ? y / 2 + 1 : y / 2 - 1;
            const auto column = [&](int u) { return (3 * At(grid, u, y / 2) + At(grid, u, besideY)) / 4; };
            return (3 * column(x / 2) + column(std::clamp(besideX, 0, columns - 1))) / 4;
        };
        const int t = At(tones, x, y), s = std::clamp(t + ((256 * full(b) - full(a) * t + 32768) >> 16), 0, 255);
        const int bright = full(l) / 256, glow = look.glow * 256 / 100;
        return s + std::max(0, white - s) * (bright * bright * glow / 256) / 65536;
    });
}

TEST(Portrait, AgreesWithTheSlowRoutine) {
    std::mt19937 random(9);
    for (const auto& [format, columnShift, rowShift] :
         {std::tuple{30u, 0, 0}, {35u, 1, 1}, {4u, 1, 0}, {6u, 2, 2}, {60u, 0, 0}})
        for (const auto& [width, height] : {std::pair{1u, 1u}, {2u, 3u}, {9u, 6u}, {71u, 20u}})
            for (const Look look : {Look{50, 8, 0}, Look{100, 3, 100}, Look{30, 64, 20}, Look{0, 1, 0}}) {
                TestFrame frame(format, width, height, {{1, 2, 3, 4}, true});
                // Skin of little contrast at the left, anything at the right.
                frame.Randomise(random);
                Grid first = frame.Samples(0);
                for (auto& row : first)
                    for (unsigned x = 0; x < width / 2; ++x)
                        row[x] = format == 30 ? 0xC08870 + (row[x] & 0x070707) : 150 + row[x] % 16;
                frame.SetSamples(0, first);
                Grid expected = first;
                if (format == 30) {
                    const auto toneOf = [](unsigned p) {
                        return (29 * Byte(p, 0) + 150 * Byte(p, 1) + 77 * Byte(p, 2)) / 256;
                    };
                    const Grid tones = Filled(int(width), int(height),
                                              [&](int x, int y) { return toneOf(first[unsigned(y)][unsigned(x)]); });
                    const Grid soft = Softened(tones, look, 255, [&](int x, int y) {
                        const unsigned p = first[unsigned(y)][unsigned(x)];
                        const int blue = Byte(p, 0), green = Byte(p, 1), red = Byte(p, 2);
                        return std::pair(128 + ((128 * blue - 85 * green - 43 * red) >> 8),
                                         128 + ((128 * red - 107 * green - 21 * blue) >> 8));
                    });
                    for (unsigned y = 0; y < height; ++y)
                        for (unsigned x = 0; x < width; ++x) {
                            expected[y][x] &= 0xFF000000;
                            for (unsigned c = 0; c < 3; ++c)
                                expected[y][x] |=
                                    unsigned(
                                        std::clamp(Byte(first[y][x], c) + int(soft[y][x]) - int(tones[y][x]), 0, 255))
                                    << 8 * c;
                        }
                } else {
                    const Grid u = frame.Samples(1), v = frame.Samples(2);
                    expected = Softened(first, look, 235, [&, cs = columnShift, rs = rowShift](int x, int y) {
                        return std::pair(At(u, x >> cs, y >> rs), At(v, x >> cs, y >> rs));
                    });
                }
                for (const InstructionSet set : allInstructionSets) {
                    if (!IsUsable(set)) continue;
                    TestFrame actual = frame;
                    const EffectOwner effect = MakeEffect("portrait", look.AsSettings());
                    dynamic_cast<CBasedVideoImageEffect&>(*effect).UseInstructionSet(set);
                    Apply(*effect, actual);
                    ASSERT_EQ(actual.Samples(), expected) << "format " << format << " width " << width << " strength "
                                                          << look.strength << " set " << int(set);
                }
            }
}

// The spread of a plane's middle after softening fine noise in that colour.
int SpreadOfNoise(int tone, unsigned u, unsigned v) {
    std::mt19937 random(4);
    TestFrame frame(0, 60, 60);
    frame.SetSamples(0, Filled(60, 60, [&](int, int) { return tone + int(random() % 17) - 8; }));
    frame.Fill(1, u);
    frame.Fill(2, v);
    Apply(*MakeEffect("portrait", Look{50, 8, 0}.AsSettings()), frame);
    const Grid after = frame.Samples();
    int spread = 0;
    for (int y = 20; y < 40; ++y)
        for (int x = 20; x < 40; ++x) spread += std::abs(At(after, x, y) - tone);
    return spread;
}

TEST(Portrait, SmoothsSkinMostAndShadowsAndOtherColoursLess) {
    const int skin = SpreadOfNoise(150, 108, 152), grass = SpreadOfNoise(150, 90, 110),
              hair = SpreadOfNoise(40, 108, 152);
    EXPECT_LT(skin * 5, grass);
    EXPECT_LT(skin * 5, hair);
}

TEST(Portrait, KeepsEdges) {
    TestFrame frame(0, 60, 40);
    frame.SetSamples(0, Filled(60, 40, [](int x, int) { return x < 30 ? 60 : 190; }));
    frame.Fill(1, 108);
    frame.Fill(2, 152);
    Apply(*MakeEffect("portrait", Look{50, 8, 0}.AsSettings()), frame);
    for (const auto& row : frame.Samples()) {
        EXPECT_LT(row[29], 75u);
        EXPECT_GT(row[30], 170u);
    }
}

}  // namespace
}  // namespace AVBased::Testing
