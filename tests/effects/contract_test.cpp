// What every effect of the table promises. A new effect is covered by its row; one that promises less says so below.

#include <cstring>
#include <stdexcept>

#include "TarvoBased/IStrings.h"
#include "TarvoBased/error_codes.h"
#include "tests/support/sweep.h"

namespace AVBased {

void PrintTo(const EffectEntry& entry, std::ostream* out) { *out << entry.name; }

namespace Testing {
namespace {

// What an effect does that the others never do.
struct Exception {
    const char* effect;
    bool changesPadding = false, changesAlpha = false;
    const char* name = nullptr;  // when the object's own name is not the one asked for
};
constexpr Exception exceptions[] = {
    {.effect = "gray", .changesPadding = true},
    {.effect = "aged_film", .changesPadding = true},
    {.effect = "spherize", .changesAlpha = true},
    {.effect = "rotate", .changesAlpha = true},
    {.effect = "tilereflect", .changesAlpha = true},
    {.effect = "mirrorinvert", .changesAlpha = true},
    {.effect = "fadein", .changesAlpha = true},
    {.effect = "fadeout", .changesAlpha = true},
    {.effect = "directfadein", .name = "fadein"},
    {.effect = "directfadeout", .name = "fadeout"},
    {.effect = "transparency", .changesAlpha = true},
    {.effect = "popstyle", .changesAlpha = true},
    {.effect = "EffectNameRotate90X", .changesAlpha = true},
    {.effect = "simple_gauss_blur", .changesAlpha = true},
    {.effect = "simple_laplacian_sharpen", .changesAlpha = true},
    {.effect = "mosaic", .changesPadding = true, .changesAlpha = true},
    {.effect = "oilpainting", .changesPadding = true, .changesAlpha = true},
    {.effect = "reverse", .changesAlpha = true},
    {.effect = "videowall", .changesAlpha = true},
    {.effect = "tensile", .changesPadding = true, .changesAlpha = true},
    {.effect = "mirage", .changesAlpha = true},
    {.effect = "magnifier", .changesAlpha = true},
    {.effect = "atomize", .changesAlpha = true},
    {.effect = "2D_3D_TransForm", .changesAlpha = true},
    {.effect = "relief", .changesAlpha = true},
};

// Numbers that would take hours or gigabytes, kept within bounds here.
struct Bound {
    const char* property;
    int least, most;
};
constexpr Bound bounds[] = {
    {"blur_count", 0, 3},
    {"sharpen_count", 0, 3},
};

Exception ExceptionOf(const std::string& effect) {
    for (const Exception& exception : exceptions)
        if (effect == exception.effect) return exception;
    return {};
}

std::vector<std::string> PropertyNames(IVideoProc& effect) {
    std::vector<std::string> names;
    TarvoBased::IStrings* list = effect.GetPropertyNames();
    for (int i = 0; i < list->GetCount(); ++i) names.push_back(list->GetString(i)->GetStr());
    list->Free();
    return names;
}

// Sets every property to a number that may be small, odd, negative or huge. The same random state sets the same values.
Settings RandomSettings(IVideoProc& effect, std::mt19937& random) {
    static constexpr int odd[] = {0, 1, -1, 2, 3, 255, 256, -300, 2147483647, -2147483647 - 1};
    Settings settings;
    for (const std::string& name : PropertyNames(effect)) {
        long long value = random() % 3 ? int(random() % 40) - 8 : odd[random() % std::size(odd)];
        for (const Bound& bound : bounds)
            if (name == bound.property) value = std::clamp<long long>(value, bound.least, bound.most);
        int type = 0;
        effect.GetProperty(name.c_str(), &type);
        std::string text = std::to_string(value);
        if (type == CBaseAVProc::typeReal && random() % 2) text += ".375";
        if (effect.SetProperty(name.c_str(), text.c_str())) settings.emplace_back(name, text);
    }
    return settings;
}

// From one of its calls on, they fail, or say something smaller each other time.
class UnsteadyFrame final : public TestFrame {
 public:
    enum class Habit { ReturnsNull, Throws, Shrinks };
    UnsteadyFrame(unsigned format, Habit habit, int steadyCalls)
        : TestFrame(format, 25, 17), m_habit(habit), m_steadyCalls(steadyCalls) {}

