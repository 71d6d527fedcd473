#include <climits>
#include <cmath>

#include "tests/support/sweep.h"

namespace AVBased::Testing {
namespace {

EffectOwner Turning(int turns) {
    return MakeEffect("EffectNameRotate90X", Numbers("EffectNameRotate90X_", {{"turns", turns}}));
}

TEST(Rotate90X, FourQuartersRestoreALargeSquare) {
    std::mt19937 random(4);
    for (unsigned format : {30u, 35u}) {
        TestFrame frame(format, 70, 70);
        frame.Randomise(random);
        const TestFrame before = frame;
        const EffectOwner effect = Turning(1);
        for (int i = 0; i < 4; ++i) Apply(*effect, frame);
        EXPECT_EQ(frame, before);
    }
}

TEST(Rotate90X, ScalesOtherShapesToFitBesideBlack) {
    // Rows become their rounded mean, 10 100 220 50; of these, 110 109 37 and 37 109 110 parts of 256.
    for (const auto& [turns, first, second] : {std::tuple{1, 79u, 130u}, {3, 130u, 79u}}) {
        TestFrame planar(60, 4, 2);
        for (unsigned p = 0; p < 4; ++p) planar.SetSamples(p, {{0, 100, 200, 40}, {20, 100, 240, 60}});
        Apply(*Turning(turns), planar);
        const unsigned black[] = {16, 128, 128, 255};
        for (unsigned p = 0; p < 4; ++p) {
            const unsigned b = black[p];
            EXPECT_EQ(planar.Samples(p), (Grid{{b, first, b, b}, {b, second, b, b}})) << turns << " plane " << p;
        }
        TestFrame packed(30, 1, 3);
        packed.SetSamples(0, {{0x40000000}, {0x40303030}, {0x40606060}});
        Apply(*Turning(turns), packed);
        EXPECT_EQ(packed.Samples(), (Grid{{0xFF000000}, {0x40303030}, {0xFF000000}})) << turns;
    }
}

// The shares of the source samples in each sample of an axis scaled from `from` samples to `to`.
std::vector<std::vector<double>> Shares(int from, int to) {
    const double scale = double(from) / to;
    std::vector<std::vector<double>> shares;
    for (int i = 0; i < to; ++i) {
        std::vector<double>& row = shares.emplace_back();
        double all = 0;
        for (int j = 0; j < from; ++j) {
            const double distance = std::abs((i + 0.5) * scale - (j + 0.5));
            row.push_back(std::max(0.0, 1 - distance / std::max(scale, 1.0)));
            all += row.back();
        }
        for (double& share : row) share /= all;
    }
    return shares;
}

struct Part {
    int begin, size;
    bool Contains(int place) const { return place >= begin && place < begin + size; }
};

// The part of an axis of a plane that the turned picture fills, in whole groups of 2^shift positions.
Part Fitted(int longer, int shorter, int shift, bool sharesSamples, int planeSize) {
    if (longer <= shorter) return {0, planeSize};
    const int group = 1 << shift, groups = std::max(1, int(double(shorter) * shorter / longer / group + 0.5));
    const int size = std::min(groups * group, longer), begin = (longer - size) / 2 / group * group;
    if (size == longer) return {0, planeSize};
    const int plane = sharesSamples ? shift : 0, planeBegin = std::min(begin >> plane, planeSize - 1);
    return {planeBegin, std::clamp(size >> plane, 1, planeSize - planeBegin)};
}

TEST(Rotate90X, ResamplesEachPlaneOnItsOwnGridBesideBlack) {
    SweepFrames(400, [](const TestFrame& frame, std::mt19937& random) {
        static constexpr int manyTurns[] = {0, 1, 2, 3, -1, 5, INT_MIN};
        const int turns = manyTurns[random() % std::size(manyTurns)], quarters = (turns % 4 + 4) % 4;
        Picture picture(frame);
        const int width = picture.Width(), height = picture.Height();
        for (unsigned p = 0; p < picture.planes.size() && quarters != 0; ++p) {
            const Plane in = picture.planes[p];
            if (in.samples.empty()) continue;
            if (quarters == 2) {
                picture.planes[p] = in.Like([&](int x, int y) { return in(in.width - 1 - x, in.height - 1 - y); });
                continue;
            }
            const bool chroma = picture.IsChroma(p);
            const Part across = Fitted(width, height, picture.columnShift, chroma, in.width),
                       down = Fitted(height, width, picture.rowShift, chroma, in.height);
            const auto rowShares = Shares(in.height, across.size), columnShares = Shares(in.width, down.size);
            const int black = picture.packed ? p == 3 ? 255 : 0 : p == 0 ? 16 : p == 3 ? 255 : 128;
            picture.planes[p] = in.Like([&](int x, int y) {
                if (!across.Contains(x) || !down.Contains(y)) return black;
                const int column = x - across.begin, row = y - down.begin;
                const auto& ofRows = rowShares[std::size_t(quarters == 1 ? across.size - 1 - column : column)];
                const auto& ofColumns = columnShares[std::size_t(quarters == 1 ? row : down.size - 1 - row)];
                double sum = 0.5;
                for (int j = 0; j < in.height; ++j)
                    for (int i = 0; ofRows[std::size_t(j)] > 0 && i < in.width; ++i)
                        sum += ofRows[std::size_t(j)] * ofColumns[std::size_t(i)] * in(i, j);
                return int(sum);
            });
        }
        const bool exact = quarters % 2 == 0 || (width == height && picture.columnShift + picture.rowShift == 0);
        ExpectEffect("EffectNameRotate90X", Numbers("EffectNameRotate90X_", {{"turns", turns}}), frame, picture,
                     exact ? 0 : 3);
    });
}

}  // namespace
}  // namespace AVBased::Testing
