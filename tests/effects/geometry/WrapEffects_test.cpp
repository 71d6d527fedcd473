#include "effects/geometry/WrapEffects.h"

#include <gtest/gtest.h>

#include "TarvoBased/error_codes.h"
#include "tests/support/coordinate_judge.h"

namespace AVBased::Testing {
namespace {

TEST(MirrorInvertMap, InvertsByWorkedNumbers) {
    const MirrorInvertMap whole{{100}, 40, 30}, strong{{250}, 40, 30}, negative{{-30}, 40, 30};
    EXPECT_EQ(whole(20, 15), (Source{20, 15}));
    EXPECT_EQ(whole(30, 15), (Source{0, 15}));  // 225 / 100 is taken as 2
    EXPECT_EQ(whole(13, 20), (Source{1, 28}));
    EXPECT_EQ(strong(39, 29), (Source{36, 27}));
    EXPECT_EQ(negative(13, 20), (Source{25, 10}));
    EXPECT_EQ(negative(0, 0), (Source{21, 16}));
    const MirrorInvertMap nothing{{0}, 40, 30};
    EXPECT_EQ(nothing(3, 28), (Source{20, 15}));
}

TileReflectSettings Tile(int angle, int size, int curvature) {
    TileReflectSettings settings;
    settings.SetAngle(angle);
    settings.SetSize(size);
    settings.curvature = curvature;
    return settings;
}

TEST(TileReflectMap, BendsByWorkedNumbers) {
    const TileReflectMap initial{{}, 40, 30}, level{Tile(0, 30, 8), 40, 30}, turned{Tile(30, 7, 3), 40, 30};
    EXPECT_EQ(initial(30, 15), (Source{27, 13}));
    EXPECT_EQ(initial(0, 0), (Source{4, 2}));
    EXPECT_EQ(initial(39, 29), (Source{33, 24}));
    EXPECT_EQ(level(30, 15), (Source{20, 15}));
    EXPECT_EQ(level(0, 0), (Source{30, 0}));
    EXPECT_EQ(level(13, 20), (Source{35, 26}));
    EXPECT_EQ(turned(30, 15), (Source{32, 0}));
    EXPECT_EQ(turned(0, 0), (Source{33, 3}));
    EXPECT_EQ(turned(13, 20), (Source{8, 27}));
}

TEST(TileReflectSettings, TheCosineOfAPositiveAngleIsNegative) {
    const auto pair = [](int angle) {
        const TileReflectSettings settings = Tile(angle, 30, 8);
        return std::pair(settings.sine, settings.cosine);
    };
    EXPECT_EQ(pair(0), std::pair(0, 32768));
    EXPECT_EQ(pair(45), std::pair(23170, -23170));
    EXPECT_EQ(pair(90), std::pair(32768, 0));
    EXPECT_EQ(pair(91), std::pair(32763, -572));
    EXPECT_EQ(pair(180), std::pair(0, -32768));
    EXPECT_EQ(pair(-30), std::pair(-16384, 28378));
    EXPECT_EQ(pair(-91), std::pair(-32763, -572));
    EXPECT_EQ(pair(-180), std::pair(0, -32768));
}

TEST(WrapEffects, FirstPassAndReplaysAgreeWithTheJudge) {
    OnFramesOfEveryFormat([](TestFrame& frame, std::mt19937& random) {
        const Grid luma = frame.Samples();
        const unsigned width = unsigned(luma[0].size()), height = unsigned(luma.size());
        const CoordinateJudge judge{Outside::Nearest, Outside::Nearest};
        for (int amount : {100, 0, -40, 3000, INT32_MAX, INT32_MIN})
            ExpectLikeTheJudge("mirrorinvert", {{"mirrorinvert_amount", std::to_string(amount)}}, frame,
                               {0, width, 0, height}, MirrorInvertMap{{amount}, width, height}, judge, random);
        ExpectLikeTheJudge("tilereflect", {}, frame, {0, width, 0, height}, TileReflectMap{{}, width, height}, judge,
                           random);
        for (auto [angle, size, curvature] : std::initializer_list<std::array<int, 3>>{
                 {0, 30, 30}, {30, 30, 8}, {-135, 5, -9}, {89, -1, 50000}, {180, 1, INT32_MIN}}) {
            const Settings settings{{"tilereflect_angle", std::to_string(angle)},
                                    {"tilereflect_size", std::to_string(size)},
                                    {"tilereflect_curvature", std::to_string(curvature)}};
            ExpectLikeTheJudge("tilereflect", settings, frame, {0, width, 0, height},
                               TileReflectMap{Tile(angle, size, curvature), width, height}, judge, random);
        }
    });
}

Grid Result(IVideoProc& effect) {
    std::mt19937 random(5);
    TestFrame frame(30, 30, 20);
    frame.Randomise(random);
    Apply(effect, frame);
    return frame.Samples();
}

TEST(CTileReflectVideoImageEffect, RefusesASizeOfZeroAndAnglesBeyondAHalfTurn) {
    const EffectOwner effect = MakeEffect("tilereflect", {{"tilereflect_size", "7"}});
    const Grid before = Result(*effect);
    for (auto [name, text] :
         Settings{{"tilereflect_size", "0"}, {"tilereflect_angle", "181"}, {"tilereflect_angle", "-181"}}) {
        const std::string kept = effect->GetProperty(name.c_str(), nullptr);
        EXPECT_FALSE(effect->SetProperty(name.c_str(), text.c_str()));
        EXPECT_EQ(LastError().code, TarvoBased::errorGeneral);
        EXPECT_EQ(LastError().message, "Invalid Param Value");
        EXPECT_EQ(effect->GetProperty(name.c_str(), nullptr), kept);
        EXPECT_EQ(Result(*effect), before);
    }
    EXPECT_TRUE(effect->SetProperty("tilereflect_angle", "-180"));
    EXPECT_NE(Result(*effect), before);
}

TEST(CTileReflectVideoImageEffect, TextWithoutANumberBringsTheRegisteredDefault) {
    // The members start at other values than the registered 30.
    const EffectOwner untouched = MakeEffect("tilereflect"),
                      set = MakeEffect("tilereflect", {{"tilereflect_curvature", "30"}}),
                      unparsable = MakeEffect("tilereflect", {{"tilereflect_curvature", "curved"}});
    EXPECT_EQ(Result(*unparsable), Result(*set));
    EXPECT_NE(Result(*unparsable), Result(*untouched));
}

TEST(WrapEffects, AnUnknownFormatMarksTheTableValidAndTheCurrentValueKeepsIt) {
    std::mt19937 random(5);
    TestFrame plain(30, 30, 20), unknown(30, 30, 20, {}, 99);
    plain.Randomise(random);
    for (auto [name, property, same, other] : {std::array{"mirrorinvert", "mirrorinvert_amount", "100", "101"},
                                               std::array{"tilereflect", "tilereflect_curvature", "8", "9"}}) {
        const EffectOwner effect = MakeEffect(name);
        Apply(*effect, unknown);
        effect->SetProperty(property, same);
        EXPECT_EQ(Result(*effect), plain.Samples()) << name;
        effect->SetProperty(property, other);
        EXPECT_NE(Result(*effect), plain.Samples()) << name;
    }
}

}  // namespace
}  // namespace AVBased::Testing
