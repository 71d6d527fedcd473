#include "effects/neighbourhood/BlurSharpenEffects.h"

#include <gtest/gtest.h>

#include "TarvoBased/error_codes.h"
#include "tests/support/failing_memory.h"
#include "tests/support/test_frames.h"

namespace AVBased::Testing {
namespace {

constexpr char blur[] = "simple_gauss_blur", sharpen[] = "simple_laplacian_sharpen";

// One pass over a grid of bytes, sample by sample; the neighbours of a column lie `step` columns away.
Grid OnePass(const Grid& source, bool sharpens, std::size_t step) {
    Grid result = source;
    if (source.size() <= 2 || source[0].size() <= 2 * step) return result;
    const std::size_t last = source.size() - 2;
    for (std::size_t y = 1; y <= last; ++y)
        for (std::size_t x = step; x + step < source[0].size(); ++x) {
            const auto at = [&](int dy, int dx) { return int(source[y + dy][x + dx * step]); };
            const int corners = at(-1, -1) + at(-1, 1) + at(1, -1) + at(1, 1);
            const int edges = at(-1, 0) + at(0, -1) + at(0, 1) + at(1, 0);
            result[y][x] = sharpens ? unsigned(std::clamp(9 * at(0, 0) - corners - edges, 0, 255))
                                    : unsigned((corners + 2 * edges + 4 * at(0, 0)) >> 4);
        }
    if (source.size() % 2 == 0)
        std::copy(result[last - 1].begin() + step, result[last - 1].end() - step, result[last].begin() + step);
    return result;
}

Grid Bytes(const Grid& words) {
    Grid bytes = words;
    for (auto& row : bytes) {
        std::vector<unsigned> split;
        for (unsigned word : row)
            for (int shift = 0; shift < 32; shift += 8) split.push_back(word >> shift & 255);
        row = split;
    }
    return bytes;
}

TEST(BlurAndSharpen, SpreadAndIsolateABrightSample) {
    const Grid dot{{0, 0, 0, 0, 0}, {0, 0, 0, 0, 0}, {0, 0, 255, 0, 0}, {0, 0, 0, 0, 0}, {0, 0, 0, 0, 0}};
    const Grid blurred{{0, 0, 0, 0, 0}, {0, 15, 31, 15, 0}, {0, 31, 63, 31, 0}, {0, 15, 31, 15, 0}, {0, 0, 0, 0, 0}};
    for (unsigned plane = 0; plane < 4; ++plane) {
        TestFrame frame(60, 5, 5);
        for (unsigned p = 0; p < 4; ++p) frame.Fill(p, 77);
        TestFrame untouched = frame;
        frame.SetSamples(plane, dot);
        untouched.SetSamples(plane, dot);
        Apply(*MakeEffect(sharpen), frame);
        EXPECT_EQ(frame, untouched);
        Apply(*MakeEffect(blur), frame);
        EXPECT_EQ(frame.Samples(plane), blurred) << plane;
    }
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

TEST(BlurAndSharpen, AgreeWithTheirDefinitionAtEverySize) {
    std::mt19937 random(20261121);
    for (InstructionSet set : allInstructionSets) {
        if (!IsUsable(set)) continue;
        for (unsigned width = 1; width <= 76; ++width)
            for (Content content : {Content::Random, Content::NearBlack, Content::NearWhite})
                for (const char* name : {blur, sharpen}) {
                    const bool isSharpen = name == sharpen;
                    const unsigned height = 1 + random() % 9, passes = random() % 4;
                    const EffectOwner effect =
                        MakeEffect(name, {{isSharpen ? "sharpen_count" : "blur_count", std::to_string(passes)}});
                    dynamic_cast<CBasedVideoImageEffect&>(*effect).UseInstructionSet(set);
                    TestFrame packed(30, width, height), planar(35, width, height, {{0, 4, 1, 9}, true});
                    packed.Randomise(random, content);
                    planar.Randomise(random, content);
                    Grid pixels = Bytes(packed.Samples());
                    for (unsigned pass = 0; pass < passes; ++pass) pixels = OnePass(pixels, isSharpen, 4);
                    std::vector<Grid> planes;
                    for (unsigned p = 0; p < 4; ++p) {
                        planes.push_back(planar.Samples(p));
                        for (unsigned pass = 0; pass < passes; ++pass) planes[p] = OnePass(planes[p], isSharpen, 1);
                    }
                    Apply(*effect, packed);
                    Apply(*effect, planar);
                    ASSERT_EQ(Bytes(packed.Samples()), pixels) << name << " " << width << "x" << height;
                    for (unsigned p = 0; p < 4; ++p)
                        ASSERT_EQ(planar.Samples(p), planes[p])
                            << name << " plane " << p << " of " << width << "x" << height;
                }
    }
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
