#include <gtest/gtest.h>

#include "dvd_effects/canvas/animation.h"
#include "dvd_effects/generator_table.h"
#include "dvd_effects/slides/slide_timeline.h"
#include "tests/support/failing_host.h"
#include "tests/support/test_frames.h"

namespace AVBased::Testing {
namespace {

constexpr std::uint32_t red = 0xFFFF0000, green = 0xFF00FF00, blue = 0xFF0000FF, black = 0xFF000000;

class Slides : public testing::Test {
 protected:
    Slides() {
        ForgetError();
        manager.files["red"] = FakeManager::Plain(16, 8, red);
        manager.files["green"] = FakeManager::Plain(16, 8, green);
        manager.files["blue"] = FakeManager::Plain(4, 4, blue);
        manager.files["empty"] = FakeManager::Plain(0, 0, 0);
        FakeFile noise = FakeManager::Plain(31, 23, 0);
        noise.draw = [](CRawVideoFrame& frame, unsigned) {
            const PackedView view = ViewPacked(frame);
            for (unsigned y = 0; y < view.height; ++y)
                for (unsigned x = 0; x < view.width; ++x)
                    StoreWord(view.Row(y) + x, black | (x * y * 7919 + x) % 0xFFFFFF);
        };
        manager.files["noise"] = noise;
    }
    ~Slides() override { EXPECT_EQ(manager.openSources, 0) << "not released"; }

    EffectOwner Make(const Settings& settings, FakeManager* host) const {
        EffectOwner slides(CreateEffect(host, "slide", GeneratorTable()));
        if (!slides) throw std::runtime_error("no slides");
        for (const auto& [name, value] : settings)
            if (!slides->SetProperty(name.c_str(), value.c_str())) throw std::runtime_error(name + " refuses " + value);
        return slides;
    }
    EffectOwner Make(const Settings& settings) { return Make(settings, &manager); }
    static TestFrame Next(IVideoProc& slides, unsigned format = 30, unsigned width = 16, unsigned height = 8) {
        TestFrame frame(format, width, height);
        std::mt19937 random(5);
        frame.Randomise(random);
        Apply(slides, frame);
        EXPECT_TRUE(frame.GuardsIntact());
        return frame;
    }

