#include "effects/base/CBasedVideoEffect.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

#include "TarvoBased/CBaseException.h"
#include "TarvoBased/error_codes.h"
#include "tests/support/test_frames.h"

namespace AVBased::Testing {
namespace {

// Writes the position into the first byte, or throws.
class Probe : public CBasedVideoImageEffect {
 public:
    enum class Throw { Nothing, OwnException, StandardException, Number } what = Throw::Nothing;
    int calls = 0;

    Probe() : CBasedVideoImageEffect("probe") {}
    void InnerProcFrame(ImagePostion*, int position, IRawVideoFrame* frame) override {
        ++calls;
        switch (what) {
            case Throw::OwnException:
                throw TarvoBased::CBaseException(10021008, "Unexpected error", 7, "Probe");
            case Throw::StandardException:
                throw std::runtime_error("thrown by the library");
            case Throw::Number:
                throw 42;
            default:
                frame->GetBuffer(0, nullptr, nullptr, nullptr)[0] = static_cast<unsigned char>(position);
        }
    }
};

class VideoEffect : public testing::Test {
 protected:
    VideoEffect() { ForgetError(); }
    Probe probe;
    ImagePostion record;
    TestFrame frame{30, 2, 2};
};

TEST_F(VideoEffect, EachCopyReplacesTheOneBefore) {
    const int alive = TestFrame::alive;
    auto* first = static_cast<TestFrame*>(probe.ProcFrame(&record, 1, &frame));
    EXPECT_NE(first, &frame);
    EXPECT_EQ(first->Samples()[0][0], (frame.Samples()[0][0] & ~0xFFu) + 1);
    EXPECT_EQ(TestFrame::alive, alive + 1);
    auto* second = static_cast<TestFrame*>(probe.ProcFrame(&record, 2, &frame));
    EXPECT_EQ(second->Samples()[0][0] & 0xFF, 2u);
    EXPECT_EQ(TestFrame::alive, alive + 1);
}

TEST_F(VideoEffect, TakesItsOwnLastOutputAsTheNextFrame) {
    const int alive = TestFrame::alive;
    const unsigned rest = frame.Samples()[1][1];
    IRawVideoFrame* output = probe.ProcFrame(&record, 1, &frame);
    for (int i = 2; i < 5; ++i) output = probe.ProcFrame(&record, i, output);
    const Grid samples = static_cast<TestFrame*>(output)->Samples();
    EXPECT_EQ(samples[0][0] & 0xFF, 4u);
    EXPECT_EQ(samples[1][1], rest);
    EXPECT_EQ(TestFrame::alive, alive + 1);
}

TEST_F(VideoEffect, AFrameThatCannotBeClonedIsNotProcessed) {
    frame.refuseClone = true;
    EXPECT_EQ(probe.ProcFrame(&record, 1, &frame), nullptr);
    EXPECT_EQ(LastError().code, TarvoBased::noError);
    TarvoBased::GetTarvoException()->SetException(10021007, "No enough memory", 3, "host");
    EXPECT_EQ(probe.ProcFrame(&record, 1, &frame), nullptr);
    EXPECT_EQ(LastError(), (Error{10021007, "No enough memory", 3, "host"}));
    EXPECT_EQ(probe.calls, 0);
}

TEST_F(VideoEffect, WhatAnEffectThrowsIsFiledWithTheCallsLine) {
    struct Case {
        Probe::Throw what;
        Error copying, inPlace;
    };
    const Case cases[] = {
        {Probe::Throw::OwnException,
         {10021008, "Unexpected error", 7, "Probe"},
         {10021008, "Unexpected error", 7, "Probe"}},
        {Probe::Throw::StandardException,
         {10021015, "thrown by the library", 111, "CBasedVideoEffect"},
         {10021015, "thrown by the library", 121, "CBasedVideoEffect"}},
        {Probe::Throw::Number,
         {10021008, "Unknown exception", 111, "CBasedVideoEffect"},
         {10021008, "Unknown exception", 121, "CBasedVideoEffect"}},
    };
    for (const Case& c : cases) {
        probe.what = c.what;
        EXPECT_EQ(probe.ProcFrame(&record, 0, &frame), nullptr);
        EXPECT_EQ(LastError(), c.copying);
        probe.ProcFrameInPlace(&record, 0, &frame);
        EXPECT_EQ(LastError(), c.inPlace);
    }
}

TEST_F(VideoEffect, DurationFollowsItsProperty) {
    int type = -1;
    EXPECT_STREQ(probe.CBasedVideoEffect::GetProperty("duration", &type), "1");
    EXPECT_EQ(type, 3);
    EXPECT_TRUE(probe.CBasedVideoEffect::SetProperty("duration", " 25 frames"));
    EXPECT_EQ(probe.GetDuration(), 25);
    EXPECT_TRUE(probe.CBasedVideoEffect::SetProperty("duration", "abc"));
    EXPECT_EQ(probe.GetDuration(), 25);
    EXPECT_STREQ(probe.CBasedVideoEffect::GetProperty("duration", nullptr), "abc");
}

TEST_F(VideoEffect, BothBasesReturnTheSame) {
    IVideoProc& video = probe;
    CBaseAVProc& base = probe;
    EXPECT_EQ(base.GetInterface("IVideoProc"), &video);
    EXPECT_STREQ(video.GetName(), base.GetName());
    video.SetProperty("duration", "9");
    EXPECT_STREQ(base.GetProperty("duration", nullptr), "9");
}

TEST(VideoEffectBases, HaveTheirSubtypes) {
    struct Motion : CBasedVideoMotionXYEffect {
        using CBasedVideoMotionXYEffect::CBasedVideoMotionXYEffect;
        int position = 0;
        void InnerProcFrame(ImagePostion*, int at, IRawVideoFrame*) override { position = at; }
    } motion("motion");
    CBasedVideoMotionSizingEffect sizing("sizing");
    CBasedVideoBlender blender("blender");
    EXPECT_EQ(motion.CBaseAVProc::GetSubType(), 1u);
    EXPECT_EQ(sizing.CBaseAVProc::GetSubType(), 4u);
    EXPECT_EQ(blender.CBaseAVProc::GetSubType(), 8u);

    ImagePostion record;
    TestFrame frame(30, 1, 1);
    motion.ProcFrameInPlace(&record, 12, &frame);
    EXPECT_EQ(motion.position, 12);
    EXPECT_EQ(sizing.ProcFrame(&record, 0, &frame), nullptr);
    ForgetError();
    motion.ProcFrameInPlace(nullptr, 0, &frame);
    EXPECT_EQ(LastError().code, TarvoBased::errorBadPointer);
}

TEST(Factory, UnknownAndNullNamesAreFiled) {
    for (const char* name : {"Gray", "gray ", "", "gra"}) {
        ForgetError();
        EXPECT_EQ(CreateEffect(nullptr, name), nullptr);
        EXPECT_EQ(LastError(), (Error{10021005, "Effect with the name does not exist", 183, "ImageEffects"}));
    }
    EXPECT_EQ(CreateEffect(nullptr, nullptr), nullptr);
    EXPECT_EQ(LastError(), (Error{10021003, "Bad pointer", 53, "ImageEffects"}));
}

}  // namespace
}  // namespace AVBased::Testing
