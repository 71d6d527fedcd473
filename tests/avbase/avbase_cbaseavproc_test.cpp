#include "avbase/avbase_srcutils/avbase_cbaseavproc.h"

#include <gtest/gtest.h>

#include <functional>

#include "TarvoBased/CBaseException.h"
#include "TarvoBased/IStrings.h"
#include "TarvoBased/error_codes.h"
#include "tests/support/test_frames.h"

namespace AVBased::Testing {
namespace {

constexpr char unitName[] = "../avbase/avbase_srcutils/avbase_cbaseavproc";

class Object : public CBaseAVProc {
 public:
    Object() : CBaseAVProc("object", 1, 2) {
        for (auto [name, type] :
             {std::pair{"text", 0}, {"real", 1}, {"int64", 2}, {"int32", 3}, {"int16", 4}, {"other", 9}}) {
            PropertyNode node{"start", type};
            node.SetValue(std::int64_t(77));
            AddProperty(name, node);
        }
        AddInterface("Object", this);
        AddInterface("Object", nullptr);
        ForgetError();
    }
    PropertyNode& Node(const char* name) { return RequireProperty(name, 0); }
    void OnSetProperty(const std::string& name, PropertyNode& node) override {
        CBaseAVProc::OnSetProperty(name, node);
        if (node.text == "refused") throw TarvoBased::CBaseException(10021008, "Invalid Param Value", 5, "Object");
    }
    ~Object() override = default;
};

TEST(Properties, AreParsedByType) {
    Object object;
    for (const char* name : {"text", "real", "int64", "int32", "int16", "other"})
        EXPECT_TRUE(object.SetProperty(name, " -70000.75x")) << name;
    EXPECT_EQ(object.Node("text").Value<const char*>(), object.Node("text").text.c_str());
    EXPECT_EQ(object.Node("real").Value<double>(), -70000.75);
    EXPECT_EQ(object.Node("int64").Value<std::int64_t>(), -70000);
    EXPECT_EQ(object.Node("int32").Value<std::int32_t>(), -70000);
    EXPECT_EQ(object.Node("int16").Value<std::int16_t>(), -4464);
    EXPECT_EQ(object.Node("other").Value<std::int64_t>(), 77);
}

TEST(Properties, KeepTheValueWhenTheTextIsNotANumber) {
    Object object;
    EXPECT_TRUE(object.SetProperty("int32", "12"));
    EXPECT_TRUE(object.SetProperty("int32", "abc"));
    int type = 0;
    EXPECT_STREQ(object.GetProperty("int32", &type), "abc");
    EXPECT_EQ(type, 3);
    EXPECT_EQ(object.Node("int32").Value<std::int32_t>(), 12);
    EXPECT_EQ(LastError().code, TarvoBased::noError);
}

TEST(Properties, StayAsTheyWereWhenAValueIsRefused) {
    Object object;
    for (const char* name : {"text", "int32"}) {
        object.SetProperty(name, "41");
        const auto value = object.Node(name).Value<std::int64_t>();
        EXPECT_FALSE(object.SetProperty(name, "refused"));
        EXPECT_EQ(LastError(), (Error{10021008, "Invalid Param Value", 5, "Object"}));
        EXPECT_STREQ(object.GetProperty(name, nullptr), "41");
        if (object.Node(name).type != CBaseAVProc::typeText) {
            EXPECT_EQ(object.Node(name).Value<std::int64_t>(), value);
        }
    }
    EXPECT_EQ(object.Node("text").Value<const char*>(), object.Node("text").text.c_str());
}

TEST(Properties, UnknownAndNullNamesAreFiled) {
    Object object;
    EXPECT_FALSE(object.SetProperty("xyz", "1"));
    EXPECT_EQ(LastError().code, 10021005);
    EXPECT_EQ(LastError().message, "Property with name(xyz) does not exist");
    EXPECT_EQ(LastError().source, unitName);
    ForgetError();
    EXPECT_EQ(object.GetProperty("xyz", nullptr), nullptr);
    EXPECT_EQ(LastError().message, "Property with name(xyz) does not exist");
    const std::function<bool()> calls[] = {
        [&] { return object.SetProperty(nullptr, "1"); },
        [&] { return object.SetProperty("int32", nullptr); },
        [&] { return object.GetProperty(nullptr, nullptr) != nullptr; },
        [&] { return object.GetInterface(nullptr) != nullptr; },
    };
    for (const auto& call : calls) {
        ForgetError();
        EXPECT_FALSE(call());
        EXPECT_EQ(LastError().code, 10021003);
        EXPECT_EQ(LastError().message, "Bad pointer");
    }
}

TEST(Properties, AreListedInByteOrder) {
    Object object;
    object.AddProperty("int", {});
    TarvoBased::IStrings* names = object.GetPropertyNames();
    std::string joined;
    for (int i = 0; i < names->GetCount(); ++i) joined += std::string(names->GetString(i)->GetStr()) + " ";
    EXPECT_EQ(joined, "int int16 int32 int64 other real text ");
    names->Free();
}

TEST(Properties, KeepTheirFirstDeclaration) {
    Object object;
    object.AddProperty("int32", {"second", 1});
    int type = 0;
    EXPECT_STREQ(object.GetProperty("int32", &type), "start");
    EXPECT_EQ(type, 3);
}

TEST(Interfaces, AreFoundByNameAndKeepTheirFirstPointer) {
    Object object;
    EXPECT_EQ(object.GetInterface("Object"), &object);
    EXPECT_EQ(object.GetInterface("IVideoProc"), nullptr);
    EXPECT_EQ(LastError().code, 10021009);
    EXPECT_EQ(LastError().message, "IVideoProc");
}

}  // namespace
}  // namespace AVBased::Testing
