#include "effects/geometry/CircleEffects.h"

#include <gtest/gtest.h>

#include "tests/support/coordinate_judge.h"

namespace AVBased::Testing {
namespace {

constexpr CircleSettings worked{10, 20, 15, 1.5};

TEST(RotateMap, TwistsByWorkedNumbers) {
    const RotateMap map{worked};
    EXPECT_EQ(map(20, 15), (Source{20, 15}));
    EXPECT_EQ(map(25, 15), (Source{24, 13}));
    EXPECT_EQ(map(14, 20), (Source{13, 19}));
    EXPECT_EQ(map(29, 15), (Source{28, 15}));
    EXPECT_EQ(map(13, 10), (Source{13, 9}));
    EXPECT_EQ(map(30, 15), std::nullopt);  // exactly on the rim
    EXPECT_EQ(map(26, 23), std::nullopt);
}

TEST(SpherizeMap, ScalesByWorkedNumbers) {
    const SpherizeMap bulge{worked}, pinch{{10, 20, 15, -1}};
    EXPECT_EQ(bulge(14, 15), (Source{17, 15}));
    EXPECT_EQ(bulge(25, 12), (Source{22, 13}));
    EXPECT_EQ(bulge(11, 15), (Source{12, 15}));
    EXPECT_EQ(bulge(20, 25), (Source{20, 25}));
    EXPECT_EQ(bulge(27, 23), (Source{27, 23}));  // outside
    EXPECT_EQ(pinch(14, 15), (Source{10, 15}));
    EXPECT_EQ(pinch(25, 12), (Source{28, 9}));
    EXPECT_EQ(pinch(20, 15), (Source{20, 15}));
}

TEST(CircleSettings, BoxWrapsWhereTheRadiusIsHuge) {
    const auto box = [](CircleSettings circle) {
        const std::optional<Box> b = circle.BoxIn(30, 20);
        return b ? std::vector<unsigned>{b->xBegin, b->xEnd, b->yBegin, b->yEnd} : std::vector<unsigned>{};
    };
    EXPECT_EQ(box({4, 30, 3, 0}), (std::vector<unsigned>{26, 30, 0, 7}));
    EXPECT_EQ(box({4, 31, 3, 0}), std::vector<unsigned>{});
    EXPECT_EQ(box({4, 3, 21, 0}), std::vector<unsigned>{});
    EXPECT_EQ(box({4294967295, 10, 5, 0}), (std::vector<unsigned>{0, 9, 0, 4}));
}

Settings SettingsOf(const std::string& name, const CircleSettings& circle) {
    return {{name + "_r", std::to_string(int(circle.radius))},
            {name + "_x", std::to_string(int(circle.x))},
            {name + "_y", std::to_string(int(circle.y))},
            {name + "_scale", std::to_string(circle.scale)}};
}

TEST(CircleEffects, FirstPassAndReplaysAgreeWithTheJudge) {
    OnFramesOfEveryFormat([](TestFrame& frame, std::mt19937& random) {
        const Grid luma = frame.Samples();
        const unsigned width = unsigned(luma[0].size()), height = unsigned(luma.size());
        for (double scale : {1.0, -2.5, 0.25, 7.0}) {
            const unsigned radius = random() % 2 ? width + height : unsigned(random()) % (height + 3);
            const CircleSettings circle{radius, unsigned(random()) % (width + 1), unsigned(random()) % (height + 1),
                                        scale};
            const auto treats = [circle](unsigned w, unsigned h) { return circle.x <= w && circle.y <= h; };
            const Box box = *circle.BoxIn(width, height);
            SCOPED_TRACE(testing::Message()
                         << "r " << radius << " x " << circle.x << " y " << circle.y << " s " << scale);
            ExpectLikeTheJudge("rotate", SettingsOf("rotate", circle), frame, box, RotateMap{circle},
                               {Outside::White, Outside::White, treats}, random);
            ExpectLikeTheJudge("spherize", SettingsOf("spherize", circle), frame, box, SpherizeMap{circle},
                               {Outside::Unchanged, Outside::White, treats}, random);
        }
    });
}

TEST(CRotateVideoImageEffect, SharedChromaDiffersBetweenFirstPassAndReplay) {
    // Chroma sample (2, 2) covers three pixels inside the circle and, last, (5, 5) outside it: the first pass skips
    // that one, a replay copies it onto itself. Before it, (4, 5) brings the chroma of (0, 4).
    const EffectOwner effect = MakeEffect("rotate", SettingsOf("rotate", {4, 2, 2, 30}));
    const auto chroma = [&] {
        TestFrame frame(0, 8, 8);
        frame.SetSamples(1, {{1, 2, 3, 4}, {5, 6, 7, 8}, {9, 10, 11, 12}, {13, 14, 15, 16}});
        Apply(*effect, frame);
        return frame.Samples(1)[2][2];
    };
    EXPECT_EQ(chroma(), 9u);
    EXPECT_EQ(chroma(), 11u);
}

// What a 30 x 20 packed frame of distinct pixels becomes.
Grid Result(IVideoProc& effect, unsigned format = 30) {
    std::mt19937 random(5);
    TestFrame frame(format, 30, 20);
    frame.Randomise(random);
    Apply(effect, frame);
    return frame.Samples();
}

using Steps = std::vector<std::pair<const char*, const char*>>;

// Whether one property set to one text makes an effect that has processed a frame compute again.
bool Recomputes(const char* name, const Steps& before, const char* property, const char* text) {
    const EffectOwner kept = MakeEffect(name), fresh = MakeEffect(name);
    for (const auto& [key, value] : before) {
        kept->SetProperty(key, value);
        fresh->SetProperty(key, value);
    }
    const Grid old = Result(*kept);
    for (const EffectOwner& effect : {std::cref(kept), std::cref(fresh)}) effect->SetProperty(property, text);
    // A change in place would make no difference if both pictures were the same.
    const Grid now = Result(*kept), anew = Result(*fresh);
    EXPECT_TRUE(now == old || now == anew);
    return now == anew && anew != old;
}

TEST(CRotateVideoImageEffect, ComparesEveryPropertyWithTheRadius) {
    const Steps base{{"rotate_r", "9"}, {"rotate_x", "15"}, {"rotate_y", "10"}, {"rotate_scale", "3"}};
    EXPECT_TRUE(Recomputes("rotate", base, "rotate_x", "8"));
    EXPECT_FALSE(Recomputes("rotate", base, "rotate_x", "9"));
    EXPECT_TRUE(Recomputes("rotate", base, "rotate_y", "8"));
    EXPECT_FALSE(Recomputes("rotate", base, "rotate_y", "9"));
    EXPECT_TRUE(Recomputes("rotate", base, "rotate_r", "8"));
    EXPECT_TRUE(Recomputes("rotate", base, "rotate_scale", "-3"));
}

TEST(CRotateVideoImageEffect, TextWithoutANumberComparesToo) {
    Steps base{{"rotate_r", "9"}, {"rotate_x", "15"}, {"rotate_y", "10"}, {"rotate_scale", "3"}};
    const EffectOwner effect = MakeEffect("rotate");
    for (const auto& [key, value] : base) effect->SetProperty(key, value);
    const Grid first = Result(*effect);
    effect->SetProperty("rotate_y", "9");  // stored, but the table stays
    EXPECT_EQ(Result(*effect), first);
    effect->SetProperty("rotate_r", "none");  // equals the radius: it stays still
    EXPECT_EQ(Result(*effect), first);
    effect->SetProperty("rotate_x", "none");  // 15 is not the radius
    EXPECT_NE(Result(*effect), first);
}

TEST(CSpherizeVideoImageEffect, ComparesEachPropertyWithItselfAndTheScaleByItsLowBits) {
    const Steps base{{"spherize_r", "9"}, {"spherize_x", "15"}, {"spherize_y", "10"}, {"spherize_scale", "2.1"}};
    EXPECT_TRUE(Recomputes("spherize", base, "spherize_x", "9"));
    EXPECT_TRUE(Recomputes("spherize", base, "spherize_y", "9"));
    EXPECT_TRUE(Recomputes("spherize", base, "spherize_r", "8"));
    EXPECT_TRUE(Recomputes("spherize", base, "spherize_scale", "0.7"));
    // The low 32 bits of 2.0 are 0, the current scale.
    const Steps atZero{{"spherize_r", "9"}, {"spherize_x", "15"}, {"spherize_y", "10"}};
    EXPECT_FALSE(Recomputes("spherize", atZero, "spherize_scale", "2"));
    EXPECT_TRUE(Recomputes("spherize", atZero, "spherize_scale", "2.1"));
}

TEST(CircleEffects, AFrameThatIsNotProcessedMarksTheTableValid) {
    for (const char* name : {"rotate", "spherize"}) {
        const Settings settings = SettingsOf(name, {9, 15, 10, 2.1});
        std::mt19937 random(5);
        const EffectOwner effect = MakeEffect(name, settings), reference = MakeEffect(name, settings);
        TestFrame unknown(30, 30, 20, {}, 99), plain(30, 30, 20);
        plain.Randomise(random);
        Apply(*effect, unknown);
        EXPECT_EQ(Result(*effect), plain.Samples()) << "valid, but never built";
        EXPECT_NE(Result(*reference), plain.Samples());

        // The centre outside: nothing happens, the old table stays and becomes valid.
        const std::string x = std::string(name) + "_x";
        const Grid old = Result(*reference);
        reference->SetProperty(x.c_str(), "31");
        EXPECT_EQ(Result(*reference), plain.Samples());
        if (std::string(name) == "rotate") {
            reference->SetProperty(x.c_str(), "9");
            EXPECT_EQ(Result(*reference), old);
        }
    }
}

TEST(CSpherizeVideoImageEffect, OutsideThePictureIsUnchangedPackedAndWhitePlanar) {
    const Settings settings = SettingsOf("spherize", {4, 0, 0, -2});
    const EffectOwner effect = MakeEffect("spherize", settings);
    TestFrame packed(30, 3, 1), planar(60, 3, 1);
    packed.SetSamples(0, {{1, 2, 3}});
    for (unsigned p : {0, 1, 2}) planar.SetSamples(p, {{1, 2, 3}});
    Apply(*effect, packed);
    Apply(*effect, planar);  // replays the packed frame's table
    EXPECT_EQ(packed.Samples(), (Grid{{1, 2, 3}}));
    EXPECT_EQ(planar.Samples(0), (Grid{{1, 235, 235}}));
    EXPECT_EQ(planar.Samples(1), (Grid{{1, 128, 128}}));
}

TEST(CRotateVideoImageEffect, LeftOfThePictureIsItsEdgeAndRightOfItIsWhite) {
    const EffectOwner effect = MakeEffect("rotate", SettingsOf("rotate", {3, 1, 1, 1.5}));
    TestFrame frame(30, 4, 3);
    frame.SetSamples(0, {{1, 2, 3, 4}, {5, 6, 7, 8}, {9, 10, 11, 12}});
    Apply(*effect, frame);
    EXPECT_EQ(frame.Samples(), (Grid{{1, 1, 2, 4}, {5, 6, 2, 3}, {9, 6, 7, 11}}));
}

}  // namespace
}  // namespace AVBased::Testing
