#include <gtest/gtest.h>

#include "dvd_effects/menu/host_sources.h"
#include "dvd_effects/menu/menu_frames.h"
#include "tests/support/failing_memory.h"
#include "tests/support/fake_manager.h"
#include "tests/support/test_frames.h"

namespace AVBased::Testing {
namespace {

class Helpers : public testing::Test {
 protected:
    Helpers() {
        ForgetError();
        manager.files["a"] = FakeManager::Plain(4, 2, 0xFF00FF00);
    }
    ~Helpers() override { EXPECT_EQ(manager.openSources, 0); }
    // The message of a call that must fail.
    static std::string MessageOf(int result) {
        EXPECT_EQ(result, 0);
        EXPECT_EQ(LastError().code, 10021008);
        EXPECT_EQ(LastError().source, "dvd_effects_utils");
        const std::string message = LastError().message;
        ForgetError();
        return message;
    }
    ConverterOwner Converter(unsigned from, unsigned to, unsigned width, unsigned height) {
        return ConverterOwner(CreateImageConverter(from, width, height, to, width, height));
    }

    FakeManager manager;
    IAVSource** sources = nullptr;
    IAVSourcePropertySet** sets = nullptr;
    IAVSource* source = nullptr;
    ISimpleHTMLRender* render = nullptr;
    IImageConverter* converter = nullptr;
    int width = 0, height = 0;
};

TEST_F(Helpers, OpenEverySourceOrNone) {
    ASSERT_EQ(CreateAVSources(&manager, sources, sets, "a;a", "false;true"), 1);
    EXPECT_EQ(manager.lastImporter, "ImageImporter");
    EXPECT_EQ(manager.openSources, 2);
    EXPECT_EQ(sets[0], nullptr);
    EXPECT_NE(sets[1], nullptr);
    for (int i = 0; i < 2; ++i) sources[i]->Free();
    delete[] sources;
    delete[] sets;
    EXPECT_EQ(MessageOf(CreateAVSources(nullptr, sources, sets, "", "")), "Null Pointer");
    EXPECT_EQ(MessageOf(CreateAVSources(&manager, sources, sets, "a;a", "true")), "Param Error");
    EXPECT_EQ(MessageOf(CreateAVSources(&manager, sources, sets, "a;missing", "true;true")), "Param Error");
    for (int memory = 0; memory < 2; ++memory) {
        const FailingMemory failing(memory);
        EXPECT_EQ(MessageOf(CreateAVSources(&manager, sources, sets, "a", "true")), "Create Pointer Failed");
    }
    EXPECT_EQ(MessageOf(InitAVPropSet(sets, -1)), "Create Pointer Failed");
    EXPECT_EQ(sources, nullptr);
    EXPECT_EQ(MessageOf(CreateTextRender(nullptr, source, render, {})), "Null Pointer");
    manager.FailFrom(0, FakeManager::Fault::Null);
    EXPECT_EQ(MessageOf(CreateTextRender(&manager, source, render, {})), "Null Pointer");
}

TEST_F(Helpers, WorkingFrameTakesASizeOrReportsThatItCannot) {
    CRawVideoFrame frame(false, 0, 2, 2, true);
    EXPECT_EQ(CreateCRawVideoFrame(&frame, 5, 3), 1);
    EXPECT_EQ(SizeOf(frame), (FrameSize{5, 3}));
    EXPECT_EQ(MessageOf(CreateCRawVideoFrame(&frame, -1, 3)), "Malloc Failed");
    EXPECT_EQ(MessageOf(CreateCRawVideoFrame(&frame, 2000000000, 2000000000)), "Malloc Failed");
    EXPECT_EQ(MessageOf(CreateCRawVideoFrame(nullptr, 1, 1)), "Null Pointer");
}

TEST_F(Helpers, RecolourGlyphsAndTheirNeighbours) {
    TestFrame text(30, 5, 2), planar(0, 2, 2);
    text.SetSamples(0, {{0, 0, 0, 0, 0}, {0xFF010101, 0x40020202, 0x40030303, 0, 0}});
    EXPECT_EQ(ChangeTextFrame(&text, 0xAA, 0xBB, 0xCC), 1);
    EXPECT_EQ(text.Samples(), (Grid{{0xAABBCC, 0xAABBCC, 0, 0, 0}, {0xFFAABBCC, 0x40AABBCC, 0x40030303, 0, 0}}));
    EXPECT_EQ(MessageOf(ChangeTextFrame(nullptr, 0, 0, 0)), "Null Pointer");
    EXPECT_EQ(MessageOf(ChangeTextFrame(&planar, 0, 0, 0)), "Get Text Frame Buffer Failed");
    const FailingMemory failing(0);
    EXPECT_EQ(MessageOf(ChangeTextFrame(&text, 0, 0, 0)), "Malloc Failed");
}

TEST_F(Helpers, DrawATextAtItsBox) {
    TestFrame frame(30, 6, 2), text(30, 2, 1);
    frame.Fill(0, 0);
    text.SetSamples(0, {{0xFF0000FF, 0x000000FF}});
    text_t item;
    item.boxPosition = {3, 1};
    const ConverterOwner same = Converter(30, 30, 2, 1), other = Converter(30, 30, 3, 1);
    EXPECT_EQ(DrawText(&frame, &text, item, 0.5, same.get()), 1);
    EXPECT_EQ(frame.Samples()[1], (std::vector<unsigned>{0, 0, 0, 0x800000FF, 0, 0}));
    EXPECT_EQ(MessageOf(DrawText(&frame, &text, item, 1, other.get())), "Converter Frame Failed");
    EXPECT_EQ(MessageOf(DrawText(&frame, &text, item, 1, nullptr)), "Null Pointer");
    EXPECT_EQ(FitText({100, 20}, {50, 0}), (FrameSize{50, 10}));
    EXPECT_EQ(FitText({100, 20}, {500, -3}), (FrameSize{100, 20}));
}

TEST(FitInto, LeavesNoLineWhereLessThanAPixelIsMissing) {
    EXPECT_EQ(FitInto({1280, 720}, {641, 361}), (FrameSize{641, 361}));
    EXPECT_EQ(FitInto({1280, 720}, {854, 480}), (FrameSize{854, 480}));
    EXPECT_EQ(FitInto({1280, 720}, {640, 362}), (FrameSize{640, 360}));
    EXPECT_EQ(FitInto({900, 1}, {3, 3}), (FrameSize{3, 1}));
}

TEST_F(Helpers, AddBlackAroundAPicture) {
    TestFrame picture(30, 4, 2);
    picture.Fill(0, 255);
    CRawVideoFrame frame(false, 30, 1, 1, true), planar(false, 0, 1, 1, true);
    ASSERT_EQ(AddBlack(&picture, 4, 4, converter, width, height, &frame, 1), 1);
    EXPECT_EQ(converter, nullptr);  // it fits as it is
    EXPECT_EQ(width * 10 + height, 42);
    EXPECT_EQ(LoadWord(ViewPacked(frame).Row(0)), 0u);
    EXPECT_EQ(LoadWord(ViewPacked(frame).Row(1)), 0xFFFFFFFFu);
    ASSERT_EQ(AddBlack(&picture, 8, 6, converter, width, height, &planar, 0), 1);
    const ConverterOwner owner(converter);
    EXPECT_EQ(width * 10 + height, 84);
    TestFrame upright(30, 16, 21);
    IImageConverter* own = nullptr;
    ASSERT_EQ(AddBlack(&upright, 56, 40, own, width, height, &frame, 0), 1);
    const ConverterOwner ownOwner(own);
    EXPECT_EQ(width * 100 + height, 3040);  // and not 31 wide, which were too much
    EXPECT_EQ(planar.GetBuffer(0)[0], 235);
    EXPECT_EQ(planar.GetBuffer(0)[64 * 5], 16);
    EXPECT_EQ(planar.GetBuffer(1)[64 * 2], 128);
    EXPECT_EQ(MessageOf(AddBlack(&picture, 9, 6, converter, width, height, &planar, 0)), "Converter Frame Failed");
    picture.refuseClone = true;
    EXPECT_EQ(MessageOf(AddBlack(&picture, 4, 4, converter, width, height, &frame, 1)), "Clone Frame Failed");
    converter = nullptr;
    EXPECT_EQ(MessageOf(AddBlack(&picture, 0, 4, converter, width, height, &frame, 1)),
              "Create Image Converter Failed");
    EXPECT_EQ(MessageOf(AddBlack(nullptr, 4, 4, converter, width, height, &frame, 1)), "Null Pointer");
}

}  // namespace
}  // namespace AVBased::Testing
