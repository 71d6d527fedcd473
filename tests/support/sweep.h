#pragma once

#include "effects/base/CBasedVideoEffect.h"
#include "tests/support/pictures.h"

/// What all judges of effects are tried on.
namespace AVBased::Testing {

/// A random number from `least` to `most`.
inline int Between(int least, int most, std::mt19937& random) {
    return least + int(random() % unsigned(most - least + 1));
}
/// The same in hundredths, so that text and number are the same.
inline double RealBetween(int least, int most, std::mt19937& random) {
    return Between(100 * least, 100 * most, random) / 100.0;
}

/// The properties of an effect, whose names begin with `prefix`, as numbers.
inline Settings Numbers(const std::string& prefix, std::initializer_list<std::pair<const char*, double>> numbers) {
    Settings settings;
    for (const auto& [name, number] : numbers) {
        const bool whole = number == double((long long)number);
        settings.emplace_back(prefix + name, whole ? std::to_string((long long)number) : std::to_string(number));
    }
    return settings;
}

/// All of them in a line, for messages.
inline std::string Describe(const Settings& settings) {
    std::string text;
    for (const auto& [name, value] : settings) text += " " + name + "=" + value;
    return text;
}

/// Calls check(frame, random) with random frames: 1x1 first, of the formats that effects know by turns, mostly of
/// widths from 1 to 77 by turns, which leave each remainder of the vectors in use. One in ten is wider. Heights,
/// pitches, the rounding of chroma and the contents vary.
template <class Check>
void SweepFrames(unsigned count, Check check) {
    std::vector<unsigned> codes;
    for (const FormatInfo& info : formats)
        if (info.forEffects) codes.push_back(info.code);
    std::mt19937 random(20240611);
    for (unsigned i = 0; i < count; ++i) {
        const unsigned width = i % 10 == 9 ? 78 + random() % 250 : 1 + (i - i / 10) % 77;
        const unsigned height = i == 0 ? 1 : 1 + random() % (i % 8 ? 9 : 40);
        const unsigned chroma = random() % 5, secondChroma = random() % 2 ? chroma : random() % 5;
        const FrameLayout layout{{unsigned(random() % 9), chroma, secondChroma, 1}, random() % 2 == 0};
        TestFrame frame(codes[i % codes.size()], width, height, layout);
        frame.Randomise(random, Content(std::max(0, Between(-2, 2, random))));
        SCOPED_TRACE(testing::Message() << "frame " << i << ": " << testing::PrintToString(frame));
        check(frame, random);
        if (testing::Test::HasFatalFailure()) return;
    }
}

/// Calls use(set) with every instruction set that this machine has.
template <class Use>
void UnderEachSet(Use use) {
    for (const InstructionSet set : allInstructionSets)
        if (IsUsable(set)) use(set);
}

/// Limits an effect of the table to an instruction set that this machine has.
inline void Limit(IVideoProc& effect, InstructionSet set) {
    dynamic_cast<CBasedVideoImageEffect&>(effect).UseInstructionSet(set);
}

/// Holds a new effect, under every instruction set, to what it must make of a frame. Bytes may differ by `tolerance`.
inline void ExpectEffect(const char* name, const Settings& settings, const TestFrame& frame, const TestFrame& expected,
                         int tolerance = 0, int position = 0) {
    UnderEachSet([&](InstructionSet set) {
        const EffectOwner effect = MakeEffect(name, settings);
        Limit(*effect, set);
        TestFrame actual = frame;
        Apply(*effect, actual, position);
        ASSERT_EQ(actual.DifferenceFrom(expected, tolerance), "")
            << name << Describe(settings) << ", instruction set " << int(set);
    });
}
/// The same; padding must stay.
inline void ExpectEffect(const char* name, const Settings& settings, const TestFrame& frame, const Picture& expected,
                         int tolerance = 0, int position = 0) {
    TestFrame wanted = frame;
    expected.StoreIn(wanted);
    ExpectEffect(name, settings, frame, wanted, tolerance, position);
}

}  // namespace AVBased::Testing
