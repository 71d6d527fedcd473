#include "effects/neighbourhood/EdgeLightEffect.h"

#include <cmath>

#include "effects/neighbourhood/EdgeLightEffect_avx2.h"
#include "tests/support/grids.h"

namespace AVBased::Testing {
namespace {

TEST(EdgeLight, LumaWrapsAroundChromaIsBiasedAndTheLastRowStays) {
    TestFrame frame(60, 3, 2, {{1, 1, 0, 0}, false});
    for (unsigned plane : {0u, 1u, 2u}) {
        frame.Fill(plane, 5);
        frame.SetSamples(plane, {{0, 0, 100}, {0, 4, 100}});
    }
    Apply(*MakeEffect("edgelight"), frame);
    // 3 * |(100, 4)| is 300.2; behind the row lies 5, or without padding the next row's 0.
    EXPECT_EQ(frame.Samples(0), (Grid{{0, 44, 29}, {0, 4, 100}}));
    EXPECT_EQ(frame.Samples(1), (Grid{{128, 172, 157}, {0, 4, 100}}));
    EXPECT_EQ(frame.Samples(2), (Grid{{128, 172, 172}, {0, 4, 100}}));
}

TEST(EdgeLight, PackedPixelsKeepTheLastColumnAndTheFourthByte) {
    TestFrame frame(30, 3, 3);
    frame.SetSamples(0,
                     {{0x11030000, 0x22030405, 0x33030405}, {0x44030300, 0x55030405, 0x66070707}, {0x77, 0x88, 0x99}});
    Apply(*MakeEffect("edgelight", {{"edgelight_level", "1"}}), frame);
    EXPECT_EQ(frame.Samples(0),
              (Grid{{0x11000505, 0x22000000, 0x33030405}, {0x44030377, 0x55050583, 0x66070707}, {0x77, 0x88, 0x99}}));
}

unsigned Gradient(int here, int right, int below, unsigned level) {
    const double length = std::sqrt(std::pow(here - right, 2) + std::pow(here - below, 2)) * level;
    return unsigned(std::uint64_t(std::min(length, 4294967295.0)) % 256);
}

TEST(EdgeLight, IsTheGradientTimesTheLevelOnEveryPlane) {
    for (unsigned level : {0u, 1u, 3u, 11u, 12u, 255u, 100000u, 11904000u, 2147483647u, 4294967295u})
        ExpectOnRandomFrames(
            "edgelight", {{"edgelight_level", std::to_string(int(level))}},
            [&](const Grid& in, unsigned plane, TestFrame frame) {
                Grid out = in;
                unsigned pitch, rowBytes;
                const unsigned char* const data = frame.GetBuffer(plane, &rowBytes, &pitch, nullptr);
                for (unsigned y = 0; y + 1 < in.size(); ++y)
                    for (unsigned x = 0; x < in[y].size(); ++x) {
                        if (!frame.IsPacked()) {
                            const unsigned behind = data[std::size_t(y) * pitch + x + 1];
                            out[y][x] = Gradient(int(in[y][x]), int(behind), int(in[y + 1][x]), level);
                            if (plane > 0) out[y][x] = (out[y][x] + 128) % 256;
                        } else if (x + 1 < in[y].size()) {
                            out[y][x] &= 0xFF000000;
                            for (unsigned c = 0; c < 3; ++c)
                                out[y][x] |=
                                    Gradient(Byte(in[y][x], c), Byte(in[y][x + 1], c), Byte(in[y + 1][x], c), level)
                                    << 8 * c;
                        }
                    }
                return out;
            });
}

TEST(EdgeLight, RootsAreExactForEveryPairOfDifferences) {
    if (!IsUsable(InstructionSet::Avx2)) GTEST_SKIP() << "this processor has one variant only";
    constexpr auto rows = variantsOf<GradientComponentRow, GradientComponentRowAvx2>;
    constexpr unsigned pitch = 513;
    std::mt19937 random(3);
    std::vector<unsigned> levels{12, 8192, 8193, 1u << 31};
    for (unsigned level = 0; level <= 11; ++level) levels.push_back(level);
    for (unsigned i = 0; i < 20; ++i) levels.push_back(13 + random() % 8180);
    for (const unsigned level : levels)
        for (unsigned below = 0; below < 256; ++below) {
            // Every second sample is 0, between neighbours of every value.
            GuardedPlane expected(pitch, 2, Content::Random, random);
            for (unsigned x = 0; x < pitch; ++x) {
                expected.data()[x] = static_cast<unsigned char>(x % 2 * (x / 2));
                expected.data()[pitch + x] = static_cast<unsigned char>(below);
            }
            GuardedPlane actual = expected;
            rows.baseline(expected.data(), pitch - 1, pitch, level, 0);
            rows.avx2(actual.data(), pitch - 1, pitch, level, 0);
            ASSERT_EQ(expected, actual) << "level " << level << " below " << below;
        }
}

}  // namespace
}  // namespace AVBased::Testing
