#include <gtest/gtest.h>

#include <climits>

#include "tests/support/test_frames.h"

namespace AVBased::Testing {
namespace {

struct Fade {
    const char* effect;
    const char* duration;
    int position;
    unsigned alpha, expected;
    Settings limits = {};
};

TEST(FadeEffects, ScaleAlphaByThePlaceWithinTheDuration) {
    const Fade fades[] = {
        {"fadein", "100", 0, 255, 0},
        {"fadein", "100", 50, 255, 127},
        {"fadein", "100", 99, 200, 197},
        {"fadein", "100", 100, 255, 254},
        {"fadein", "100", 101, 255, 255},
        {"fadein", "100", -1, 255, 255},
        {"fadein", "3", 1, 255, 84},
        {"fadeout", "100", 0, 255, 254},
        {"fadeout", "100", 25, 100, 75},
        {"fadeout", "100", 100, 255, 0},
        {"fadeout", "100", 101, 255, 255},
        // Without a duration there is no level.
        {"fadein", "0", 0, 255, 255},
        {"fadeout", "0", 0, 255, 255},
        // A negative duration is one of billions: place x 256 still fits, and so do the billions left.
        {"fadein", "-1", 5, 255, 0},
        // Place x 256 wraps: 2^24 counts as 0.
        {"fadein", "33554432", 16777216, 255, 0},
        {"fadein", "100", 0, 200, 50, {{"FadeMin", "64"}}},
        {"fadein", "100", 100, 200, 200, {{"FadeMax", "256"}}},
        {"fadein", "100", 50, 200, 78, {{"FadeMax", "100"}}},
        // The lower limit is asked first, and a level beyond 256 keeps the product's low byte.
        {"fadein", "100", 50, 255, 298 & 255, {{"FadeMin", "300"}, {"FadeMax", "10"}}},
        // Limits are unsigned: -1 as the lower one is above every level, as the upper one above none.
        {"fadein", "100", 50, 255, 255, {{"FadeMin", "-1"}}},
        {"fadein", "100", 50, 255, 127, {{"FadeMax", "-1"}}},
    };
    for (const Fade& fade : fades) {
        const EffectOwner effect = MakeEffect(fade.effect, fade.limits);
        effect->SetProperty("duration", fade.duration);
        TestFrame packed(30, 1, 1), planar(60, 1, 1);
        packed.SetSamples(0, {{fade.alpha << 24 | 0x80FF01}});
        planar.SetSamples(3, {{fade.alpha}});
        Apply(*effect, packed, fade.position);
        Apply(*effect, planar, fade.position);
        const testing::Message where = testing::Message()
                                       << fade.effect << " " << fade.position << "/" << fade.duration;
        EXPECT_EQ(packed.Samples(), (Grid{{fade.expected << 24 | 0x80FF01}})) << where;
        EXPECT_EQ(planar.Samples(3), (Grid{{fade.expected}})) << where;
    }
}

TEST(FadeEffects, TakeAMissingPositionFromTheFramesTimeStamp) {
    TestFrame frame(30, 1, 1);
    frame.SetSamples(0, {{0xFF000000}});
    frame.SetTimeStamp(75);
    Apply(*MakeEffect("fadeout", {{"duration", "100"}}), frame, INT_MIN);
    EXPECT_EQ(frame.Samples(), (Grid{{63u << 24}}));
}

TEST(FadeEffects, ChangeThePlaneOfAlphaAndNoOther) {
    std::mt19937 random(5);
    for (unsigned format : {0u, 35u}) {
        TestFrame frame(format, 67, 3);
        frame.Randomise(random);
        TestFrame expected = frame;
        if (format == 35) {
            Grid alpha = frame.Samples(3);
            for (auto& row : alpha)
                for (unsigned& sample : row) sample = sample * 128 / 256;
            expected.SetSamples(3, alpha);
        }
        Apply(*MakeEffect("fadein", {{"duration", "2"}}), frame, 1);
        EXPECT_EQ(frame, expected);
    }
}

TEST(FadeEffects, DirectFadesScaleColoursInsteadOfAlpha) {
    struct DirectFade {
        const char* effect;
        int position;
        Settings limits;
        unsigned pixel;
        Grid luma, chroma;
    };
    const DirectFade fades[] = {
        // Level 64: distances of -16, -1, 0, 239 from 16, and of -128, -3, 5, 127 from 128.
        {"directfadein", 25, {}, 0x8020033F, {{12, 16, 16, 76}}, {{96, 127, 129, 160}}},
        {"directfadeout", 75, {}, 0x8020033F, {{12, 16, 16, 76}}, {{96, 127, 129, 160}}},
        {"directfadein", 0, {}, 0x80000000, {{16, 16, 16, 16}}, {{128, 128, 128, 128}}},
        // The highest level is 255 unless told otherwise; from 256 on everything stays.
        {"directfadeout", 0, {}, 0x807F0DFE, {{0, 15, 16, 254}}, {{1, 125, 133, 255}}},
        {"directfadein", 100, {{"FadeMax", "256"}}, 0x80800EFF, {{0, 15, 16, 255}}, {{0, 125, 133, 255}}},
        {"directfadein", 0, {{"FadeMin", "-1"}}, 0x80800EFF, {{0, 15, 16, 255}}, {{0, 125, 133, 255}}},
        {"directfadein", 101, {}, 0x80800EFF, {{0, 15, 16, 255}}, {{0, 125, 133, 255}}},
    };
    for (const DirectFade& fade : fades) {
        const EffectOwner effect = MakeEffect(fade.effect, fade.limits);
        effect->SetProperty("duration", "100");
        TestFrame packed(30, 1, 1), planar(60, 4, 1);
        packed.SetSamples(0, {{0x80800EFF}});
        planar.SetSamples(0, {{0, 15, 16, 255}});
        for (unsigned p : {1u, 2u}) planar.SetSamples(p, {{0, 125, 133, 255}});
        Apply(*effect, packed, fade.position);
        Apply(*effect, planar, fade.position);
        const testing::Message where = testing::Message() << fade.effect << " " << fade.position;
        EXPECT_EQ(packed.Samples(), (Grid{{fade.pixel}})) << where;
        EXPECT_EQ(planar.Samples(0), fade.luma) << where;
        for (unsigned p : {1u, 2u}) EXPECT_EQ(planar.Samples(p), fade.chroma) << where;
    }
}

TEST(FadeEffects, TransparencyScalesAlphaByPerCents) {
    struct Opacity {
        Settings settings;
        unsigned expected;
    };
    const Opacity opacities[] = {
        {{}, 100},
        {{{"transparency_opacity", "0"}}, 0},
        {{{"transparency_opacity", "-5"}}, 0},
        {{{"transparency_opacity", "33"}}, 65},
        {{{"transparency_opacity", "100"}}, 200},
        {{{"transparency_opacity", "2147483647"}}, 200},
    };
    for (const auto& [settings, expected] : opacities) {
        TestFrame packed(30, 1, 1), planar(35, 1, 1);
        packed.SetSamples(0, {{200u << 24 | 0x80FF01}});
        planar.SetSamples(3, {{200}});
        Apply(*MakeEffect("transparency", settings), packed);
        Apply(*MakeEffect("transparency", settings), planar);
        EXPECT_EQ(packed.Samples(), (Grid{{expected << 24 | 0x80FF01}}));
        EXPECT_EQ(planar.Samples(3), (Grid{{expected}}));
    }
}

}  // namespace
}  // namespace AVBased::Testing
