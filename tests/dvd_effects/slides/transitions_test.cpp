#include "dvd_effects/slides/transitions.h"

#include <gtest/gtest.h>

#include "dvd_effects/canvas/animation.h"
#include "dvd_effects/slides/rasters.h"
#include "tests/support/test_frames.h"

namespace AVBased::Testing {
namespace {

constexpr unsigned effectFormats[] = {0, 4, 6, 7, 12, 13, 30, 35, 60};
constexpr FrameSize sizes[] = {{1, 1}, {2, 3}, {5, 1}, {1, 7}, {17, 9}, {66, 45}};

// A random picture, opaque as all of a slideshow are.
TestFrame Picture(unsigned format, FrameSize size, unsigned seed) {
    TestFrame frame(format, size.width, size.height, {{3, 1, 2, 5}, size.width % 2 == 1});
    std::mt19937 random(seed);
    frame.Randomise(random);
    if (format == formatRgba32) {
        Grid opaque = frame.Samples();
        for (auto& row : opaque)
            for (unsigned& pixel : row) pixel |= alphaMask;
        frame.SetSamples(0, opaque);
    }
    return frame;
}

// What a slideshow does with a transition.
void Compose(const Transition& transition, TestFrame& frame, TestFrame& top, TestFrame& first, TestFrame& second,
             std::int64_t t, InstructionSet set) {
    const FrameSize size = SizeOf(frame);
    const FixedRegion whole = WholeRegion(size.width, size.height);
    DrawView(transition.firstOnTop ? top : frame, first, whole, transition.placeFirst(size, t), set);
    DrawView(transition.firstOnTop ? frame : top, second, whole, transition.placeSecond(size, t), set);
    transition.compose(frame, top, t, set);
}

std::vector<Grid> AllSamples(const TestFrame& frame, unsigned planes) {
    std::vector<Grid> grids;
    for (unsigned p = 0; p < planes; ++p) grids.push_back(frame.Samples(p));
    return grids;
}

TEST(Transitions, LeadFromOnePictureToTheOtherOnEveryLayoutAndTouchNothingElse) {
    for (const Transition& transition : Transitions())
        for (const unsigned format : effectFormats)
            for (const FrameSize size : sizes) {
                SCOPED_TRACE(testing::Message()
                             << transition.name << " format " << format << " " << size.width << "x" << size.height);
                TestFrame first = Picture(format, size, 1), second = Picture(format, size, 2);
                const unsigned planes = first.GetBufferCount();
                for (const std::int64_t t :
                     {std::int64_t(0), fixedOne / 7, fixedOne / 2, fixedOne * 9 / 10, fixedOne}) {
                    std::vector<Grid> ofBaseline;
                    for (const InstructionSet set : allInstructionSets) {
                        if (!IsUsable(set)) continue;
                        TestFrame frame = Picture(format, size, 3), top = Picture(format, size, 4);
                        const TestFrame before = frame;
                        Compose(transition, frame, top, first, second, t, set);
                        const std::vector<Grid> after = AllSamples(frame, planes);
                        if (t == 0 || t == fixedOne) {
                            ASSERT_EQ(after, AllSamples(t ? second : first, planes));
                        }
                        if (ofBaseline.empty()) ofBaseline = after;
                        ASSERT_EQ(after, ofBaseline) << "t " << t;
                        ASSERT_TRUE(frame.GuardsIntact() && top.GuardsIntact());
                        for (unsigned p = 0; p < planes; ++p) ASSERT_EQ(frame.Padding(p), before.Padding(p));
                    }
                }
            }
}

TEST(Transitions, OpenWhereTheirNamesSay) {
    const auto halfWay = [](const char* name, std::int64_t t) {
        TestFrame frame(30, 40, 40), top(30, 40, 40), first(30, 40, 40), second(30, 40, 40);
        first.SetSamples(0, Grid(40, std::vector<unsigned>(40, 0xFF000000)));
        second.SetSamples(0, Grid(40, std::vector<unsigned>(40, 0xFFFFFFFF)));
        Compose(*FindTransition(name), frame, top, first, second, t, InstructionSet::Baseline);
        return frame.Samples();
    };
    constexpr unsigned black = 0xFF000000, white = 0xFFFFFFFF;
    EXPECT_EQ(halfWay("crossfade", fixedOne / 5 + 1)[7][9], 0xFF333333);
    EXPECT_EQ(halfWay("cut", fixedOne / 2 - 1)[0][0], black);
    EXPECT_EQ(halfWay("cut", fixedOne / 2)[0][0], white);
    const Grid push = halfWay("push", fixedOne / 2), wipe = halfWay("wipe", fixedOne / 2),
               iris = halfWay("iris", fixedOne / 2), zoom = halfWay("zoom", fixedOne / 2),
               blinds = halfWay("blinds", fixedOne / 2), page = halfWay("pageturn", fixedOne / 2);
    EXPECT_EQ(push[3][19], black);
    EXPECT_EQ(push[3][20], white);
    EXPECT_EQ(wipe[3][16], white);
    EXPECT_EQ(wipe[3][24], black);
    EXPECT_EQ(iris[20][20], white);
    EXPECT_EQ(iris[0][0], black);
    EXPECT_EQ(iris[0], iris[39]);
    EXPECT_EQ(zoom[20][20], white);
    EXPECT_EQ(zoom[20][0], black);
    EXPECT_EQ(blinds[0], std::vector<unsigned>(40, white));
    EXPECT_EQ(blinds[39], std::vector<unsigned>(40, black));
    EXPECT_EQ(page[0][0], black);
    EXPECT_EQ(page[39][39], white);
    // The back is pale, also that of a black page.
    EXPECT_GT(page[2][15] & 255, 150u);
    EXPECT_LT(page[2][15] & 255, 220u);
}

TEST(PictureView, MovesInPartsOfPixels) {
    TestFrame picture(30, 4, 1), frame(30, 3, 1);
    picture.SetSamples(0, {{0xFF000000, 0xFF404040, 0xFF80FF00, 0xFF000000}});
    DrawView(frame, picture, {{fixedOne / 4, 3 * fixedOne}, {0, fixedOne}}, WholeRegion(3, 1),
             InstructionSet::Baseline);
    EXPECT_EQ(frame.Samples(), (Grid{{0xFF101010, 0xFF507030, 0xFF60BF00}}));
    DrawView(frame, picture, {{fixedOne, 3 * fixedOne}, {0, fixedOne}}, WholeRegion(3, 1), InstructionSet::Baseline);
    EXPECT_EQ(frame.Samples(), (Grid{{0xFF404040, 0xFF80FF00, 0xFF000000}}));
}

}  // namespace
}  // namespace AVBased::Testing
