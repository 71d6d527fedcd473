#include "host/base/colour_text.h"

#include <gtest/gtest.h>

namespace Nifikral {
namespace {

TEST(ColourText, ReadsWhatPeopleWrite) {
    const std::pair<const char*, std::uint32_t> known[] = {
        {"red", 0xFF0000},       {"green", 0x008000},        {"DarkSlateGrey", 0x2F4F4F}, {"lightgray", 0xD3D3D3},
        {"lightgrey", 0xD3D3D3}, {"#f80", 0xFF8800},         {"#FF8001", 0xFF8001},       {"0x102030", 0x102030},
        {"GREY", 0x808080},      {"rebeccapurple", 0x663399}};
    for (const auto& [text, colour] : known) {
        ASSERT_TRUE(ParseColour(text)) << text;
        EXPECT_EQ(*ParseColour(text), colour) << text;
    }
    for (const char* const text : {"", "#", "#12", "#12345", "#1234567", "0x12", "random", "rod", "#ggg", "red@0.5"})
        EXPECT_FALSE(ParseColour(text)) << text;
    EXPECT_EQ(ColourText(0xFF8001), "#ff8001");
}

}  // namespace
}  // namespace Nifikral
