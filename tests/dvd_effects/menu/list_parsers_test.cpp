#include "dvd_effects/menu/list_parsers.h"

#include <gtest/gtest.h>

#include <functional>

#include "tests/support/test_frames.h"

namespace AVBased::Testing {
namespace {

Error Filed(const char* message) { return {10021008, message, LastError().line, "dvd_effects_utils"}; }

class Parsers : public testing::Test {
 protected:
    Parsers() { ForgetError(); }
    additionsource_t sources[3];
};

TEST_F(Parsers, SplitKeepsEmptyItemsAndBlanks) {
    EXPECT_EQ(SplitList("", ';'), std::vector<std::string>{});
    EXPECT_EQ(SplitList(" a;;b;", ';'), (std::vector<std::string>{" a", "", "b", ""}));
    EXPECT_EQ(SplitList("one;1\\two;2", '\\'), (std::vector<std::string>{"one;1", "two;2"}));
}

TEST_F(Parsers, TakeOneOrTwoItemsForEachSource) {
    EXPECT_EQ(GetStartPositions(sources, "10;20;-30;40x", 2), 1);
    EXPECT_EQ(GetEndPositions(sources, "1;2;3;99999999999", 2), 1);
    EXPECT_EQ(GetMoveFormulas(sources, "5;6;7.9;", 2), 1);
    EXPECT_EQ(GetMoveSpeeds(sources, "8;9", 2), 1);
    EXPECT_EQ(GetStartTrans(sources, "11;12", 2), 1);
    EXPECT_EQ(GetEndTrans(sources, "13;14", 2), 1);
    EXPECT_EQ(GetFadeSpeeds(sources, "15;16", 2), 1);
    EXPECT_EQ(sources[0].startPosition, (point_t{10, 20}));
    EXPECT_EQ(sources[1].startPosition, (point_t{-30, 40}));
    EXPECT_EQ(sources[1].endPosition, (point_t{3, 2147483647}));
    EXPECT_EQ(sources[0].moveFormula.intercept, 6.0);
    EXPECT_EQ(sources[1].moveFormula.slope, 7.0);
    EXPECT_EQ(sources[1].moveFormula.intercept, 0.0);
    EXPECT_EQ(sources[1].moveSpeed, 9);
    EXPECT_EQ(sources[0].startTrans, 11);
    EXPECT_EQ(sources[0].endTrans, 13);
    EXPECT_EQ(sources[1].fadeSpeed, 16);
    EXPECT_EQ(sources[2].startPosition, point_t{});
}

TEST_F(Parsers, KnowOnlyOneWordForPictures) {
    EXPECT_EQ(GetAdditionSourceType(sources, "true;TRUE; true", 3), 1);
    EXPECT_TRUE(sources[0].isImage);
    EXPECT_FALSE(sources[1].isImage || sources[2].isImage);
}

TEST_F(Parsers, RefuseWrongCountsAndNullAndChangeNothing) {
    sources[0].startPosition = {7, 7};
    const std::function<int()> wrong[] = {
        [&] { return GetStartPositions(sources, "10;20;30;40", 3); },
        [&] { return GetStartPositions(sources, "10;20;", 1); },
        [&] { return GetMoveSpeeds(sources, "1", 0); },
        [&] { return GetAdditionSourceType(sources, "", 1); },
    };
    for (const auto& call : wrong) {
        ForgetError();
        EXPECT_EQ(call(), 0);
        EXPECT_EQ(LastError(), Filed("Invalid Param Value"));
    }
    EXPECT_EQ(sources[0].startPosition, (point_t{7, 7}));
    EXPECT_EQ(GetFadeSpeeds(nullptr, "1", 1), 0);
    EXPECT_EQ(LastError(), Filed("Null Pointer"));
    EXPECT_EQ(ParseTextInfo(nullptr, "1"), 0);
    EXPECT_EQ(LastError(), Filed("Null Pointer"));
    ForgetError();
    EXPECT_EQ(GetStartPositions(sources, "", 0), 1);
    EXPECT_EQ(LastError().code, 0);
}

TEST_F(Parsers, TextWithoutItsTailKeepsTheMotionItHad) {
    text_t text;
    text.moves = true;
    text.moveSpeed = 3;
    EXPECT_EQ(ParseTextInfo(&text, "Hello;Arial;bold;24;255;0;300;10;20;200;40;false"), 1);
    EXPECT_EQ(text.text + "|" + text.face + "|" + text.fontstyle, "Hello|Arial|bold");
    EXPECT_EQ(text.size, 24);
    EXPECT_EQ(text.blue, 44);
    EXPECT_EQ(text.boxPosition, (point_t{10, 20}));
    EXPECT_EQ(text.boxSize, (point_t{200, 40}));
    EXPECT_TRUE(text.moves);
    EXPECT_EQ(text.moveSpeed, 3);
    EXPECT_EQ(TextHtml(text), "<font color='#ff002c' size='24' face='Arial' fontstyle='bold'>Hello</font>");
    EXPECT_EQ(ParseTextInfo(&text, "Hello;Arial;bold;24;255;0;300;10;20;200;40"), 0);
    EXPECT_EQ(LastError(), Filed("Invalid Prama Value"));
}

TEST_F(Parsers, TextTailsMustHaveTheirLength) {
    const std::string head = "<b>;F;;1;2;3;4;5;6;7;8;";
    text_t text;
    EXPECT_EQ(ParseTextInfo(&text, head + "true;100;200;3;4;5;unread"), 1);
    EXPECT_TRUE(text.moves);
    EXPECT_EQ(text.endPosition, (point_t{100, 200}));
    EXPECT_EQ(text.moveFormula.slope, 3.0);
    EXPECT_EQ(text.moveFormula.intercept, 4.0);
    EXPECT_EQ(text.moveSpeed, 5);
    EXPECT_EQ(ParseTextInfo(&text, head + "true;1;1;1;1;1"), 1);  // one short
    EXPECT_EQ(text.moveSpeed, 5);
    EXPECT_EQ(ParseTextInfo(&text, head + "false;no;8;9"), 1);
    EXPECT_FALSE(text.moves || text.hasStillTail);
    EXPECT_EQ(ParseTextInfo(&text, head + "false;true;8;9"), 1);
    EXPECT_TRUE(text.hasStillTail);
    EXPECT_EQ(text.stillTail[0] * 10 + text.stillTail[1], 89);
}

}  // namespace
}  // namespace AVBased::Testing
