#pragma once

#include <functional>
#include <optional>

#include "tests/support/sweep.h"

namespace AVBased::Testing {

struct Position {
    int x, y;
};

/// What becomes of a pixel whose source lies outside the picture.
enum class Beyond { Stays, White, Nearest };

/// An effect that computes the sources of a box on its first frame and takes them again on all later ones.
struct TableRules {
    unsigned xBegin, xEnd, yBegin, yEnd;
    /// A pixel without a source is left alone at first; later it takes itself, chroma that it shares included.
    std::function<std::optional<Position>(unsigned x, unsigned y)> sourceOf;
    Beyond packed, planar;
    /// Whether the effect does anything to pictures of a size.
    std::function<bool(unsigned width, unsigned height)> treats = [](unsigned, unsigned) { return true; };
};

/// Holds an effect to its rules: a first pass over `frame`, two on frames of its size, one on a smaller and one on a
/// larger frame.
inline void ExpectTable(const char* name, const Settings& settings, const TestFrame& frame, const TableRules& rules,
                        std::mt19937& random) {
    const Picture size(frame);
    const unsigned width = unsigned(size.Width()), height = unsigned(size.Height());
    const unsigned format = const_cast<TestFrame&>(frame).GetPixelFormat();
    std::vector<TestFrame> frames(3, frame);
    frames.emplace_back(format, width - width / 3, height - height / 3);
    frames.emplace_back(format, width + 5, height + 3);
    std::vector<TestFrame> expected;
    for (TestFrame& next : frames) {
        next.Randomise(random);
        const Picture from(next);
        Picture to = from;
        const bool treats = rules.treats(unsigned(from.Width()), unsigned(from.Height()));
        for (unsigned y = rules.yBegin; treats && y < rules.yEnd; ++y)
            for (unsigned x = rules.xBegin; x < rules.xEnd; ++x) {
                const auto found = rules.sourceOf(x, y);
                if (!found && expected.empty()) continue;
                const Position source = found.value_or(Position{int(x), int(y)});
                const Beyond beyond = from.packed ? rules.packed : rules.planar;
                if (from.planes[0].Contains(source.x, source.y) || beyond == Beyond::Nearest)
                    to.Take(int(x), int(y), from, source.x, source.y);
                else if (beyond == Beyond::White)
                    to.Whiten(int(x), int(y));
            }
        to.StoreIn(expected.emplace_back(next));
    }
    UnderEachSet([&](InstructionSet set) {
        const EffectOwner effect = MakeEffect(name, settings);
        Limit(*effect, set);
        for (std::size_t i = 0; i < frames.size(); ++i) {
            TestFrame actual = frames[i];
            Apply(*effect, actual);
            ASSERT_EQ(actual, expected[i]) << name << Describe(settings) << ", pass " << i << ", set " << int(set);
        }
    });
}

/// What a 30 x 20 packed frame of distinct pixels becomes.
inline Grid Result(IVideoProc& effect) {
    std::mt19937 random(5);
    TestFrame frame(30, 30, 20);
    frame.Randomise(random);
    Apply(effect, frame);
    return frame.Samples();
}

}  // namespace AVBased::Testing
