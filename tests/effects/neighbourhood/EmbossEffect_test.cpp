#include "effects/neighbourhood/EmbossEffect.h"

#include "avbase/avbase.h"
#include "tests/support/sweep.h"

namespace AVBased::Testing {
namespace {

int Narrow(unsigned value) { return std::int16_t(std::uint16_t(value)); }

// Plain samples wrap in 32 bits and turn white in both directions; plain colours are clamped.
int PlainSample(int here, int above, unsigned level) {
    const unsigned value = unsigned(here - above) * level + 128;
    return value <= 255 ? int(value) : 255;
}
int PlainColour(int here, int above, unsigned level) {
    const int raised = int(unsigned(here - above) * level);
    return raised < -128 ? 0 : raised >= 128 ? 255 : raised + 128;
}
// Vector lanes of 16 bits wrap on the addition and saturate on the subtraction.
int Lane(int here, int above, unsigned level) {
    const int difference = Narrow(unsigned(here) * level + 128) - Narrow(unsigned(above) * level);
    return std::clamp(std::clamp(difference, -32768, 32767), 0, 255);
}

Picture Embossed(const TestFrame& frame, unsigned level, bool vector) {
    Picture picture(frame);
    for (unsigned p = 0; p < 3; ++p) {
        const Plane in = picture.planes[p];
        picture.planes[p] = in.Like([&](int x, int y) {
            if (y == 0) return in(x, y);
            const int here = in(x, y), above = in(x, y - 1);
            if (!vector) return (picture.packed ? PlainColour : PlainSample)(here, above, level);
            // What is left after the last group of four ignores the level.
            const bool grouped = picture.packed || x < in.width / 4 * 4;
            return grouped ? Lane(here, above, level) : std::clamp(2 * (here - above) + 128, 0, 255);
        });
    }
    return picture;
}

unsigned RandomLevel(std::mt19937& random) {
    static constexpr int levels[] = {0, 1, 2, 3, -2, 129, 300, 29872, -32768, 40000, 70000, 1 << 30, INT32_MIN};
    return random() % 4 ? unsigned(levels[random() % std::size(levels)]) : unsigned(random());
}

TEST(Emboss, FollowsTheVectorRulesUnderEveryInstructionSet) {
    if (!HasVectorUnit(AVBasedGetCPUFeatures())) GTEST_SKIP() << "the host reports no vector unit";
    SweepFrames(693, [](const TestFrame& frame, std::mt19937& random) {
        const unsigned level = RandomLevel(random);
        ExpectEffect("emboss", Numbers("emboss_", {{"level", int(level)}}), frame, Embossed(frame, level, true));
    });
}

TEST(Emboss, PlainAndVectorRoutinesHaveRulesOfTheirOwn) {
    EXPECT_EQ(PlainSample(10, 250, 1), 255);
    EXPECT_EQ(Lane(10, 250, 1), 0);
    SweepFrames(300, [](const TestFrame& frame, std::mt19937& random) {
        const unsigned level = RandomLevel(random);
        for (const bool vector : {false, true}) {
            TestFrame actual = frame, expected = frame;
            Embossed(frame, level, vector).StoreIn(expected);
            const bool packed = actual.IsPacked();
            const EmbossRoutine routine = packed   ? vector ? emboss_effect_rgba32_mmx : emboss_effect_rgba32_c
                                          : vector ? emboss_effect_component_mmx
                                                   : emboss_effect_component_c;
            for (unsigned p = 0; p < (packed ? 1 : 3); ++p) {
                unsigned rowBytes, pitch, rows;
                unsigned char* const data = actual.GetBuffer(p, &rowBytes, &pitch, &rows);
                routine(data, packed ? rowBytes / 4 : rowBytes, pitch, rows, level);
            }
            ASSERT_EQ(actual, expected) << "level " << level << " vector " << vector;
        }
    });
}

TEST(Emboss, MakingAnEffectChoosesTheRoutinesByTheFeatureBits) {
    EXPECT_TRUE(HasVectorUnit(1) && HasVectorUnit(4) && HasVectorUnit(0xFF));
    EXPECT_FALSE(HasVectorUnit(0) || HasVectorUnit(2) || HasVectorUnit(0xFFFFFFFA));
    const EffectOwner effect = MakeEffect("emboss");
    const bool vector = HasVectorUnit(AVBasedGetCPUFeatures());
    EXPECT_EQ(emboss_effect_component, vector ? emboss_effect_component_mmx : emboss_effect_component_c);
    EXPECT_EQ(emboss_effect_rgba32, vector ? emboss_effect_rgba32_mmx : emboss_effect_rgba32_c);
}

}  // namespace
}  // namespace AVBased::Testing
