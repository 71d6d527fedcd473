#include "TarvoBased/CBaseException.h"

#include <gtest/gtest.h>

#include <thread>

namespace TarvoBased {
namespace {

TEST(CBaseException, ClearKeepsTheLastPlaceOfTrouble) {
    CBaseException exception(10021000, "Bad index", 12, "unit");
    exception.Clear();
    int line = 0;
    EXPECT_EQ(exception.GetCode(), 0);
    EXPECT_STREQ(exception.GetMsg(), "");
    EXPECT_STREQ(exception.GetExceptionSource(&line), "unit");
    EXPECT_EQ(line, 12);
}

TEST(CBaseException, NullTextsAreEmptyAndOwnTextsMayBePassedBack) {
    CBaseException exception(1, nullptr, 2, nullptr);
    EXPECT_STREQ(exception.GetMsg(), "");
    EXPECT_STREQ(exception.GetExceptionSource(nullptr), "");
    exception.SetException(3, "a message too long for the small buffer", 4, "a source too long for the small buffer");
    exception.SetException(5, exception.GetExceptionSource(nullptr), 6, exception.GetMsg());
    EXPECT_STREQ(exception.GetMsg(), "a source too long for the small buffer");
    EXPECT_STREQ(exception.GetExceptionSource(nullptr), "a message too long for the small buffer");
    const CBaseException copy(&exception);
    EXPECT_EQ(
        ExceptionText(copy),
        "[!!! Exception Code: 5\nMsg: a source too long for the small buffer\nFile: a message too long for the small "
        "buffer\nLine: 6 !!!]");
}

TEST(CurrentException, IsEachThreadsOwn) {
    GetTarvoException()->SetException(10021013, "mine", 1, "here");
    int codeElsewhere = -1;
    std::thread([&] { codeElsewhere = GetTarvoException()->GetExceptionCode(); }).join();
    EXPECT_EQ(codeElsewhere, 0);
    EXPECT_EQ(GetTarvoException()->GetExceptionCode(), 10021013);
    ReleaseTarvoException();
    EXPECT_EQ(GetTarvoException()->GetExceptionCode(), 0);
}

}  // namespace
}  // namespace TarvoBased
