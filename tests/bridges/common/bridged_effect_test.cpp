#include "bridges/common/bridged_effect.h"

#include <gtest/gtest.h>

#include "bridges/common/borrowed_frame.h"
#include "host/base/errors.h"

namespace Nifikral {
namespace {

constexpr unsigned packed = 30;

BridgedEffect Make(const char* name) {
    const BridgeModule& loaded = TheBridgeModule();
    if (!loaded.module) throw std::runtime_error(loaded.error);
    return {*loaded.module, name};
}

TEST(BridgedEffect, ChangesTheOtherProgramsMemory) {
    unsigned char pixel[4] = {200, 100, 0, 40};
    const BorrowedPlane plane{pixel, 4, 4, 1};
    BorrowedFrame frame(packed, 1, 1, {&plane, 1});
    EXPECT_EQ(Make("invert").Process(frame, 0), std::nullopt);
    EXPECT_EQ(std::vector<int>(pixel, pixel + 4), (std::vector<int>{55, 155, 255, 40}));
}

TEST(BridgedEffect, HandsOnAPropertyOnlyWhenItsTextChanges) {
    BridgedEffect effect = Make("tilereflect");
    // Refused each time that it reaches the effect.
    EXPECT_TRUE(effect.Set("tilereflect_size", "0"));
    EXPECT_FALSE(effect.Set("tilereflect_size", "0"));
    EXPECT_FALSE(effect.Set("tilereflect_size", "20"));
    EXPECT_TRUE(effect.Set("tilereflect_size", "0"));
}

TEST(BridgedEffect, KeepsItsSettingsWhenItIsRenewed) {
    BridgedEffect effect = Make("tilereflect");
    effect.Set("tilereflect_size", "20");
    effect.Set("tilereflect_size", "0");
    effect.Renew();
    EXPECT_EQ(effect.Text("tilereflect_size"), "20");
    EXPECT_EQ(effect.Text("tilereflect_angle"), std::nullopt);
}

TEST(BridgedEffect, ReportsWhatIsWrong) {
    BridgedEffect effect = Make("gray");
    EXPECT_EQ(effect.Set("strength", "1"),
              "gray's strength: Property with name(strength) does not exist (code 10021005)");
    EXPECT_THROW(Make("grey"), HostError);
}

}  // namespace
}  // namespace Nifikral
