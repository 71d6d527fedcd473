#include "effects/neighbourhood/ReliefEffect.h"

#include "tests/support/grids.h"

namespace AVBased::Testing {
namespace {

TEST(Relief, WeightsAreTruncatedCosines) {
    EXPECT_EQ(CReliefVideoImageEffect::Kernel(40), (ReliefKernel{22, -164, -255, 196, 256, -196, 255, 164, -22}));
    EXPECT_EQ(CReliefVideoImageEffect::Kernel(0), (ReliefKernel{181, 0, -181, 256, 256, -256, 181, 0, -181}));
}

TEST(Relief, EachProductIsFlooredAndTermsBeyondTheBorderAreMissing) {
    TestFrame frame(60, 3, 3);
    frame.Fill(0, 100);
    frame.SetSamples(2, {{0, 0, 0}, {0, 9, 0}, {0, 0, 0}});
    const EffectOwner effect = MakeEffect("relief");
    Apply(*effect, frame);
    // The floors of 100 times a weight: 8 -65 -100 / 76 100 -77 / 99 64 -9.
    EXPECT_EQ(frame.Samples(0), (Grid{{78, 253, 255}, {0, 96, 255}, {0, 0, 119}}));
    EXPECT_EQ(frame.Samples(2), (Grid{{0, 5, 8}, {0, 9, 6}, {0, 0, 0}}));
}

TEST(Relief, FourthByteComesFromBelowAndToTheRight) {
    TestFrame frame(30, 3, 2);
    frame.SetSamples(0, {{0x01000000, 0x02000000, 0x03000000}, {0x04000000, 0x05000000, 0x06030201}});
    const EffectOwner effect = MakeEffect("relief");
    Apply(*effect, frame);
    EXPECT_EQ(frame.Samples(0), (Grid{{0x05000000, 0x06000000, 0x06010100}, {0x05000000, 0x06000000, 0x06030201}}));
}

// The sum over the block around (y, x) of one channel, clipped to the plane.
unsigned Sum(const Grid& in, int y, int x, unsigned channel, const ReliefKernel& kernel) {
    int sum = 0;
    for (int dy = -1; dy <= 1; ++dy)
        for (int dx = -1; dx <= 1; ++dx)
            if (y + dy >= 0 && y + dy < int(in.size()) && x + dx >= 0 && x + dx < int(in[0].size()))
                sum += Byte(in[unsigned(y + dy)][unsigned(x + dx)], channel) * kernel[unsigned(dy * 3 + dx + 4)] >> 8;
    return unsigned(std::clamp(sum, 0, 255));
}

TEST(Relief, IsTheSumOfTheBlockOnEveryPlane) {
    for (int angle : {40, 0, 135, -77, 2147483647}) {
        const ReliefKernel kernel = CReliefVideoImageEffect::Kernel(angle);
        ExpectOnRandomFrames(
            "relief", {{"relief_angle", std::to_string(angle)}}, [&](const Grid& in, unsigned, TestFrame frame) {
                Grid out = in;
                for (unsigned y = 0; y < in.size(); ++y)
                    for (unsigned x = 0; x < in[y].size(); ++x) {
                        out[y][x] = Sum(in, int(y), int(x), 0, kernel);
                        if (!frame.IsPacked()) continue;
                        for (unsigned c : {1u, 2u}) out[y][x] |= Sum(in, int(y), int(x), c, kernel) << 8 * c;
                        out[y][x] |=
                            in[std::min(y + 1, unsigned(in.size()) - 1)][std::min(x + 1, unsigned(in[y].size()) - 1)] &
                            0xFF000000;
                    }
                return out;
            });
    }
}

}  // namespace
}  // namespace AVBased::Testing
