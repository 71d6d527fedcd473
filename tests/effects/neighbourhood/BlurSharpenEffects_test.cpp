#include "effects/neighbourhood/BlurSharpenEffects.h"

#include "TarvoBased/error_codes.h"
#include "tests/support/failing_memory.h"
#include "tests/support/sweep.h"

namespace AVBased::Testing {
namespace {

constexpr char blur[] = "simple_gauss_blur", sharpen[] = "simple_laplacian_sharpen";

Plane OnePass(const Plane& in, bool sharpens) {
    if (in.width < 3 || in.height < 3) return in;
    Plane out = in.Like([&](int x, int y) {
        if (x == 0 || y == 0 || x + 1 == in.width || y + 1 == in.height) return in(x, y);
        const int corners = in(x - 1, y - 1) + in(x + 1, y - 1) + in(x - 1, y + 1) + in(x + 1, y + 1);
        const int edges = in(x, y - 1) + in(x - 1, y) + in(x + 1, y) + in(x, y + 1);
        return sharpens ? std::clamp(9 * in(x, y) - corners - edges, 0, 255)
                        : (corners + 2 * edges + 4 * in(x, y)) / 16;
    });
    // An even height loses its last row but one, which repeats the row above.
    const int last = in.height - 2;
    for (int x = 1; last % 2 == 0 && x + 1 < in.width; ++x) out(x, last) = out(x, last - 1);
    return out;
}

TEST(BlurAndSharpen, FilterEveryPlaneAndAlphaToo) {
    SweepFrames(693, [](const TestFrame& frame, std::mt19937& random) {
        const bool sharpens = random() % 2;
        const int passes = Between(0, 3, random);
        Picture picture(frame);
        for (Plane& plane : picture.planes)
            for (int i = 0; i < passes; ++i) plane = OnePass(plane, sharpens);
        ExpectEffect(sharpens ? sharpen : blur, Numbers(sharpens ? "sharpen_" : "blur_", {{"count", passes}}), frame,
                     picture);
    });
}

TEST(BlurAndSharpen, RepeatARowOfEvenHeights) {
    TestFrame frame(8, 3, 6, {{2, 0, 0, 0}});
    frame.SetSamples(0, {{10, 20, 30}, {40, 50, 60}, {70, 80, 90}, {0, 200, 0}, {5, 6, 7}, {1, 2, 3}});
    unsigned width = 0, pitch = 0, rows = 0;
    unsigned char* data = frame.GetBuffer(0, &width, &pitch, &rows);
    laplacian_sharpen_component_c(data, width, pitch, rows);
    EXPECT_EQ(frame.Samples(), (Grid{{10, 20, 30}, {40, 50, 60}, {70, 210, 90}, {0, 255, 0}, {5, 255, 7}, {1, 2, 3}}));
    gauss_blur_component_c(data, width, pitch, rows);
    EXPECT_EQ(frame.Samples(), (Grid{{10, 20, 30}, {40, 66, 60}, {70, 116, 90}, {0, 132, 0}, {5, 132, 7}, {1, 2, 3}}));
}

TEST(BlurAndSharpen, KeepWhatIsDoneWhenMemoryEnds) {
    TestFrame frame(60, 3, 3);
    for (unsigned p = 0; p < 4; ++p) frame.SetSamples(p, {{0, 0, 0}, {0, 160, 0}, {0, 0, 0}});
    const EffectOwner effect = MakeEffect(blur, {{"blur_count", "2"}});
    ForgetError();
    {
        const FailingMemory afterAPassAndAPlane(5);
        Apply(*effect, frame);
    }
    EXPECT_EQ(LastError(),
              (Error{TarvoBased::errorNoMemory, "No enough memory", 194, "../dependency/TarvoBased/res_keeper"}));
    EXPECT_EQ(frame.Samples(0)[1][1], 10u);
    for (unsigned p = 1; p < 4; ++p) EXPECT_EQ(frame.Samples(p)[1][1], 40u) << p;
}

}  // namespace
}  // namespace AVBased::Testing