    FakeManager manager;
};

TEST(SlideTimeline, SharesTheFramesBetweenThePictures) {
    const SlideTimeline timeline{3, 4, 3, false}, loop{3, 4, 3, true};
    EXPECT_FALSE(timeline.At(3).second);
    EXPECT_EQ(timeline.At(3).first.share, FixedShare(6, 10));
    EXPECT_EQ(timeline.At(4).second->index, 1u);
    EXPECT_EQ(timeline.At(4).second->share, 0);
    EXPECT_EQ(timeline.At(4).t, FixedEased(fixedOne / 4));
    EXPECT_EQ(timeline.At(6).t, FixedEased(fixedOne * 3 / 4));
    EXPECT_EQ(timeline.At(7).first.index, 1u);
    EXPECT_EQ(timeline.At(7).first.share, FixedShare(3, 10));
    EXPECT_FALSE(timeline.At(18).second);
    EXPECT_EQ(timeline.At(~0ull).first.index, 2u);
    EXPECT_EQ(timeline.At(~0ull).first.share, fixedOne);
    EXPECT_EQ(loop.At(18).second->index, 0u);
    EXPECT_EQ(loop.At(21 * 1000 + 5).t, loop.At(5).t);
    // The first picture alone for 0 frames, the second one for 2.
    const SlideTimeline own{3, 4, 3, false, {0, 2}}, ownLoop{3, 4, 3, true, {0, 2}};
    EXPECT_EQ(own.At(0).second->index, 1u);
    EXPECT_EQ(own.At(0).second->frame, 0u);
    EXPECT_EQ(own.At(0).first.frame, 0u) << "nothing leads to the first one";
    EXPECT_FALSE(own.At(4).second);
    EXPECT_EQ(own.At(4).first.frame, 4u);
    EXPECT_EQ(own.At(4).first.share, FixedShare(4, 8));
    EXPECT_EQ(own.At(5).second->index, 2u);
    EXPECT_EQ(own.At(100).first.frame, 95u);
    EXPECT_EQ(ownLoop.At(15).first.index, 0u);
    EXPECT_EQ(ownLoop.At(15 * 1000 + 9).first.index, ownLoop.At(9).first.index);
    const SlideTimeline huge{1000, 0x7FFFFFFF, 0x7FFFFFFF, true};
    EXPECT_EQ(huge.At(0xFFFFFFFF).first.index, 1u);
}

TEST_F(Slides, PlaysFilmsAFrameForEachOfTheShow) {
    manager.files["film"] = FakeManager::Plain(16, 8, 0);
    manager.files["film"].isStill = false;
    manager.files["film"].draw = [](CRawVideoFrame& frame, unsigned n) { FakeManager::Paint(frame, black | n); };
    const EffectOwner slides = Make({{"paths", "film;red;film"},
                                     {"films", "true;;true"},
                                     {"motion", "zoomin"},
                                     {"slideDuration", "2"},
                                     {"slideDurations", "5;;6"},
                                     {"transitionDuration", "1"},
                                     {"transitions", "cut"}});
    std::vector<unsigned> shown;
    for (int i = 0; i < 12; ++i) shown.push_back(Next(*slides).Samples()[3][5]);
    EXPECT_EQ(shown, (std::vector<unsigned>{black, black | 1, black | 2, black | 3, black | 4, red, red, red, black,
                                            black | 1, black | 2, black | 3}));
    EXPECT_EQ(manager.openSources, 1) << "only the film that shows";
    EXPECT_EQ(LastError().code, 0);
}

TEST_F(Slides, SeekEqualsRunning) {
    manager.files["noise film"] = manager.files["noise"];
    manager.files["noise film"].isStill = false;
    manager.files["noise film"].draw = [](CRawVideoFrame& frame, unsigned n) {
        FakeManager::Paint(frame, n * 0x050301);
    };
    const Settings settings = {{"paths", "noise;red;noise film;noise;green"},
                               {"films", "false;false;true"},
                               {"slideDurations", ";2;4"},
                               {"slideDuration", "3"},
                               {"transitionDuration", "4"},
                               {"transitions", "random;zoom;pageturn;cut"},
                               {"motion", "random;zoomin;none;panleft"},
                               {"motionAmount", "40"},
                               {"fit", "blur"},
                               {"loop", "1"},
                               {"seed", "3"}};
    for (const unsigned format : {0u, 30u, 60u}) {
        const EffectOwner running = Make(settings), jumping = Make(settings);
        std::vector<TestFrame> frames;
        for (int i = 0; i < 80; ++i) frames.push_back(Next(*running, format, 21, 15));
        for (unsigned i = 0; i < 80; ++i) {
            const unsigned position = i * 37 % 80;
            EXPECT_TRUE(jumping->Seek(position));
            ASSERT_EQ(Next(*jumping, format, 21, 15), frames[position]) << position;
        }
        EXPECT_EQ(frames[0], frames[70 - 35]) << "the loop's period";
    }
    EXPECT_EQ(LastError().code, 0);
}

TEST_F(Slides, HoldsAsManyPicturesForAThousandAsForThree) {
    std::string paths = "red";
    for (int i = 1; i < 1000; ++i) paths += i % 2 ? ";green" : ";red";
    const EffectOwner slides =
        Make({{"paths", paths}, {"slideDuration", "1"}, {"transitionDuration", "2"}, {"transitions", "push"}});
    int most = 0;
    manager.files["red"].draw = [&](CRawVideoFrame& frame, unsigned) {
        FakeManager::Paint(frame, red);
        most = std::max(most, manager.openSources);
    };
    for (int i = 0; i < 3000; ++i) {
        Next(*slides);
        ASSERT_EQ(manager.openSources, 0);
        // Every picture is read once, when its transition begins.
        ASSERT_EQ(manager.framesRead, std::min(1 + (i + 2) / 3, 1000)) << i;
    }
    EXPECT_EQ(most, 1);
    EXPECT_EQ(Next(*slides).Samples()[0][0], green);
}

TEST_F(Slides, FitsPicturesOfAnotherShape) {
    const Settings square = {{"paths", "blue"}};
    const Grid padded = Next(*Make(square)).Samples();
    EXPECT_EQ(padded[4], (std::vector<unsigned>{black, black, black, black, blue, blue, blue, blue, blue, blue, blue,
                                                blue, black, black, black, black}));
    const auto with = [&](const char* fit) { return Make({{"paths", "blue"}, {"fit", fit}}); };
    EXPECT_EQ(Next(*with("crop")).Samples(), Grid(8, std::vector<unsigned>(16, blue)));
    const Grid blurred = Next(*with("blur")).Samples();
    EXPECT_EQ(blurred[4][4], blue);
    EXPECT_NEAR(double(blurred[0][0] & 255), 145, 1);
    EXPECT_EQ(blurred[7][15], blurred[0][0]);
    // Extreme shapes, and a format that is not the host's usual one.
    manager.files["long"] = FakeManager::Plain(3000, 1, green);
    manager.files["planar"] = {0, 9, 40, [](CRawVideoFrame&, unsigned) {}};
    for (const char* fit : {"pad", "crop", "blur"})
        for (const char* path : {"long", "planar"})
            Next(*Make({{"paths", path}, {"fit", fit}, {"motion", "zoomin"}}), 4, 31, 17);
    EXPECT_EQ(LastError().code, 0);
}

TEST_F(Slides, ShowsBlackForWhatFailsAndKeepsTheOthersTime) {
    const EffectOwner slides =
        Make({{"paths", "red;missing;empty;green"}, {"slideDuration", "2"}, {"transitionDuration", "0"}});
    const unsigned expected[] = {red, red, black, black, black, black, green, green, green};
    for (unsigned i = 0; i < 9; ++i) {
        ForgetError();
        EXPECT_EQ(Next(*slides).Samples()[3][5], expected[i]) << i;
        EXPECT_EQ(LastError().code != 0, i == 2 || i == 4) << i;
        EXPECT_EQ(LastError().message == "missing", i == 2) << i;
    }
    ForgetError();
    EXPECT_EQ(Next(*Make({})).Samples(), Grid(8, std::vector<unsigned>(16, black)));
    EXPECT_EQ(LastError().code, 0);
    EXPECT_EQ(Next(*Make({{"paths", "red"}}, nullptr)).Samples()[0][0], black);
    EXPECT_EQ(LastError().message, "Null Pointer");
    TestFrame unknown(30, 4, 4, {}, 99);
    const TestFrame before = unknown;
    Apply(*slides, unknown);
    EXPECT_EQ(unknown, before);
}

TEST_F(Slides, RefusesUnknownWordsAndTakesAnyNumber) {
    const EffectOwner slides = Make({{"paths", "red;green"}});
    for (const auto& [name, value] :
         Settings{{"transitions", "wipe;Push"}, {"transitions", ""}, {"motion", "spin"}, {"fit", ""}}) {
        ForgetError();
        EXPECT_FALSE(slides->SetProperty(name.c_str(), value.c_str())) << name;
        EXPECT_EQ(LastError().message, "Invalid Param Value");
    }
    ForgetError();
    for (const char* number : {"-2147483648", "2147483647", "0"})
        for (const char* motion : {"none", "random"}) {
            for (const char* name : {"slideDuration", "transitionDuration", "motionAmount", "loop", "seed"})
                ASSERT_TRUE(slides->SetProperty(name, number));
            ASSERT_TRUE(slides->SetProperty("motion", motion));
            for (const unsigned position : {0u, 1u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
                slides->Seek(position);
                const unsigned first = Next(*slides).Samples()[2][3];
                EXPECT_TRUE(first == red || first == green) << std::hex << first;
                Next(*slides);
            }
        }
    EXPECT_EQ(LastError().code, 0);
}

TEST_F(Slides, LivesWithAHostThatFailsAtEveryStep) {
    UseFailingHosts(manager.files, [this](FakeManager& host) {
        const EffectOwner slides = Make({{"paths", "red;noise;blue"},
                                         {"slideDuration", "1"},
                                         {"transitionDuration", "1"},
                                         {"fit", "blur"},
                                         {"motion", "zoomin"}},
                                        &host);
        for (int i = 0; i < 6; ++i) Next(*slides);
        EXPECT_EQ(host.openSources, 0);
    });
}

}  // namespace
}  // namespace AVBased::Testing
