#include <cmath>
#include <numbers>

#include "TarvoBased/error_codes.h"
#include "tests/effects/geometry/table_judge.h"

namespace AVBased::Testing {
namespace {

// All arithmetic wraps in 32 bits.
int Product(int a, int b) { return int(unsigned(a) * unsigned(b)); }
int Sum(int a, int b) { return int(unsigned(a) + unsigned(b)); }
int Wrapped(int position, int size) { return (position % size + size) % size; }

Position Inverted(int amount, int width, int height, int x, int y) {
    const int cx = width >> 1, cy = height >> 1, m = std::min(cx, cy), dx = x - cx, dy = y - cy;
    const int strength = Product(amount, 256);
    const int k =
        dx == 0 && dy == 0 ? Product(strength, m * m) / 100 : Product(strength, m * m / 100) / (dx * dx + dy * dy);
    return {Wrapped((Product(k, dx) >> 8) + cx, width), Wrapped((Product(k, dy) >> 8) + cy, height)};
}

struct Tile {
    int sine = 11743, cosine = 25466, factor = 1, curvature = 8;

    Tile() = default;
    Tile(int angle, int size, int tileCurvature) : factor(46080 / size), curvature(tileCurvature) {
        const auto sineOf = [](int degrees) {
            return int(std::lround(32768 * std::sin(degrees * std::numbers::pi / 180)));
        };
        sine = sineOf(angle);
        cosine = angle > 0 ? -std::abs(sineOf(angle + 90)) : sineOf(angle + 90);
    }
};

Position ThroughTile(const Tile& t, int width, int height, int x, int y) {
    const int dx = x - (width >> 1), dy = y - (height >> 1);
    const auto lens = [&](int place) {
        int angle = Product(place, t.factor) >> 23;
        while (angle < -90) angle += 180;
        while (angle > 90) angle -= 180;
        const double tangent = std::abs(angle) > 88 ? 0 : std::tan(angle * std::numbers::pi / 180);
        return Sum(Product(int(std::lround(32768 * tangent)), Product(t.curvature, t.curvature)), place) >> 15;
    };
    const int u = lens(Sum(Product(t.cosine, dx), Product(t.sine, dy))),
              v = lens(Sum(Product(t.cosine, dy), -Product(t.sine, dx)));
    const int backX = Sum(Product(t.cosine, u), -Product(t.sine, v)) >> 15,
              backY = Sum(Product(t.cosine, v), Product(t.sine, u)) >> 15;
    return {Wrapped(backX + (width >> 1) + width, width), Wrapped(backY + (height >> 1) + height, height)};
}

TEST(WrapEffects, FirstPassAndReplaysAgreeWithTheJudge) {
    SweepFrames(200, [](const TestFrame& frame, std::mt19937& random) {
        const Picture size(frame);
        const int width = size.Width(), height = size.Height();
        TableRules rules{0, unsigned(width), 0, unsigned(height), {}, Beyond::Nearest, Beyond::Nearest};
        static constexpr int amounts[] = {100, 0, -40, 3000, INT32_MAX, INT32_MIN}, sizes[] = {30, 5, -1, 1, 7},
                             curvatures[] = {30, 8, -9, 50000, INT32_MIN};
        const int amount = amounts[random() % std::size(amounts)];
        rules.sourceOf = [=](unsigned x, unsigned y) { return Inverted(amount, width, height, int(x), int(y)); };
        ExpectTable("mirrorinvert", Numbers("mirrorinvert_", {{"amount", amount}}), frame, rules, random);

        const int angle = random() % 4 ? Between(-180, 180, random) : 90 * Between(-2, 2, random);
        const int tileSize = sizes[random() % std::size(sizes)],
                  curvature = curvatures[random() % std::size(curvatures)];
        const bool isInitial = random() % 8 == 0;
        rules.sourceOf = [=, tile = isInitial ? Tile() : Tile(angle, tileSize, curvature)](unsigned x, unsigned y) {
            return ThroughTile(tile, width, height, int(x), int(y));
        };
        const Settings settings =
            Numbers("tilereflect_", {{"angle", angle}, {"size", tileSize}, {"curvature", curvature}});
        ExpectTable("tilereflect", isInitial ? Settings{} : settings, frame, rules, random);
    });
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
