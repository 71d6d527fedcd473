#include "host/run/parameter_value.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace Nifikral {
namespace {

constexpr ParameterInfo column = {"", "", "", "pixels", {}, 1, Kind::Column},
                        row = {"", "", "", "pixels", {}, 1, Kind::Row},
                        length = {"", "", "", "pixels", {}, 1, Kind::Length}, brush = {"", "", "", "pixels"},
                        share = {"", "", "", "%"}, colour = {"", "", "", "colour", {}, 1, Kind::Colour};

TEST(ParameterValueTest, MovesInStraightLinesBetweenKeyPoints) {
    const ParameterValue ramp("10..20", PropertyType::Int32), points("@2:1,4:2,10:-1", PropertyType::Real);
    EXPECT_EQ(ramp.At(0, 5), "10");
    EXPECT_EQ(ramp.At(1, 5), "13");  // 12.5 rounds away from zero
    EXPECT_EQ(ramp.At(4, 5), "20");
    EXPECT_EQ(ramp.At(0, 1), "10");
    EXPECT_EQ(points.At(0, 5), "1");
    EXPECT_EQ(points.At(3, 5), "1.5");
    EXPECT_EQ(points.At(8, 5), "0");
    EXPECT_EQ(points.At(99, 5), "-1");
    EXPECT_EQ(ParameterValue("0xFF8000", PropertyType::Int32).At(0, 1), "16744448");
    const ParameterValue back("0..4..2", PropertyType::Int32);
    EXPECT_EQ(back.At(2, 9), "2");
    EXPECT_EQ(back.At(4, 9), "4");
    EXPECT_EQ(back.At(8, 9), "2");
}

TEST(ParameterValueTest, EasesTheWayToAPoint) {
    const std::pair<const char*, const char*> at25[] = {{"0..16", "4"},         {"0..16~linear", "4"},
                                                        {"0..16~in", "1"},      {"0..16~out", "7"},
                                                        {"0..64~in-out", "10"}, {"0..16~hold", "0"}};
    for (const auto& [text, value] : at25) {
        const ParameterValue eased(text, PropertyType::Int32);
        EXPECT_EQ(eased.At(1, 5), value) << text;
        EXPECT_EQ(eased.At(0, 5), "0") << text;
        EXPECT_NE(eased.At(4, 5), "0") << text;
    }
    // Each way has its own.
    const ParameterValue points("@0:0,4:16~in,8:0~hold", PropertyType::Int32);
    EXPECT_EQ(points.At(1, 0), "1");
    EXPECT_EQ(points.At(7, 0), "16");
    EXPECT_EQ(points.At(8, 0), "0");
}

TEST(ParameterValueTest, TakesSharesOfThePictureAndSeconds) {
    const Scale scale{640, 360, 10};
    const auto on = [&](const char* text, const ParameterInfo& info) {
        return ParameterValue(text, PropertyType::Int32, info).On(scale).At(0, 1);
    };
    EXPECT_EQ(on("50%", column), "320");
    EXPECT_EQ(on("50%", row), "180");
    EXPECT_EQ(on("25%", length), "90");
    EXPECT_EQ(on("1%", brush), "4");
    EXPECT_EQ(on("0.1%", length), "1") << "no effect takes a length of nothing";
    EXPECT_EQ(on("40%", share), "40");
    EXPECT_EQ(ParameterValue("10%..90%", PropertyType::Int32, column).On(scale).At(1, 3), "320");
    const ParameterValue timed = ParameterValue("@0:0,2s:100%", PropertyType::Int32, row).On(scale);
    EXPECT_EQ(timed.At(10, 0), "180");
    EXPECT_EQ(timed.At(20, 0), "360");
    EXPECT_FALSE(timed.IsRelative());
    EXPECT_THROW(ParameterValue("@1s:0,9:1", PropertyType::Int32).On(scale), std::invalid_argument)
        << "frame 9 comes before second 1";
}

TEST(ParameterValueTest, MixesColoursPartByPart) {
    const ParameterValue value("red..#0000ff", PropertyType::Int32, colour);
    EXPECT_EQ(value.At(0, 3), std::to_string(0xFF0000));
    EXPECT_EQ(value.At(1, 3), std::to_string(0x800080));
}

TEST(ParameterValueTest, RefusesWhatItCannotRead) {
    for (const char* const text : {"50%", "1..2~fast", "@1:2,1:3", "@-1s:2", "1.5", "", "..", "0..~in"})
        EXPECT_THROW(ParameterValue(text, PropertyType::Int32), std::invalid_argument) << text;
    EXPECT_THROW(ParameterValue("rod", PropertyType::Int32, colour), std::invalid_argument);
}

}  // namespace
}  // namespace Nifikral
