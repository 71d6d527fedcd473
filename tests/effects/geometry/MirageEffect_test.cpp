#include "tests/support/sweep.h"

namespace AVBased::Testing {
namespace {

TEST(Mirage, ZoomsThenBlendsEveryLumaPosition) {
    SweepFrames(693, [](const TestFrame& frame, std::mt19937& random) {
        const bool isInitial = random() % 8 == 0;
        const unsigned enlargement = isInitial ? 10 : unsigned(Between(0, random() % 4 ? 60 : 30000, random));
        const unsigned alpha = isInitial ? 10 : unsigned(Between(0, 102, random) - 1);
        const unsigned factor = enlargement + 200, zoom = (factor << 16) / 200, step = 0xC80000 / factor;
        const unsigned t = ((alpha + 40) << 7) / 100;
        const Picture from(frame);
        Picture to = from;
        const auto width = unsigned(from.Width()), height = unsigned(from.Height());
        const auto shown = [&](unsigned place, unsigned size) {
            return int(((((size * zoom >> 16) - size) * step >> 1) + place * step) >> 16);
        };
        for (unsigned y = 0; y < height && alpha <= 100; ++y)
            for (unsigned x = 0; x < width; ++x) to.Take(int(x), int(y), from, shown(x, width), shown(y, height));
        // Chroma that several positions share is blended for each.
        for (int y = 0; y < from.Height() && alpha <= 100; ++y)
            for (int x = 0; x < from.Width(); ++x)
                to.Set(x, y, [&](unsigned p) {
                    const unsigned own = unsigned(from.Near(p, x, y)), zoomed = unsigned(*to.At(p, x, y));
                    return int(p == 3 ? zoomed : (own * (256 - t) + zoomed * t) >> 8);
                });
        const Settings settings = Numbers("mirage_", {{"width", enlargement}, {"alpha", int(alpha)}});
        ExpectEffect("mirage", isInitial ? Settings{} : settings, frame, to);
    });
}

TEST(Mirage, LeavesTheFrameWithoutAFactor) {
    std::mt19937 random(1);
    TestFrame frame(7, 9, 3);
    frame.Randomise(random);
    ExpectEffect("mirage", Numbers("mirage_", {{"width", -200}}), frame, frame);
}

}  // namespace
}  // namespace AVBased::Testing
