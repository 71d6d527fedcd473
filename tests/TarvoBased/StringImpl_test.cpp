#include "TarvoBased/StringImpl.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "TarvoBased/ITarvoException.h"
#include "TarvoBased/error_codes.h"

namespace TarvoBased {
namespace {

class Strings : public testing::Test {
 protected:
    Strings() { ReleaseTarvoException(); }
    ~Strings() override { list->Free(); }

    void ExpectError(int code, const char* message) {
        const ITarvoException* error = GetTarvoException();
        EXPECT_EQ(error->GetExceptionCode(), code);
        EXPECT_STREQ(error->GetExceptionMsg(), message);
        EXPECT_STREQ(error->GetExceptionSource(nullptr), "../dependency/TarvoBased/StringImpl");
        ReleaseTarvoException();
    }
    std::string Joined() {
        std::string text;
        for (int i = 0; i < list->GetCount(); ++i) text += std::string(list->GetString(i)->GetStr()) + ";";
        return text;
    }

    IStrings* list = new CStringsImpl;
};

TEST_F(Strings, KeepTheirOrder) {
    EXPECT_TRUE(list->AddString("b"));
    EXPECT_TRUE(list->InsertString(0, "a"));
    EXPECT_TRUE(list->Add(new CStringImpl("d")));
    EXPECT_TRUE(list->Insert(2, new CStringImpl("c")));
    EXPECT_EQ(Joined(), "a;b;c;d;");
    EXPECT_EQ(list->FindString("c"), 2);
    EXPECT_EQ(list->Find(list->GetString(3)), 3);
    EXPECT_TRUE(list->Remove(1));
    EXPECT_EQ(Joined(), "a;c;d;");
    list->Clear();
    EXPECT_EQ(list->GetCount(), 0);
}

TEST_F(Strings, RefuseBadIndexes) {
    list->AddString("a");
    for (int index : {-1, 1}) {
        EXPECT_EQ(list->GetString(index), nullptr);
        ExpectError(errorBadIndex, "Bad index");
        EXPECT_FALSE(list->Remove(index));
        ExpectError(errorBadIndex, "Bad index");
    }
    EXPECT_FALSE(list->InsertString(2, "c"));
    ExpectError(errorBadIndex, "Bad index");
    EXPECT_EQ(Joined(), "a;");
}

TEST_F(Strings, OwnAStringOnlyOnce) {
    IString* own = new CStringImpl("a");
    EXPECT_TRUE(list->Add(own));
    EXPECT_FALSE(list->Add(own));
    ExpectError(errorDuplicated, "Resource duplicated");
    CStringImpl refused("b");
    EXPECT_FALSE(list->Insert(5, &refused));  // still the caller's: on the stack, a second release would crash
    ExpectError(errorBadIndex, "Bad index");
    EXPECT_EQ(list->Find(&refused), -1);
    ExpectError(errorNotFound, "The request resource does not exist");
}

TEST_F(Strings, ReportWhatIsMissing) {
    EXPECT_EQ(list->FindString("x"), -1);
    ExpectError(errorNotFound, "The request resource does not exist");
    EXPECT_EQ(list->FindString(nullptr), -1);
    ExpectError(errorBadPointer, "Bad pointer");
    EXPECT_FALSE(list->AddString(nullptr));
    ExpectError(errorBadPointer, "Bad pointer");
    EXPECT_FALSE(list->Add(nullptr));
    ExpectError(errorBadPointer, "Bad pointer");
}

TEST_F(Strings, HoldRawBytes) {
    CStringImpl string;
    EXPECT_TRUE(string.isEmpty());
    EXPECT_TRUE(string.SetData("a\0b", 3));
    EXPECT_TRUE(string.Append("\0", 1));
    EXPECT_EQ(string.GetDataSize(), 4u);
    EXPECT_EQ(string.GetStrLength(), 4u);
    EXPECT_EQ(std::memcmp(string.GetData(), "a\0b\0", 4), 0);
    EXPECT_TRUE(string.SetStr("x"));
    EXPECT_TRUE(string.Concat("yz"));
    EXPECT_STREQ(string.GetStr(), "xyz");
    EXPECT_TRUE(string.SetData(nullptr, 0));
    EXPECT_FALSE(string.SetStr(nullptr));
    ExpectError(errorBadPointer, "Bad pointer");
    EXPECT_FALSE(string.Append(nullptr, 2));
    ExpectError(errorBadPointer, "Bad pointer");
}

}  // namespace
}  // namespace TarvoBased