    void GetDimension(unsigned* width, unsigned* height) override {
        TestFrame::GetDimension(width, height);
        if (!Turns() || m_habit != Habit::Shrinks) return;
        *width /= 3;
        *height /= 3;
    }
    unsigned char* GetBuffer(unsigned plane, unsigned* rowBytes, unsigned* pitch, unsigned* rows) override {
        unsigned char* const buffer = TestFrame::GetBuffer(plane, rowBytes, pitch, rows);
        if (!Turns()) return buffer;
        if (m_habit == Habit::Throws) throw std::runtime_error("the frame has gone");
        if (m_habit == Habit::Shrinks && rows) *rows /= 3;
        return m_habit == Habit::ReturnsNull ? nullptr : buffer;
    }
    IRawVideoFrame* Clone() override {
        if (Turns() && m_habit == Habit::Throws) throw std::runtime_error("the frame is not cloned");
        return TestFrame::Clone();
    }

 private:
    bool Turns() {
        const int past = m_calls++ - m_steadyCalls;
        return past >= 0 && past % 2 == 0;
    }

    Habit m_habit;
    int m_steadyCalls, m_calls = 0;
};

constexpr unsigned sweep = 300;  // frames

class Contract : public testing::TestWithParam<EffectEntry> {
 protected:
    EffectOwner Make() const { return MakeEffect(GetParam().name); }
    Exception Promise() const { return ExceptionOf(GetParam().name); }
};

TEST_P(Contract, IdentityIsThatOfTheTable) {
    const EffectOwner effect = Make();
    EXPECT_STREQ(effect->GetName(), Promise().name ? Promise().name : GetParam().name);
    EXPECT_EQ(effect->GetType(), 1u);
    EXPECT_EQ(effect->GetSubType(), 2u);
    EXPECT_EQ(effect->GetInterface("IVideoProc"), effect.get());
    EXPECT_EQ(effect->GetDuration(), 1);
    EXPECT_TRUE(effect->Seek(5));
}

TEST_P(Contract, UnknownFormatsStayUntouched) {
    std::mt19937 random(7);
    for (const FormatInfo& info : formats) {
        TestFrame frame(info.code, 13, 7, {}, info.forEffects ? 99 : -1);
        frame.Randomise(random);
        const TestFrame before = frame;
        const EffectOwner effect = Make();
        RandomSettings(*effect, random);
        Apply(*effect, frame);
        ASSERT_EQ(frame, before);
    }
}

TEST_P(Contract, StaysInsidePlanesAndKeepsPaddingAndAlpha) {
    SweepFrames(sweep, [&](TestFrame& frame, std::mt19937& random) {
        const Picture before(frame);
        TestFrame padded = frame;
        const EffectOwner effect = Make();
        const std::string settings = Describe(RandomSettings(*effect, random));
        Apply(*effect, frame, int(random() % 4));
        ASSERT_TRUE(frame.GuardsIntact()) << settings;
        const Picture after(frame);
        if (before.planes.size() == 4 && !Promise().changesAlpha) {
            ASSERT_EQ(after.planes[3].samples, before.planes[3].samples) << settings;
        }
        if (Promise().changesPadding) return;
        after.StoreIn(padded);
        ASSERT_EQ(frame, padded) << settings << " padding";
    });
}

TEST_P(Contract, CopyAndInPlaceAgreeAndNothingIsKept) {
    const int aliveBefore = TestFrame::alive;
    SweepFrames(sweep, [&](TestFrame& frame, std::mt19937& random) {
        const TestFrame original = frame;
        const EffectOwner copying = Make(), inPlace = Make();
        for (const auto& [name, value] : RandomSettings(*copying, random))
            inPlace->SetProperty(name.c_str(), value.c_str());
        ImagePostion record;
        const auto* result = static_cast<TestFrame*>(copying->ProcFrame(&record, 1, &frame));
        // A setting may be refused only when the frame comes; both calls refuse it then.
        if (!result) return;
        ASSERT_EQ(frame, original);
        Apply(*inPlace, frame, 1);
        ASSERT_EQ(*result, frame);
    });
    EXPECT_EQ(TestFrame::alive, aliveBefore);
}

TEST_P(Contract, EveryInstructionSetGivesTheSameBytes) {
    SweepFrames(sweep, [&](TestFrame& frame, std::mt19937& random) {
        const unsigned seed = random();
        std::vector<TestFrame> results;
        UnderEachSet([&](InstructionSet set) {
            random.seed(seed);
            TestFrame& result = results.emplace_back(frame);
            const EffectOwner effect = Make();
            Limit(*effect, set);
            const std::string settings = Describe(RandomSettings(*effect, random));
            // Twice: effects that keep tables compute them first and replay them then.
            for (int position : {0, 1}) Apply(*effect, result, position);
            ASSERT_EQ(result, results.front()) << settings;
        });
    });
}

TEST_P(Contract, StaysInsidePlanesWhenTheHostsCopyIsOfAnotherSize) {
    std::mt19937 random(11);
    for (const unsigned format : {formatRgba32, 0u, 60u})
        for (const unsigned side : {3u, 90u})
            for (int i = 0; i < 20; ++i) {
                TestFrame frame(format, 25, 17);
                frame.otherClone = std::make_unique<TestFrame>(format, side, side);
                const EffectOwner effect = Make();
                const std::string settings = Describe(RandomSettings(*effect, random));
                ForgetError();
                Apply(*effect, frame);
                ASSERT_TRUE(frame.GuardsIntact()) << settings << " side " << side;
                // Too small to read from.
                const bool refused = !frame.otherClone && side == 3;
                ASSERT_EQ(LastError().code, refused ? TarvoBased::errorNoMemory : TarvoBased::noError) << settings;
            }
}

TEST_P(Contract, NothingEscapesFromFramesThatFailOrChange) {
    std::mt19937 random(13);
    const int aliveBefore = TestFrame::alive;
    for (const auto habit :
         {UnsteadyFrame::Habit::ReturnsNull, UnsteadyFrame::Habit::Throws, UnsteadyFrame::Habit::Shrinks})
        for (const unsigned format : {formatRgba32, 0u})
            for (int steadyCalls = 0; steadyCalls < 12; ++steadyCalls) {
                UnsteadyFrame frame(format, habit, steadyCalls);
                const EffectOwner effect = Make();
                const std::string settings = Describe(RandomSettings(*effect, random));
                ImagePostion record;
                ASSERT_NO_THROW(effect->ProcFrameInPlace(&record, 3, &frame)) << settings;
                ASSERT_NO_THROW(effect->ProcFrame(&record, 4, &frame)) << settings;
                ASSERT_TRUE(frame.GuardsIntact()) << settings << " call " << steadyCalls;
            }
    ForgetError();
    EXPECT_EQ(TestFrame::alive, aliveBefore);
}

TEST_P(Contract, EveryTextPropertySurvivesGarbage) {
    static constexpr const char* garbage[] = {"",        "abc", " ",    "-",    "1e400", "-1e400",
                                              "nan",     "inf", "%n%s", "0x7f", "1;2;",  "99999999999999999999",
                                              "\xff\xfe"};
    for (const char* text : garbage) {
        const EffectOwner effect = Make();
        for (const std::string& name : PropertyNames(*effect)) {
            const std::string before = effect->GetProperty(name.c_str(), nullptr);
            // 20 digits and "-1e400" read as an integer are -1: a pass count without end.
            const bool endless = std::any_of(std::begin(bounds), std::end(bounds), [&](const Bound& bound) {
                return name == bound.property && (std::strlen(text) > 10 || *text == '-');
            });
            if (endless) continue;
            ForgetError();
            if (effect->SetProperty(name.c_str(), text)) {
                EXPECT_EQ(LastError().code, TarvoBased::noError) << name << "=" << text;
            } else {
                EXPECT_EQ(LastError().code, TarvoBased::errorGeneral) << name << "=" << text;
                EXPECT_EQ(effect->GetProperty(name.c_str(), nullptr), before) << name << "=" << text;
            }
        }
        SweepFrames(9, [&](TestFrame& frame, std::mt19937&) {
            Apply(*effect, frame);
            EXPECT_TRUE(frame.GuardsIntact()) << text;
        });
    }
}

TEST_P(Contract, NullRecordsAndFramesAreFiled) {
    const EffectOwner effect = Make();
    ImagePostion record;
    TestFrame frame(30, 2, 2);
    const auto badPointer = [](int line) {
        return Error{TarvoBased::errorBadPointer, "Bad pointer", line, "CBasedVideoEffect"};
    };
    EXPECT_EQ(effect->ProcFrame(nullptr, 0, &frame), nullptr);
    EXPECT_EQ(LastError(), badPointer(98));
    EXPECT_EQ(effect->ProcFrame(&record, 0, nullptr), nullptr);
    EXPECT_EQ(LastError(), badPointer(99));
    effect->ProcFrameInPlace(nullptr, 0, &frame);
    EXPECT_EQ(LastError(), badPointer(118));
    effect->ProcFrameInPlace(&record, 0, nullptr);
    EXPECT_EQ(LastError(), badPointer(119));
}

INSTANTIATE_TEST_SUITE_P(EffectTable, Contract, testing::ValuesIn(EffectTable().begin(), EffectTable().end()),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace Testing
}  // namespace AVBased
