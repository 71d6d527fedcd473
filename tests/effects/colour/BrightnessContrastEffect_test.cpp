#include "TarvoBased/error_codes.h"
#include "tests/support/failing_memory.h"
#include "tests/support/sweep.h"

namespace AVBased::Testing {
namespace {

constexpr char name[] = "brightness_contrast";

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
    // An integer property is not clamped, however large.
    effect->SetProperty("duration", "2147483647");
    EXPECT_EQ(effect->GetDuration(), 2147483647);
}

int Clamped(int tone) { return std::clamp(tone, 0, 255); }

void Judge(Picture& picture, double brightness, double contrast, double saturation) {
    const int slope = int((contrast / 100 + 1) * 256), factor = int((saturation + 100) * 5.12);
    // Luma moves half as far as colours do.
    const int shift = int(picture.packed ? brightness * 255 / 100 : 1.27 * brightness);
    for (unsigned p = 0; p < (picture.packed ? 3 : 1); ++p)
        for (int& tone : picture.planes[p].samples) tone = Clamped((slope * (tone - 127) >> 8) + shift + 127);
    // Nothing happens to colours at 0 only: the factor that changes nothing belongs to -50.
    if (saturation == 0) return;
    const std::vector<Plane> in = picture.planes;
    for (unsigned p = picture.packed ? 0 : 1; p < 3; ++p)
        picture.planes[p] = in[p].Like([&](int x, int y) {
            const int mean = picture.packed ? (in[0](x, y) + in[1](x, y) + in[2](x, y)) / 3 : 127;
            return Clamped(mean + ((in[p](x, y) - mean) * factor >> 8));
        });
}

TEST(BrightnessContrast, FollowsTheFormulaForEverySetting) {
    SweepFrames(4000, [](const TestFrame& frame, std::mt19937& random) {
        static constexpr double marks[] = {-100, -50, 0, 0.01, 100};
        const auto percent = [&] { return random() % 4 ? RealBetween(-100, 100, random) : marks[random() % 5]; };
        const double brightness = percent(), contrast = percent(), saturation = random() % 3 ? percent() : 0;
        Picture picture(frame);
        Judge(picture, brightness, contrast, saturation);
        ExpectEffect(name,
                     Numbers("", {{"brightness", brightness}, {"contrast", contrast}, {"saturation", saturation}}),
                     frame, picture);
    });
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
