#include <gtest/gtest.h>

#include "effects/effect_table.h"

namespace AVBased {
namespace {

TEST(SimpleColourEffects, AreInTheTable) { EXPECT_EQ(EffectTable().size(), 4u); }

}  // namespace
}  // namespace AVBased
