#include <climits>

#include "tests/support/sweep.h"

namespace AVBased::Testing {
namespace {

TEST(FadeEffects, TakeAMissingPositionFromTheFramesTimeStamp) {
    TestFrame frame(30, 1, 1);
    frame.SetSamples(0, {{0xFF000000}});
    frame.SetTimeStamp(75);
    Apply(*MakeEffect("fadeout", {{"duration", "100"}}), frame, INT_MIN);
    EXPECT_EQ(frame.Samples(), (Grid{{63u << 24}}));
}

void ScaleAlpha(Picture& picture, unsigned level) {
    if (picture.planes.size() == 4)
        for (int& alpha : picture.planes[3].samples) alpha = int(unsigned(alpha) * level >> 8 & 255);
}

// Colours move towards black, planar ones to the nearest value.
void ScaleColours(Picture& picture, unsigned level) {
    const int scale = int(std::min(level, 256u));
    for (unsigned p = 0; p < 3; ++p) {
        const int black = picture.packed ? 0 : p == 0 ? 16 : 128;
        for (int& sample : picture.planes[p].samples)
            sample = black + (((sample - black) * scale + (picture.packed ? 0 : 128)) >> 8);
    }
}

TEST(FadeEffects, ScaleByThePlaceWithinTheDuration) {
    SweepFrames(2000, [](const TestFrame& frame, std::mt19937& random) {
        static constexpr int limits[] = {0, 64, 100, 255, 256, 300, -1};
        const auto limit = [&](int usual) { return random() % 2 ? usual : limits[random() % std::size(limits)]; };
        // Without a duration there is no level; a negative one is one of billions; 256 times the place may wrap around.
        const int duration = random() % 8 ? 100 : random() % 2 ? Between(-1, 3, random) : 33554432;
        const int position = duration > 100 ? 16777216 : Between(-1, 102, random);
        const int lowest = limit(0), highest = limit(255);
        const Settings settings = Numbers("", {{"duration", duration}, {"FadeMin", lowest}, {"FadeMax", highest}});
        for (const char* name : {"fadein", "fadeout", "directfadein", "directfadeout"}) {
            const bool in = name[std::string(name).size() - 1] == 'n', direct = name[0] == 'd';
            Picture picture(frame);
            const auto place = unsigned(position), length = unsigned(duration);
            if (place <= length && length > 0) {
                unsigned level = (in ? place : length - place) * 256 / length;
                level = level < unsigned(lowest) ? unsigned(lowest) : std::min(level, unsigned(highest));
                (direct ? ScaleColours : ScaleAlpha)(picture, level);
            }
            ExpectEffect(name, settings, frame, picture, 0, position);
        }
    });
}

TEST(FadeEffects, TransparencyScalesAlphaByPerCents) {
    SweepFrames(300, [](const TestFrame& frame, std::mt19937& random) {
        const bool isInitial = random() % 8 == 0;
        const int opacity = isInitial ? 50 : random() % 8 ? Between(-5, 105, random) : INT_MAX;
        Picture picture(frame);
        ScaleAlpha(picture, unsigned(std::clamp(opacity, 0, 100) * 256 / 100));
        const Settings settings = Numbers("transparency_", {{"opacity", opacity}});
        ExpectEffect("transparency", isInitial ? Settings{} : settings, frame, picture);
    });
}

}  // namespace
}  // namespace AVBased::Testing
