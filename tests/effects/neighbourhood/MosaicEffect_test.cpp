#include "effects/neighbourhood/MosaicEffect.h"

#include <gtest/gtest.h>

#include "tests/support/test_frames.h"

namespace AVBased::Testing {
namespace {

Settings Rectangle(unsigned x1, unsigned y1, unsigned x2, unsigned y2, unsigned step) {
    return {{"mosaic_x1", std::to_string(x1)},
            {"mosaic_y1", std::to_string(y1)},
            {"mosaic_x2", std::to_string(x2)},
            {"mosaic_y2", std::to_string(y2)},
            {"mosaic_step", std::to_string(step)}};
}

EffectOwner Plain(const Settings& settings) {
    EffectOwner effect(new CMosaicVideoImageEffect(0));
    for (const auto& [name, value] : settings) effect->SetProperty(name.c_str(), value.c_str());
    return effect;
}

TEST(Mosaic, FillsBlocksWithTheirTopLeftPixelAndLetsTheLastPassTheRectangle) {
    TestFrame frame(30, 7, 5);
    frame.SetSamples(0, {{10, 11, 12, 13, 14, 15, 16},
                         {20, 21, 22, 23, 24, 25, 26},
                         {30, 31, 32, 33, 34, 35, 36},
                         {40, 41, 42, 43, 44, 45, 46},
                         {50, 51, 52, 53, 54, 0xFF000055, 56}});
    // Right and bottom, 5 and 5, become 4 and 4; left and top stay odd.
    Apply(*Plain(Rectangle(5, 1, 1, 5, 1)), frame);
    EXPECT_EQ(frame.Samples(), (Grid{{10, 11, 12, 13, 14, 15, 16},
                                     {20, 21, 21, 23, 23, 25, 26},
                                     {30, 21, 21, 23, 23, 35, 36},
                                     {40, 41, 41, 43, 43, 45, 46},
                                     {50, 51, 52, 53, 54, 0xFF000055, 56}}));
}

TEST(Mosaic, LastBlockRunsIntoTheNextRowAndChangesWhatALaterBandReads) {
    TestFrame frame(30, 6, 6, {{0}});
    frame.SetSamples(0, {{10, 11, 12, 13, 14, 15},
                         {20, 21, 22, 23, 24, 25},
                         {30, 31, 32, 33, 34, 35},
                         {40, 41, 42, 43, 44, 45},
                         {50, 51, 52, 53, 54, 55},
                         {60, 61, 62, 63, 64, 65}});
    // One block a row, at column 3; its fourth pixel is the first of the row below.
    Apply(*MakeEffect("mosaic", Rectangle(3, 0, 6, 6, 2)), frame);
    const Grid spilled{{10, 11, 12, 13, 13, 13}, {13, 21, 22, 13, 13, 13}, {13, 31, 32, 13, 13, 13},
                       {13, 41, 42, 13, 13, 13}, {13, 51, 52, 53, 54, 55}, {60, 61, 62, 63, 64, 65}};
    EXPECT_EQ(frame.Samples(), spilled);
    // From column 0 on, the first band's spill is what the second band starts with.
    TestFrame full(30, 5, 8, {{0}}), expected(30, 5, 8, {{0}});
    Grid rows, mosaic;
    for (unsigned y = 0; y < 8; ++y) {
        rows.push_back({10 * y, 10 * y + 1, 10 * y + 2, 10 * y + 3, 10 * y + 4});
        const unsigned first = y < 4 ? 1 : 41;
        mosaic.push_back({y == 0 ? 0 : y <= 4 ? 1u : 41u, first, first, first, first});
    }
    mosaic[0][0] = 0;
    for (unsigned y = 1; y < 8; ++y) mosaic[y][0] = 10 * y;
    full.SetSamples(0, rows);
    expected.SetSamples(0, mosaic);
    Apply(*MakeEffect("mosaic", Rectangle(1, 0, 4, 8, 2)), full);
    EXPECT_EQ(full, expected);
}

TEST(Mosaic, ChromaIsStripedWhereItIsDenserThanEveryFourthPixel) {
    TestFrame frame(4, 8, 4);
    for (unsigned p = 0; p < 3; ++p) frame.Fill(p, 0);
    const std::vector<unsigned> luma{1, 2, 3, 4, 5, 6, 7, 8}, u{10, 11, 12, 13}, v{20, 21, 22, 23};
    frame.SetSamples(0, {luma, luma, luma, luma});
    frame.SetSamples(1, {u, {0, 0, 0, 0}, {0, 0, 0, 0}, {0, 0, 0, 0}});
    frame.SetSamples(2, {v, {0, 0, 0, 0}, {0, 0, 0, 0}, {0, 0, 0, 0}});
    TestFrame eight = frame;
    Apply(*MakeEffect("mosaic", Rectangle(0, 0, 8, 4, 2)), frame);
    EXPECT_EQ(frame.Samples(0)[3], (std::vector<unsigned>{1, 1, 1, 1, 5, 5, 5, 5}));
    EXPECT_EQ(frame.Samples(1), (Grid{u, {10, 0, 12, 0}, {10, 0, 12, 0}, {10, 0, 12, 0}}));
    EXPECT_EQ(frame.Samples(2)[3], (std::vector<unsigned>{20, 0, 22, 0}));
}

TEST(Mosaic, SmallStepsAndForeignRectanglesChangeNothing) {
    std::mt19937 random(5);
    for (unsigned format : {30u, 0u})
        for (const Settings& settings :
             {Rectangle(0, 0, 0, 0, 0), Rectangle(0, 0, 16, 16, 1), Rectangle(0, 0, 17, 16, 2),
              Rectangle(0, 17, 16, 0, 2), Rectangle(0, 0, 16, 16, 5), Rectangle(0, 0, 16, 16, 31)}) {
            TestFrame frame(format, 16, 16);
            frame.Randomise(random);
            const TestFrame before = frame;
            EffectOwner vectorised(new CMosaicVideoImageEffect(cpuFeatureSse2));
            for (const auto& [name, value] : settings) vectorised->SetProperty(name.c_str(), value.c_str());
            Apply(*vectorised, frame);
            EXPECT_EQ(frame, before) << "format " << format;
        }
}

// A plane as one run of memory; what lies outside is neither read nor written.
struct Memory {
    unsigned char* data;
    std::size_t size;
    void Copy(std::size_t to, std::size_t from, unsigned bytes) const {
        if (to + bytes <= size && from + bytes <= size) std::copy_n(data + from, bytes, data + to);
    }
};

// Every sample by itself, in the order that defines the effect.
void Judge(TestFrame& frame, unsigned x1, unsigned y1, unsigned x2, unsigned y2, unsigned step) {
    const FormatInfo& info = *FindFormat(frame.GetPixelFormat());
    unsigned rowBytes[3] = {}, pitch[3] = {}, rows[3] = {};
    Memory plane[3] = {};
    for (unsigned p = 0; p < (info.packed ? 1 : 3); ++p) {
        plane[p].data = frame.GetBuffer(p, &rowBytes[p], &pitch[p], &rows[p]);
        plane[p].size = std::size_t(pitch[p]) * rows[p];
    }
    const unsigned size = info.planes[0].bytes, side = 1u << step % 32;
    if (std::max(x1, x2) > rowBytes[0] / size || std::max(y1, y2) > rows[0] || step < 2) return;
    if (std::size_t(rows[2] - 1) * pitch[1] + rowBytes[2] <= plane[2].size) pitch[2] = pitch[1];
    const unsigned left = std::min(x1, x2), top = std::min(y1, y2), right = std::max(x1, x2) / side * side,
                   bottom = std::max(y1, y2) / side * side;
    for (unsigned y = top; y < bottom; ++y) {
        const unsigned source = top + (y - top) / side * side;
        for (unsigned x = left; x < right; x += side)
            for (unsigned i = 0; i < side; ++i) {
                plane[0].Copy(std::size_t(y) * pitch[0] + (x + i) * size, std::size_t(source) * pitch[0] + x * size,
                              size);
                for (unsigned p = 1; i % 4 == 0 && p < 3; ++p)
                    plane[p].Copy(std::size_t(y >> info.RowShift()) * pitch[p] + ((x + i) >> info.ColumnShift()),
                                  std::size_t(source >> info.RowShift()) * pitch[p] + (x >> info.ColumnShift()), 1);
            }
    }
}

TEST(Mosaic, AgreesWithTheSlowRoutine) {
    std::mt19937 random(34);
    for (unsigned format : {30u, 0u, 4u, 6u, 7u, 35u, 60u})
        for (unsigned round = 0; round < 300; ++round) {
            const unsigned width = 1 + random() % 150, height = 1 + random() % 40;
            FrameLayout layout{{0, 0, 0, 0}, random() % 2 == 0};
            if (random() % 2)
                layout.padding = {unsigned(random() % 40), unsigned(random() % 9), unsigned(random() % 9), 3};
            TestFrame frame(format, width, height, layout);
            frame.Randomise(random);
            TestFrame expected = frame;
            // Mostly whole pictures with a ragged corner: those spill.
            const unsigned x1 = random() % 3 ? random() % 9 % width : random() % width, y1 = random() % height % 7;
            const unsigned x2 = width - random() % 3 % width, y2 = height - random() % 3 % height;
            const unsigned step = (random() % 8 == 0 ? 32 : 0) + random() % 7;
            Judge(expected, x1, y1, x2, y2, step);
            Apply(*MakeEffect("mosaic", Rectangle(x2, y1, x1, y2, step)), frame);
            ASSERT_EQ(frame, expected) << x1 << "," << y1 << " to " << x2 << "," << y2 << " step " << step << " of "
                                       << width << "x" << height << " format " << format;
        }
}

}  // namespace
}  // namespace AVBased::Testing
