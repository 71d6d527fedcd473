#include <cmath>

#include "tests/effects/geometry/table_judge.h"

namespace AVBased::Testing {
namespace {

struct Circle {
    unsigned radius, x, y;
    double scale;
};

std::optional<Position> Twisted(const Circle& c, unsigned x, unsigned y) {
    const int dx = int(x - c.x), dy = int(y - c.y);
    const float r = float(c.radius), d = float(std::sqrt(double(dx * dx + dy * dy)));
    if (!(r > d)) return std::nullopt;
    const float nx = (float(x) - float(c.x)) / r, ny = (float(y) - float(c.y)) / r;
    const double a = double(r - d) * c.scale;
    const float angle = float(2 * (std::sqrt(double(nx * nx + ny * ny)) - 0.7) * (a / double(c.radius)));
    // In double precision, since a library's own single-precision result need not be the nearest.
    const float sine = float(std::sin(double(angle))), cosine = float(std::cos(double(angle)));
    const auto position = [](float place) { return int(std::max(place, 0.0f)); };
    return Position{position(float(c.x) + (nx * cosine - ny * sine) * r),
                    position(float(c.y) + (nx * sine + ny * cosine) * r)};
}

std::optional<Position> Lensed(const Circle& c, unsigned x, unsigned y) {
    const unsigned dx = x - c.x, dy = y - c.y, square = dx * dx + dy * dy;
    if (square > c.radius * c.radius) return Position{int(x), int(y)};
    const double power = std::pow(std::sqrt(double(square)) / double(c.radius), c.scale) * 256;
    const unsigned k = unsigned(int(std::clamp(power, -2147483648.0, 2147483647.0)));
    return Position{int(c.x + unsigned(int(dx * k) >> 8)), int(c.y + unsigned(int(dy * k) >> 8))};
}

Settings SettingsOf(const std::string& name, const Circle& c) {
    return Numbers(name + "_", {{"r", int(c.radius)}, {"x", c.x}, {"y", c.y}, {"scale", c.scale}});
}

TEST(CircleEffects, FirstPassAndReplaysAgreeWithTheJudge) {
    SweepFrames(250, [](const TestFrame& frame, std::mt19937& random) {
        const Picture size(frame);
        const unsigned width = unsigned(size.Width()), height = unsigned(size.Height());
        static constexpr double scales[] = {0, 1, -2.5, 0.25, 7};
        // A radius of -1 is the largest, whose box ends before its centre.
        const unsigned radius = unsigned(random() % 3 ? Between(-1, int(height) + 3, random) : int(width + height));
        const Circle c{radius, unsigned(random() % (width + 2)), unsigned(random() % (height + 2)),
                       scales[random() % std::size(scales)]};
        TableRules rules{c.x > radius ? c.x - radius : 0,
                         std::min(c.x + radius, width),
                         c.y > radius ? c.y - radius : 0,
                         std::min(c.y + radius, height),
                         [c](unsigned x, unsigned y) { return Twisted(c, x, y); },
                         Beyond::White,
                         Beyond::White};
        rules.treats = [c](unsigned w, unsigned h) { return c.x <= w && c.y <= h; };
        if (!rules.treats(width, height)) rules.xEnd = rules.xBegin;
        ExpectTable("rotate", SettingsOf("rotate", c), frame, rules, random);
        rules.sourceOf = [c](unsigned x, unsigned y) { return Lensed(c, x, y); };
        rules.packed = Beyond::Stays;
        ExpectTable("spherize", SettingsOf("spherize", c), frame, rules, random);
    });
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

}  // namespace
}  // namespace AVBased::Testing
