#include "effects/neighbourhood/MosaicEffect.h"

#include "tests/support/sweep.h"

namespace AVBased::Testing {
namespace {

// A plane as one run of memory; what lies outside is neither read nor written.
struct Memory {
    unsigned char* data;
    std::size_t size;
    void Copy(std::size_t to, std::size_t from, unsigned bytes) const {
        if (to + bytes <= size && from + bytes <= size) std::copy_n(data + from, bytes, data + to);
    }
};

// Every sample by itself, in the order that defines the effect.
void Judge(TestFrame& frame, unsigned x1, unsigned y1, unsigned x2, unsigned y2, unsigned step, unsigned leastStep) {
    const FormatInfo& info = *FindFormat(frame.GetPixelFormat());
    unsigned rowBytes[3] = {}, pitch[3] = {}, rows[3] = {};
    Memory plane[3] = {};
    for (unsigned p = 0; p < (info.packed ? 1 : 3); ++p) {
        plane[p].data = frame.GetBuffer(p, &rowBytes[p], &pitch[p], &rows[p]);
        plane[p].size = std::size_t(pitch[p]) * rows[p];
    }
    const unsigned size = info.planes[0].bytes, side = 1u << step % 32;
    if (std::max(x1, x2) > rowBytes[0] / size || std::max(y1, y2) > rows[0] || step < leastStep) return;
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

TEST(Mosaic, FillsBlocksSampleBySample) {
    SweepFrames(2000, [](TestFrame& frame, std::mt19937& random) {
        unsigned width, height;
        frame.GetDimension(&width, &height);
        // Mostly whole pictures with a ragged corner, whose last blocks run into the next row; some are too large.
        unsigned x1 = random() % 3 ? random() % 9 % width : random() % width, y1 = random() % height % 7;
        unsigned x2 = width - random() % 3 % width, y2 = height - random() % 3 % height;
        if (random() % 16 == 0) ++(random() % 2 ? x2 : y2);
        if (random() % 2) std::swap(x1, x2);
        if (random() % 2) std::swap(y1, y2);
        const unsigned step = (random() % 8 == 0 ? 32 : 0) + random() % 7;
        const Settings settings = Numbers("mosaic_", {{"x1", x1}, {"y1", y1}, {"x2", x2}, {"y2", y2}, {"step", step}});
        TestFrame expected = frame, expectedPlain = frame, plain = frame;
        Judge(expected, x1, y1, x2, y2, step, 2);
        ExpectEffect("mosaic", settings, frame, expected);

        // The plain routine for packed pixels treats blocks of two as well.
        const EffectOwner effect(new CMosaicVideoImageEffect(0));
        for (const auto& [name, value] : settings) effect->SetProperty(name.c_str(), value.c_str());
        Apply(*effect, plain);
        Judge(expectedPlain, x1, y1, x2, y2, step, frame.IsPacked() ? 1 : 2);
        ASSERT_EQ(plain, expectedPlain) << Describe(settings);
    });
}

}  // namespace
}  // namespace AVBased::Testing
