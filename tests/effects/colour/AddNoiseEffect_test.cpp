#include <cmath>
#include <limits>

#include "tests/support/place_bits.h"
#include "tests/support/sweep.h"

namespace AVBased::Testing {
namespace {

Settings Grain(int strength, int colour, int seed) {
    return Numbers("addnoise_", {{"strength", strength}, {"color", colour}, {"seed", seed}});
}

// One of a seed's table of random numbers.
int Number(unsigned seed, unsigned place) {
    const std::uint32_t bits = Stirred(Stirred(~seed) + place * 0x9E3779B9);
    return (int((bits & 255) + (bits >> 8 & 255) + (bits >> 16 & 255) + (bits >> 24)) - 510) / 4;
}
// Two of them, from where the bits of a stretch of samples say.
int GrainAt(unsigned seed, std::uint32_t bits, int place) {
    constexpr unsigned places = 1 << 16;
    const unsigned at = unsigned(place) % 1024;
    return Number(seed, bits % places + at) + Number(seed, places + 1024 + (bits >> 16) % places + at);
}
// Grainiest between black and white.
int Grained(int sample, int tone, int grain, int gain) {
    const int weight = (std::min(tone, 255 - tone) + 129) >> 1;
    return std::clamp(sample + ((weight * grain * gain + (1 << 14)) >> 15), 0, 255);
}

void ExpectGrain(const TestFrame& frame, std::mt19937& random) {
    static constexpr int chromaUnits[] = {16, 11, 8, 6, 4};
    const int strength = Between(-2, random() % 8 ? 60 : 300, random);
    const bool coloured = random() % 2;
    const int seed = int(random()), position = Between(-3, 1000, random);
    const Picture from(frame);
    Picture to = from;
    for (int p = 0; p < (from.packed || coloured ? 3 : 1); ++p)
        to.planes[p] = from.planes[p].Like([&](int x, int y) {
            const int unit = from.packed ? 28
                             : p == 0    ? (coloured ? 16 : 24)
                                         : chromaUnits[from.columnShift + from.rowShift];
            const int gain = (std::clamp(strength, 0, 255) * unit * 492 + 1400) / 2800;
            const int sample = from.planes[p](x, y);
            const int tone = from.IsChroma(p) ? from.planes[0].Near(x << from.columnShift, y << from.rowShift) : sample;
            const int place = from.packed && coloured ? 4 * x + p : x;
            const std::uint32_t bits = PlaceBits(seed, position, from.packed ? 0 : p, place / 1024, y);
            return Grained(sample, tone, GrainAt(unsigned(seed), bits, place), gain);
        });
    ExpectEffect("addnoise", Grain(strength, coloured, seed), frame, to, 0, position);
}

TEST(AddNoise, GrainIsThatOfTheSeedThePositionAndThePlace) {
    SweepFrames(693, ExpectGrain);
    std::mt19937 random(3);
    for (const unsigned format : {30u, 0u}) {
        TestFrame wide(format, 2100, 2);
        wide.Randomise(random, Content::Random);
        ExpectGrain(wide, random);
    }
}

TEST(AddNoise, DeviatesByTheStrengthInMiddleTonesAndHalfOfItInWhite) {
    TestFrame frame(30, 256, 200);
    const auto expectMoments = [&](int tone, int strength, double mean, double deviation) {
        frame.Fill(0, unsigned(tone));
        Apply(*MakeEffect("addnoise", Grain(strength, 0, 1)), frame, 0);
        const std::vector<int> values = Picture(frame).planes[2].samples;
        double sum = 0, squares = 0;
        for (const int value : values) sum += value, squares += value * value;
        sum /= double(values.size());
        EXPECT_NEAR(sum, mean, 0.02 * strength);
        EXPECT_NEAR(std::sqrt(squares / double(values.size()) - sum * sum), deviation, 0.04 * strength);
    };
    for (const int strength : {4, 30}) {
        expectMoments(128, strength, 128, strength);
        // Half of the grain is cut off, which leaves a mean of 0.399 and a deviation of 0.584 of the uncut one.
        expectMoments(255, strength, 255 - 0.399 * strength / 2, 0.584 * strength / 2);
    }
}

TEST(AddNoise, TakesAMissingPositionFromTheFramesTimeStamp) {
    TestFrame frame(30, 16, 4);
    frame.Fill(0, 128);
    frame.SetTimeStamp(2);
    const auto grained = [&](int position) {
        TestFrame result = frame;
        Apply(*MakeEffect("addnoise"), result, position);
        return result;
    };
    EXPECT_EQ(grained(std::numeric_limits<int>::min()), grained(2));
}

}  // namespace
}  // namespace AVBased::Testing
