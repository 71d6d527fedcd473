#pragma once

#include <functional>

#include "dvd_effects/canvas/compositor.h"
#include "tests/support/test_frames.h"

namespace AVBased::Testing {

/// What is laid on a pixel of the frame: its colours, and in `alpha` how much it covers.
using PixelOnFrame = std::function<Rgba32(std::int64_t x, std::int64_t y)>;

/// The blending rule, sample by sample, in wide numbers, without a word about vectors or opaque frames.
class BlendJudge {
 public:
    static void Lay(TestFrame& frame, const PixelOnFrame& laid) {
        TestFrame before = frame;
        ForFrame([&](const PackedView& to, const PackedView& from) { Packed(to, from, laid); },
                 [&](const PlanarView& to, const PlanarView& from) { Planar(to, from, laid); }, frame, before);
    }

 private:
    // Sums over all positions that a sample serves.
    struct Sums {
        std::uint64_t over = 0, under = 0, whole = 0;
        void Add(std::uint64_t colour, std::uint64_t covered, std::uint64_t alpha) {
            over += 255 * colour * covered;
            under += alpha * (255 - covered);
            whole += 255 * covered + alpha * (255 - covered);
        }
        std::uint8_t On(std::uint8_t sample) const {
            return std::uint8_t(whole ? (over + sample * under + whole / 2) / whole : sample);
        }
    };
    static std::uint8_t Alpha(unsigned alpha, unsigned covered) {
        return std::uint8_t(covered + (2 * alpha * (255 - covered) + 255) / 510);
    }
    static unsigned Colour(const Rgba32& pixel, unsigned index) {
        return index == 0 ? pixel.blue : index == 1 ? pixel.green : pixel.red;
    }

    static void Packed(const PackedView& to, const PackedView& from, const PixelOnFrame& laid) {
        for (unsigned y = 0; y < to.height; ++y)
            for (unsigned x = 0; x < to.width; ++x) {
                const Rgba32 over = laid(x, y), under = from.Row(y)[x];
                std::uint8_t colours[3];
                for (unsigned c = 0; c < 3; ++c) {
                    Sums sums;
                    sums.Add(Colour(over, c), over.alpha, under.alpha);
                    colours[c] = sums.On(std::uint8_t(Colour(under, c)));
                }
                to.Row(y)[x] = {colours[0], colours[1], colours[2], Alpha(under.alpha, over.alpha)};
            }
    }

    static void Planar(const PlanarView& to, const PlanarView& from, const PixelOnFrame& laid) {
        const unsigned width = from.plane[0].width, height = from.plane[0].height;
        const auto alphaAt = [&](unsigned x, unsigned y) { return from.HasAlpha() ? *from.At(3, x, y) : 255u; };
        for (unsigned p = 0; p < from.planes; ++p) {
            const bool chroma = p == 1 || p == 2;
            const unsigned across = chroma ? 1u << from.columnShift : 1, down = chroma ? 1u << from.rowShift : 1;
            for (unsigned y = 0; y < from.plane[p].height; ++y)
                for (unsigned x = 0; x < from.plane[p].width; ++x) {
                    std::uint8_t& sample = to.plane[p].Row(y)[x];
                    if (p == 3) {
                        sample = Alpha(sample, laid(x, y).alpha);
                        continue;
                    }
                    Sums sums;
                    for (unsigned i = 0; i < across * down; ++i) {
                        const unsigned column = std::min(x * across + i % across, width - 1);
                        const unsigned row = std::min(y * down + i / across, height - 1);
                        const Rgba32 over = laid(column, row);
                        sums.Add(Colour(over, p), over.alpha, alphaAt(column, row));
                    }
                    sample = sums.On(sample);
                }
        }
    }
};

/// A layer of random colours, its coverage often at one of the ends.
inline Layer RandomLayer(unsigned width, unsigned height, std::mt19937& random) {
    Layer layer(width, height);
    for (unsigned y = 0; y < height; ++y)
        for (unsigned x = 0; x < width; ++x) {
            StoreWord(layer.View().Row(y) + x, std::uint32_t(random()));
            if (random() % 2) layer.View().Row(y)[x].alpha = random() % 2 ? 255 : 0;
        }
    return layer;
}
inline Rgba32 PixelOf(const Layer& layer, std::int64_t x, std::int64_t y) {
    const bool inside = x >= 0 && y >= 0 && x < layer.Width() && y < layer.Height();
    return inside ? layer.View().Row(std::size_t(y))[x] : Rgba32{};
}
inline Rgba32 WithOpacity(Rgba32 pixel, unsigned opacity) {
    pixel.alpha = std::uint8_t((2 * pixel.alpha * opacity + 255) / 510);
    return pixel;
}

/// A frame of any format that a canvas takes, random all over; every other one is opaque.
inline TestFrame RandomFrame(unsigned index, std::mt19937& random) {
    static constexpr unsigned codes[] = {30, 0, 4, 6, 7, 12, 13, 35, 60};
    const unsigned width = 1 + random() % (index % 3 ? 20 : 600), height = 1 + random() % 20;
    TestFrame frame(codes[index % std::size(codes)], width, height,
                    {{unsigned(random() % 9), unsigned(random() % 5), 3, 1}, random() % 2 == 0});
    frame.Randomise(random);
    if (random() % 2 == 0)
        ForFrame(
            [](const PackedView& view) {
                for (unsigned y = 0; y < view.height; ++y)
                    for (unsigned x = 0; x < view.width; ++x) view.Row(y)[x].alpha = 255;
            },
            [&](const PlanarView& view) {
                if (view.HasAlpha()) frame.Fill(3, 255);
            },
            frame);
    return frame;
}

/// Lays something with draw(canvas) on a copy of the frame under every instruction set, and compares every byte with
/// the judge's.
template <class Draw>
void CompareWithJudge(const TestFrame& frame, const PixelOnFrame& laid, Draw draw) {
    TestFrame expected = frame;
    BlendJudge::Lay(expected, laid);
    for (InstructionSet set : allInstructionSets) {
        if (!IsUsable(set)) continue;
        TestFrame actual = frame;
        Canvas canvas(actual, set);
        draw(canvas);
        ASSERT_EQ(actual, expected) << "set " << int(set);
    }
}

}  // namespace AVBased::Testing
