#include "tests/support/test_frames.h"

namespace AVBased::Testing {
namespace {

TestFrame Black(unsigned format, unsigned width, unsigned height) {
    TestFrame frame(format, width, height, {{2, 3, 0, 0}, true});
    for (unsigned p = 0; p < frame.GetBufferCount(); ++p) frame.Fill(p, 0);
    return frame;
}

// The first byte of a row, followed by the pitch's bytes.
unsigned char* Row(TestFrame& frame, unsigned plane, unsigned y) {
    unsigned pitch = 0;
    unsigned char* const data = frame.GetBuffer(plane, nullptr, &pitch, nullptr);
    return data + std::size_t(y) * pitch;
}

TEST(TestFrames, PrintWhereTheyDifferFromWhatIsExpected) {
    const TestFrame expected = Black(0, 5, 4);
    TestFrame frame = expected;
    EXPECT_EQ(testing::PrintToString(frame), "format 0, 5x4");
    EXPECT_TRUE(frame == expected);
    Row(frame, 1, 1)[2] = 0x1F;
    Row(frame, 2, 0)[0] = 1;
    EXPECT_FALSE(frame == expected);
    EXPECT_EQ(testing::PrintToString(frame), "format 0, 5x4: plane 1, x 2, y 1: expected 0x0, found 0x1f; 2 differ");
    EXPECT_EQ(frame.DifferenceFrom(expected, 30), ": plane 1, x 2, y 1: expected 0x0, found 0x1f; 1 differ");
    EXPECT_EQ(frame.DifferenceFrom(expected, 31), "");
}

TEST(TestFrames, CompareWholePixelsPaddingAndWhatLiesOutside) {
    const TestFrame expected = Black(30, 3, 2);
    TestFrame pixel = expected, padding = expected;
    for (const unsigned byte : {4, 7}) Row(pixel, 0, 1)[byte] = 9;
    EXPECT_EQ(pixel.DifferenceFrom(expected), ": plane 0, x 1, y 1: expected 0x0, found 0x9000009; 1 differ");
    Row(padding, 0, 0)[13] = 1;
    EXPECT_EQ(padding.DifferenceFrom(expected), ": plane 0, x 3, y 0 (padding): expected 0x0, found 0x1; 1 differ");
    EXPECT_NE(expected.DifferenceFrom(Black(30, 3, 3)), "");
    EXPECT_NE(TestFrame(30, 3, 2).DifferenceFrom(expected), "") << "other pitches";
#if !defined(__SANITIZE_ADDRESS__)
    TestFrame outside = expected;
    Row(outside, 0, 2)[0] ^= 1;
    EXPECT_EQ(outside.DifferenceFrom(expected), ": written outside plane 0");
    Row(outside, 0, 2)[0] ^= 1;
#endif
}

}  // namespace
}  // namespace AVBased::Testing
