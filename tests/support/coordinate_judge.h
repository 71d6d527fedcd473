#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <utility>
#include <vector>

#include "effects/base/CBasedVideoEffect.h"
#include "effects/geometry/coordinate_table.h"
#include "tests/support/test_frames.h"

namespace AVBased::Testing {

/// What a table effect must do, done the obvious way: one pixel after the other, from a copy of the frame.
class CoordinateJudge {
 public:
    /// `treats` tells sizes of pictures that the effect leaves alone.
    CoordinateJudge(Outside packed, Outside planar, std::function<bool(unsigned width, unsigned height)> treats = {})
        : m_packed(packed), m_planar(planar), m_treats(std::move(treats)) {}

    /// The first pass: `map` is asked for every pixel of the box.
    template <class Map>
    void First(TestFrame& frame, const Box& box, const Map& map) {
        m_stored.clear();
        Each(frame, [&](const auto& place) {
            for (unsigned y = box.yBegin; y < box.yEnd; ++y)
                for (unsigned x = box.xBegin; x < box.xEnd; ++x) {
                    const std::optional<Source> source = map(x, y);
                    m_stored.push_back({x, y, source.value_or(Source{x, y})});
                    if (source) place(x, y, *source);
                }
        });
    }
    void Replay(TestFrame& frame) const {
        Each(frame, [&](const auto& place) {
            for (const Stored& pixel : m_stored) place(pixel.x, pixel.y, pixel.source);
        });
    }

 private:
    Outside m_packed, m_planar;
    std::function<bool(unsigned, unsigned)> m_treats;

    struct Stored {
        unsigned x, y;
        Source source;
    };

    template <class Work>
    void Each(TestFrame& frame, const Work& work) const {
        const Grid first = frame.Samples();
        if (m_treats && !m_treats(unsigned(first[0].size()), unsigned(first.size()))) return;
        TestFrame copy = frame;
        ForFrame(
            [&](const PackedView& to, const PackedView& from) {
                work(PlacePacked{to, from, m_packed});
            },
            [&](const PlanarView& to, const PlanarView& from) {
                work(PlacePlanar{to, from, m_planar});
            },
            frame, copy);
    }

    std::vector<Stored> m_stored;
};

/// Frames of every format that the effects know and of many sizes, with distinct pitches and chroma rounded either way.
template <class Check>
void OnFramesOfEveryFormat(Check check) {
    static constexpr std::pair<unsigned, unsigned> sizes[] = {{1, 1}, {2, 3}, {7, 5}, {32, 9}, {75, 22}};
    std::mt19937 random(20240917);
    for (const FormatInfo& info : formats) {
        if (!info.forEffects) continue;
        for (auto [width, height] : sizes)
            for (bool roundChromaUp : {false, true}) {
                TestFrame frame(info.code, width, height, {{7, 3, 3, 5}, roundChromaUp});
                SCOPED_TRACE(testing::Message() << "format " << info.code << " size " << width << "x" << height
                                                << " up " << roundChromaUp);
                check(frame, random);
                if (testing::Test::HasFatalFailure()) return;
            }
    }
}

/// Holds a new effect with these settings against the judge, under every instruction set: the first pass over `frame`,
/// two replays on frames of its size, and one each on a smaller and a larger frame.
template <class Map>
void ExpectLikeTheJudge(const char* name, const Settings& settings, const TestFrame& frame, const Box& box,
                        const Map& map, CoordinateJudge judge, std::mt19937& random) {
    const Grid luma = frame.Samples();
    const unsigned width = unsigned(luma[0].size()), height = unsigned(luma.size());
    const unsigned format = const_cast<TestFrame&>(frame).GetPixelFormat(), seed = random();
    for (InstructionSet set : allInstructionSets) {
        if (!IsUsable(set)) continue;
        random.seed(seed);
        const EffectOwner effect = MakeEffect(name, settings);
        dynamic_cast<CBasedVideoImageEffect&>(*effect).UseInstructionSet(set);
        for (int pass = 0; pass < 5; ++pass) {
            TestFrame expected = pass < 3    ? frame
                                 : pass == 3 ? TestFrame(format, width - width / 3, height - height / 3)
                                             : TestFrame(format, width + 5, height + 3);
            expected.Randomise(random);
            TestFrame actual = expected;
            if (pass == 0)
                judge.First(expected, box, map);
            else
                judge.Replay(expected);
            Apply(*effect, actual);
            ASSERT_EQ(actual, expected) << "pass " << pass << " instruction set " << int(set);
        }
    }
}

}  // namespace AVBased::Testing
