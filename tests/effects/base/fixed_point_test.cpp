#include "effects/base/fixed_point.h"

#include <gtest/gtest.h>

#include <cmath>

namespace AVBased {
namespace {

TEST(FixedPoint, TruncatesAndSaturatesEveryDouble) {
    EXPECT_EQ(TruncateToInt32(-1.99), -1);
    EXPECT_EQ(TruncateToInt32(2147483646.9), 2147483646);
    EXPECT_EQ(TruncateToInt32(1e300), INT32_MAX);
    EXPECT_EQ(TruncateToInt32(-INFINITY), INT32_MIN);
    EXPECT_EQ(TruncateToInt32(NAN), 0);
    EXPECT_EQ(TruncateToUint32(-1.99), 0u);
    EXPECT_EQ(TruncateToUint32(4294967294.9), 4294967294u);
    EXPECT_EQ(TruncateToUint32(1e300), UINT32_MAX);
    EXPECT_EQ(TruncateToUint32(NAN), 0u);
}

TEST(FixedPoint, WrapsInsteadOfOverflowing) {
    EXPECT_EQ(WrappingSum(INT32_MAX, 1), INT32_MIN);
    EXPECT_EQ(WrappingDifference(INT32_MIN, 1), INT32_MAX);
    EXPECT_EQ(WrappingProduct(65536, 65537), 65536);
}

}  // namespace
}  // namespace AVBased
