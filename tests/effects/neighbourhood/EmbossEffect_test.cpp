#include "effects/neighbourhood/EmbossEffect.h"

#include "avbase/avbase.h"
#include "effects/neighbourhood/EmbossEffect_avx2.h"
#include "tests/support/grids.h"

namespace AVBased::Testing {
namespace {

// Runs a routine on the samples of one plane with padding.
Grid Embossed(EmbossRoutine routine, const Grid& samples, unsigned level, unsigned format = 0) {
    TestFrame frame(format, unsigned(samples[0].size()), unsigned(samples.size()));
    frame.SetSamples(0, samples);
    unsigned rowBytes, pitch, rows;
    unsigned char* const data = frame.GetBuffer(0, &rowBytes, &pitch, &rows);
    routine(data, unsigned(samples[0].size()), pitch, rows, level);
    EXPECT_TRUE(frame.GuardsIntact());
    return frame.Samples(0);
}

TEST(Emboss, PlainPlaneTurnsStrongDifferencesOfBothSignsWhite) {
    EXPECT_EQ(
        Embossed(emboss_effect_component_c, {{250, 60, 0, 10, 9}, {10, 100, 200, 11, 7}, {12, 99, 200, 9, 10}}, 1),
        (Grid{{250, 60, 0, 10, 9}, {255, 168, 255, 129, 126}, {130, 127, 128, 126, 131}}));
    // -3 * 2^30 is 2^30 modulo 2^32; twice 2^31 is nothing.
    EXPECT_EQ(Embossed(emboss_effect_component_c, {{3, 0}, {0, 2}}, 1u << 30), (Grid{{3, 0}, {255, 255}}));
    EXPECT_EQ(Embossed(emboss_effect_component_c, {{3, 0}, {1, 2}}, 1u << 31), (Grid{{3, 0}, {128, 128}}));
}

TEST(Emboss, VectorisedPlaneTurnsStrongDarkeningBlackAndIgnoresTheLevelBehindTheLastGroup) {
    EXPECT_EQ(
        Embossed(emboss_effect_component_mmx, {{250, 60, 0, 10, 250, 60, 50}, {10, 100, 200, 11, 10, 100, 40}}, 1),
        (Grid{{250, 60, 0, 10, 250, 60, 50}, {0, 168, 255, 129, 0, 208, 108}}));
    EXPECT_EQ(Embossed(emboss_effect_component_mmx, {{9, 9, 9, 9, 9}, {10, 11, 12, 8, 10}}, unsigned(-3)),
              (Grid{{9, 9, 9, 9, 9}, {125, 122, 119, 131, 130}}));
}

TEST(Emboss, VectorLanesWrapOnTheAdditionAndSaturateOnTheSubtraction) {
    // 32767 + 128 wraps to -32641; 29872 + 128 - (2 * 29872 as -5792) stays above; 3 * 29872 as 24080 leaves 5920.
    EXPECT_EQ(Embossed(emboss_effect_component_mmx, {{0, 0, 0, 0}, {1, 0, 0, 0}}, 32767)[1],
              (std::vector{0u, 128u, 128u, 128u}));
    EXPECT_EQ(Embossed(emboss_effect_component_mmx, {{2, 3, 0, 1}, {1, 1, 1, 1}}, 29872)[1],
              (std::vector{255u, 255u, 255u, 128u}));
    // Only the low 16 bits of the level count.
    EXPECT_EQ(Embossed(emboss_effect_component_mmx, {{2, 3, 0, 1}, {1, 1, 1, 1}}, 0x7FFF0001)[1],
              (std::vector{127u, 126u, 129u, 128u}));
}

TEST(Emboss, PackedPixelsClampBothWaysAndKeepTheFourthByte) {
    const Grid picture{{0x11643CFA, 0x22000000}, {0x3364640A, 0x44050607}, {0x55000000, 0x66FFFFFF}};
    const Grid expected{{0x11643CFA, 0x22000000}, {0x3380D000, 0x448A8C8E}, {0x5500006C, 0x66FFFFFF}};
    EXPECT_EQ(Embossed(emboss_effect_rgba32_c, picture, 2, 30), expected);
    EXPECT_EQ(Embossed(emboss_effect_rgba32_mmx, picture, 2, 30), expected);
    // The plain routine wraps in 32 bits, the vectorised one in 16.
    EXPECT_EQ(Embossed(emboss_effect_rgba32_c, {{0}, {1}}, 40000, 30)[1][0], 0x008080FFu);
    EXPECT_EQ(Embossed(emboss_effect_rgba32_mmx, {{0}, {1}}, 40000, 30)[1][0], 0x00808000u);
}

int Saturate(int value, int low, int high) { return value < low ? low : value > high ? high : value; }

unsigned Lane(int sample, int above, unsigned level) {
    const auto raised = static_cast<std::int16_t>(static_cast<std::uint16_t>(unsigned(sample) * level) + 128);
    const int difference = raised - static_cast<std::int16_t>(unsigned(above) * level);
    return unsigned(Saturate(Saturate(difference, -32768, 32767), 0, 255));
}

TEST(Emboss, EffectFollowsTheVectorRulesOnEveryPlane) {
    if (!HasVectorUnit(AVBasedGetCPUFeatures())) GTEST_SKIP() << "the host reports no vector unit";
    for (int level : {0, 1, 3, -2, 129, 300, -32768, 70000})
        ExpectOnRandomFrames(
            "emboss", {{"emboss_level", std::to_string(level)}}, [&](const Grid& in, unsigned, TestFrame frame) {
                Grid out = in;
                for (unsigned y = 1; y < in.size(); ++y)
                    for (unsigned x = 0; x < in[y].size(); ++x) {
                        const unsigned here = in[y][x], above = in[y - 1][x];
                        if (frame.IsPacked()) {
                            out[y][x] = here & 0xFF000000;
                            for (unsigned c = 0; c < 3; ++c)
                                out[y][x] |= Lane(Byte(here, c), Byte(above, c), unsigned(level)) << 8 * c;
                        } else if (x < in[y].size() / 4 * 4) {
                            out[y][x] = Lane(int(here), int(above), unsigned(level));
                        } else {
                            out[y][x] = unsigned(Saturate(2 * int(here - above) + 128, 0, 255));
                        }
                    }
                return out;
            });
}

TEST(Emboss, RowVariantsGiveTheSameBytesAndTouchNothingElse) {
    if (!IsUsable(InstructionSet::Avx2)) GTEST_SKIP() << "this processor has one variant only";
    std::mt19937 random(5);
    for (const auto& variants :
         {variantsOf<EmbossGroups, EmbossGroupsAvx2>, variantsOf<EmbossPixels, EmbossPixelsAvx2>})
        for (unsigned bytes = 0; bytes <= 200; bytes += 4)
            for (Content content : {Content::Random, Content::NearBlack, Content::NearWhite}) {
                // Small levels and their limits take a way of their own.
                const unsigned level = unsigned(random() % 2 ? random() : random() % 260 - 130);
                GuardedPlane expected(bytes, 2, content, random), actual = expected;
                variants.baseline(expected.data() + bytes, expected.data(), bytes, level);
                variants.avx2(actual.data() + bytes, actual.data(), bytes, level);
                ASSERT_EQ(expected, actual) << bytes << " bytes, level " << level;
            }
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
