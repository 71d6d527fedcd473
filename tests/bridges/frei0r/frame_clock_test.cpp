#include "bridges/frei0r/frame_clock.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace Nifikral::Frei0r {
namespace {

std::vector<int> Frames(const std::vector<double>& times, TimeUnit unit = TimeUnit::Automatic) {
    FrameClock clock;
    std::vector<int> frames;
    for (const double time : times) frames.push_back(clock.FrameAt(time, 25, unit));
    return frames;
}

TEST(FrameClock, TakesTimesForSeconds) {
    EXPECT_EQ(Frames({0, 0.04, 0.08, 1.2}), (std::vector<int>{0, 1, 2, 30}));
    EXPECT_EQ(Frames({2}), (std::vector<int>{50}));
}

TEST(FrameClock, TakesALongFirstStepForMilliseconds) {
    EXPECT_EQ(Frames({0, 40, 80, 80, 120}), (std::vector<int>{0, 1, 2, 2, 3}));
}

TEST(FrameClock, FollowsJumpsInSeconds) {
    EXPECT_EQ(Frames({0, 0.04, 20, 4, 4.04}), (std::vector<int>{0, 1, 500, 100, 101}));
    // Only what follows a first step distinguishes a jump from milliseconds.
    EXPECT_EQ(Frames({10, 0, 0.08, 0.04, 20}), (std::vector<int>{250, 0, 2, 1, 500}));
    EXPECT_EQ(Frames({0, 10, 10.04, 20}).back(), 500);
}

TEST(FrameClock, CountsCallsWithoutATime) {
    constexpr double none = -3.7e20, infinite = std::numeric_limits<double>::infinity();
    EXPECT_EQ(Frames({none, none, std::numeric_limits<double>::quiet_NaN(), infinite}), (std::vector<int>{0, 1, 2, 3}));
    EXPECT_EQ(Frames({none, none}, TimeUnit::Milliseconds), (std::vector<int>{0, 1}));
}

TEST(FrameClock, UsesTheUnitThatIsSet) {
    EXPECT_EQ(Frames({0, 40}, TimeUnit::Seconds), (std::vector<int>{0, 1000}));
    EXPECT_EQ(Frames({40, 40.5}, TimeUnit::Milliseconds), (std::vector<int>{1, 1}));
    EXPECT_EQ(Frames({7, 8}, TimeUnit::Frames), (std::vector<int>{7, 8}));
    EXPECT_EQ(Frames({7, 3, 3}, TimeUnit::Calls), (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(Frames({9e9}, TimeUnit::Seconds), (std::vector<int>{std::numeric_limits<int>::max()}));
}

}  // namespace
}  // namespace Nifikral::Frei0r
