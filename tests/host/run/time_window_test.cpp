#include "host/run/time_window.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace Nifikral {
namespace {

TEST(TimeWindowTest, CountsFromEitherEndInFramesOrSeconds) {
    struct Case {
        const char* text;
        long long first, last;  // of 100 frames at 25 a second
    };
    for (const auto& [text, first, last] : {Case{"50-99", 50, 99},
                                            {"7", 7, 7},
                                            {"50-", 50, FrameRange::noEnd},
                                            {"1s-2s", 25, 49},
                                            {"0s-1s", 0, 24},
                                            {"0-9", 0, 9},
                                            {"-1s-", 75, FrameRange::noEnd},
                                            {"-25-", 75, FrameRange::noEnd},
                                            {"-2s--1s", 50, 74},
                                            {"-25--1", 75, 99},
                                            {"0--1s", 0, 74},
                                            {"1s--1", 25, 99},
                                            {"0.05s-0.1s", 2, 2},
                                            {"-9s-", 0, FrameRange::noEnd}}) {
        const FrameRange frames = TimeWindow(text).Frames(25, 100);
        EXPECT_EQ(frames.first, first) << text;
        EXPECT_EQ(frames.last, last) << text;
    }
    // The frame at 2.2 seconds, though 2.2 x 25 comes out a trifle above 55.
    EXPECT_EQ(TimeWindow("2.2s-").Frames(25, 0).first, 55);
    EXPECT_EQ(TimeWindow("2s-").Frames(30000 / 1001.0, 0).first, 60);
}

TEST(TimeWindowTest, RefusesWhatIsNotAWindow) {
    for (const char* const text :
         {"", "-", "x", "2s", "-1s", "-25", "--1s", "-2s-x", "1.5-3", "3--", "1e3-", "nan-", "5m-"})
        EXPECT_THROW(TimeWindow{text}, std::invalid_argument) << text;
}

}  // namespace
}  // namespace Nifikral
