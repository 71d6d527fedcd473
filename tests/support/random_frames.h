#pragma once

#include "effects/base/CBasedVideoEffect.h"
#include "effects/geometry/coordinate_table.h"
#include "tests/support/test_frames.h"

namespace AVBased::Testing {

/// A random integer of `least` to `most` as text.
inline std::string Between(int least, int most, std::mt19937& random) {
    return std::to_string(least + int(random() % unsigned(most - least + 1)));
}
/// A random number with two digits behind the point.
inline std::string RealBetween(int least, int most, std::mt19937& random) {
    const std::string whole = Between(least, most - 1, random);
    return whole + "." + Between(10, 99, random);
}

/// Runs an effect under every instruction set on random frames of all formats, sizes and layouts, and compares with
/// judge(views to write, views of an untouched copy). settings(width, height, random) makes up the properties.
template <class MakeSettings, class Judge>
void CompareOnRandomFrames(const char* name, unsigned count, MakeSettings settings, Judge judge) {
    static constexpr unsigned codes[] = {30, 30, 30, 30, 0, 4, 6, 7, 12, 13, 35, 60};
    std::mt19937 random(5);
    for (unsigned i = 0; i < count; ++i) {
        const unsigned width = 1 + random() % (i % 3 ? 180 : 12), height = 1 + random() % (i % 4 ? 60 : 9);
        const FrameLayout layout{{unsigned(random() % 9), unsigned(random() % 5), unsigned(random() % 5), 1},
                                 random() % 2 == 0};
        TestFrame original(codes[random() % std::size(codes)], width, height, layout);
        original.Randomise(random);
        const Settings chosen = settings(width, height, random);
        TestFrame expected = original, source = original;
        ForFrame([&](const PackedView& to, const PackedView& from) { judge(to, from, chosen); },
                 [&](const PlanarView& to, const PlanarView& from) { judge(to, from, chosen); }, expected, source);
        std::string text;
        for (const auto& [property, value] : chosen) text += property + "=" + value + " ";
        for (InstructionSet set : allInstructionSets) {
            if (!IsUsable(set)) continue;
            TestFrame actual = original;
            const EffectOwner effect = MakeEffect(name, chosen);
            dynamic_cast<CBasedVideoImageEffect&>(*effect).UseInstructionSet(set);
            Apply(*effect, actual);
            ASSERT_EQ(actual, expected) << "frame " << i << " set " << int(set) << " " << text;
        }
    }
}

/// The placer that fits the views.
inline PlacePacked PlacerOf(const PackedView& to, const PackedView& from) { return {to, from}; }
inline PlacePlanar PlacerOf(const PlanarView& to, const PlanarView& from) { return {to, from}; }
inline const PackedView& LumaOf(const PackedView& view) { return view; }
inline const ComponentView& LumaOf(const PlanarView& view) { return view.plane[0]; }

inline unsigned Number(const Settings& settings, std::size_t index) {
    return unsigned(std::stoll(settings.at(index).second));
}

}  // namespace AVBased::Testing
