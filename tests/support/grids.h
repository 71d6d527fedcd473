#pragma once

#include <algorithm>

#include "effects/base/CBasedVideoEffect.h"
#include "tests/support/test_frames.h"

namespace AVBased::Testing {

inline int Byte(unsigned sample, unsigned channel) { return int(sample >> 8 * channel & 255); }

/// Random frames of one packed and two planar formats, in sizes that leave every remainder of a vector.
template <class Check>
void OnRandomFrames(Check check) {
    std::mt19937 random(20240611);
    for (unsigned format : {30u, 35u, 7u})
        for (unsigned width = 1; width <= 150; width += width < 70 ? 1 : 11)
            for (Content content : {Content::Random, Content::NearBlack, Content::NearWhite}) {
                const unsigned height = 1 + random() % 6, padding = random() % 3;
                TestFrame frame(format, width, height, {{padding, padding + 2, padding, 1}, random() % 2 == 0});
                frame.Randomise(random, content);
                SCOPED_TRACE(testing::Message() << "format " << format << " size " << width << "x" << height);
                check(frame);
                if (testing::Test::HasFatalFailure()) return;
            }
}

/// Holds an effect on random frames, under every instruction set, to expected(samples, plane, frame before).
template <class Expected>
void ExpectOnRandomFrames(const char* name, const Settings& settings, Expected expected) {
    OnRandomFrames([&](const TestFrame& before) {
        for (InstructionSet set : allInstructionSets) {
            if (!IsUsable(set)) continue;
            const EffectOwner effect = MakeEffect(name, settings);
            dynamic_cast<CBasedVideoImageEffect&>(*effect).UseInstructionSet(set);
            TestFrame frame = before;
            Apply(*effect, frame);
            const unsigned planes = std::min(frame.GetBufferCount(), 3u);
            for (unsigned plane = 0; plane < planes; ++plane)
                ASSERT_EQ(frame.Samples(plane), expected(before.Samples(plane), plane, before)) << "plane " << plane;
        }
    });
}

}  // namespace AVBased::Testing
