#include "effects/colour/BrightnessContrastEffect.h"

#include <gtest/gtest.h>

#include "TarvoBased/error_codes.h"
#include "tests/support/failing_memory.h"
#include "tests/support/test_frames.h"

namespace AVBased::Testing {
namespace {

constexpr char name[] = "brightness_contrast";

Settings Percent(const char* brightness, const char* contrast, const char* saturation = "0") {
    return {{"brightness", brightness}, {"contrast", contrast}, {"saturation", saturation}};
}

std::vector<unsigned> OnPixels(const Settings& settings, std::vector<unsigned> pixels) {
    TestFrame frame(30, unsigned(pixels.size()), 1);
    frame.SetSamples(0, {std::move(pixels)});
    Apply(*MakeEffect(name, settings), frame);
    return frame.Samples().front();
}

// Luma, and one sample of either chroma plane.
std::vector<unsigned> OnLumaAndChroma(const Settings& settings, std::vector<unsigned> luma, unsigned u, unsigned v) {
    TestFrame frame(4, unsigned(luma.size()), 1);
    frame.SetSamples(0, {std::move(luma)});
    frame.SetSamples(1, {{u, 0}});
    frame.SetSamples(2, {{v, 255}});
    Apply(*MakeEffect(name, settings), frame);
    std::vector<unsigned> samples = frame.Samples(0).front();
    samples.push_back(frame.Samples(1)[0][0]);
    samples.push_back(frame.Samples(2)[0][0]);
    return samples;
}

TEST(BrightnessContrast, MovesPackedTonesAlongALine) {
    using Pixels = std::vector<unsigned>;
    EXPECT_EQ(OnPixels({}, {0x12345678}), (Pixels{0x12345678}));
    EXPECT_EQ(OnPixels(Percent("0", "-100"), {0x12345678, 0xFF0000FF}), (Pixels{0x127F7F7F, 0xFF7F7F7F}));
    EXPECT_EQ(OnPixels(Percent("100", "0"), {0x12340078}), (Pixels{0x12FFFFFF}));
    // 10 per cent are 25 steps; 50 per cent make 126 - 127 a step of -1.5, rounded down.
    EXPECT_EQ(OnPixels(Percent("10", "0"), {0x00E6E700}), (Pixels{0x00FFFF19}));
    EXPECT_EQ(OnPixels(Percent("0", "50"), {0x007E8001}), (Pixels{0x007D8000}));
    EXPECT_EQ(OnPixels(Percent("-1", "0"), {0x00050201}), (Pixels{0x00030000}));
}

TEST(BrightnessContrast, MovesLumaHalfAsFarAndKeepsChroma) {
    using Samples = std::vector<unsigned>;
    EXPECT_EQ(OnLumaAndChroma(Percent("100", "0"), {0, 1, 128, 200}, 9, 240), (Samples{127, 128, 255, 255, 9, 240}));
    EXPECT_EQ(OnLumaAndChroma(Percent("-100", "0"), {0, 127, 128, 255}, 9, 240), (Samples{0, 0, 1, 128, 9, 240}));
    EXPECT_EQ(OnLumaAndChroma(Percent("0", "-100"), {0, 1, 128, 255}, 9, 240), (Samples{127, 127, 127, 127, 9, 240}));
}

TEST(BrightnessContrast, SaturationJumpsBesideZero) {
    using Pixels = std::vector<unsigned>;
    // Mean 20: grey at -100, unchanged at -50, twice the distance at the smallest number, four times at 100.
    EXPECT_EQ(OnPixels(Percent("0", "0", "-100"), {0x801E140A}), (Pixels{0x80141414}));
    EXPECT_EQ(OnPixels(Percent("0", "0", "-50"), {0x801E140A}), (Pixels{0x801E140A}));
    EXPECT_EQ(OnPixels(Percent("0", "0", "0"), {0x801E140A}), (Pixels{0x801E140A}));
    EXPECT_EQ(OnPixels(Percent("0", "0", "1e-9"), {0x801E140A}), (Pixels{0x80281400}));
    EXPECT_EQ(OnPixels(Percent("0", "0", "100"), {0x801E140A}), (Pixels{0x803C1400}));

    using Samples = std::vector<unsigned>;
    EXPECT_EQ(OnLumaAndChroma(Percent("0", "0", "-100"), {0, 1, 254, 255}, 9, 240),
              (Samples{0, 1, 254, 255, 127, 127}));
    EXPECT_EQ(OnLumaAndChroma(Percent("0", "0", "-25"), {0, 1, 254, 255}, 126, 140),
              (Samples{0, 1, 254, 255, 125, 146}));
}

TEST(BrightnessContrast, ColoursMoveFromTheMeanOfTheChangedTones) {
    // Tones 255, 235 and 225 give the mean 238; without the clamp of the first it would be 240.
    EXPECT_EQ(OnPixels(Percent("10", "0", "-75"), {0x00E8D2C8}), (std::vector<unsigned>{0x00F6ECE7}));
}

TEST(BrightnessContrast, ReportsClampedValues) {
    const EffectOwner effect = MakeEffect(name);
    const auto report = [&](const char* text) {
        effect->SetProperty("saturation", text);
        return std::string(effect->GetProperty("saturation", nullptr));
    };
    EXPECT_EQ(report("250"), "100");
    EXPECT_EQ(report("-100.5"), "-100");
    EXPECT_EQ(report("99.5x"), "99.5x");
    EXPECT_EQ(report("-inf"), "-100");
    EXPECT_EQ(report("nan"), "nan");
    // An integer property is none of the clamped ones, however large.
    effect->SetProperty("duration", "2147483647");
    EXPECT_EQ(effect->GetDuration(), 2147483647);
}

// The described formula, in the order and width of its description.
int Line(int tone, int slope, int shift) {
    return std::min(std::max(((slope * (tone - 127)) >> 8) + shift + 127, 0), 255);
}

TEST(BrightnessContrast, EveryInstructionSetFollowsTheFormulaForEverySetting) {
    TestFrame packed(30, 256, 3), planar(0, 256, 2);
    Grid pixels(3), luma{{}, {}};
    for (unsigned tone = 0; tone < 256; ++tone) {
        for (unsigned y = 0; y < 3; ++y) pixels[y].push_back(tone << 24 | (tone * 0x010101 ^ 0xFF << 8 * y));
        for (auto& row : luma) row.push_back(tone);
    }
    packed.SetSamples(0, pixels);
    planar.SetSamples(0, luma);
    for (InstructionSet set : allInstructionSets) {
        if (!IsUsable(set)) continue;
        for (int step = 0; step < 513 * 16; ++step) {
            const double contrast = (step % 513 - 256) / 2.56, brightness = (step * 37 % 511 - 255) / 2.55;
            const double saturation = step % 3 ? (step % 1025 - 512) / 5.12 : 0;
            const EffectOwner effect =
                MakeEffect(name, Percent(std::to_string(brightness).c_str(), std::to_string(contrast).c_str(),
                                         std::to_string(saturation).c_str()));
            dynamic_cast<CBasedVideoImageEffect&>(*effect).UseInstructionSet(set);
            const double b = std::stod(effect->GetProperty("brightness", nullptr));
            const double c = std::stod(effect->GetProperty("contrast", nullptr));
            const double s = std::stod(effect->GetProperty("saturation", nullptr));
            const int slope = int((c / 100 + 1) * 256), factor = int((s + 100) * 5.12);
            TestFrame actualPacked = packed, actualPlanar = planar;
            Apply(*effect, actualPacked);
            Apply(*effect, actualPlanar);

            Grid expected = pixels, expectedLuma = luma;
            for (auto& row : expected)
                for (unsigned& pixel : row) {
                    int tone[3], sum = 0;
                    for (int i = 0; i < 3; ++i) sum += tone[i] = Line(pixel >> 8 * i & 255, slope, int(b * 255 / 100));
                    for (int i = 0; i < 3; ++i) {
                        const int mean = sum / 3;
                        const int moved = s == 0 ? tone[i] : mean + ((tone[i] - mean) * factor >> 8);
                        pixel = (pixel & ~(0xFFu << 8 * i)) | unsigned(std::clamp(moved, 0, 255)) << 8 * i;
                    }
                }
            for (auto& row : expectedLuma)
                for (unsigned& sample : row) sample = unsigned(Line(int(sample), slope, int(1.27 * b)));
            ASSERT_EQ(actualPacked.Samples(), expected) << b << " " << c << " " << s;
            ASSERT_EQ(actualPlanar.Samples(), expectedLuma) << b << " " << c;
        }
    }
}

TEST(BrightnessContrast, NeedsMemoryForItsTable) {
    ForgetError();
    IVideoProc* effect = nullptr;
    {
        const FailingMemory none(0);
        effect = CreateEffect(nullptr, name);
    }
    EXPECT_EQ(effect, nullptr);
    EXPECT_EQ(LastError(),
              (Error{TarvoBased::errorNoMemory, "No enough memory", 243, "../dependency/TarvoBased/res_keeper"}));
}

}  // namespace
}  // namespace AVBased::Testing
