#include "avbase/avbase_srcutils/avbase_crawvideoframe.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

#include "TarvoBased/CBaseException.h"
#include "tests/support/test_frames.h"

namespace AVBased::Testing {
namespace {

struct Plane {
    unsigned rowBytes, rows, grouping, verticalSubsampling;
    bool operator==(const Plane&) const = default;
};

std::vector<Plane> Planes(unsigned format, unsigned width, unsigned height, bool& packed, unsigned& count) {
    std::vector<unsigned> rows, rowBytes, grouping, vertical;
    GetImageParameters(format, width, height, packed, count, rows, rowBytes, grouping, vertical);
    std::vector<Plane> planes;
    for (std::size_t i = 0; i < rows.size(); ++i) planes.push_back({rowBytes[i], rows[i], grouping[i], vertical[i]});
    return planes;
}

TEST(ImageParameters, FollowEachFormatAtAnOddSize) {
    constexpr unsigned one = 0x10001, two = 0x20001, four = 0x40001;
    struct Case {
        std::vector<unsigned> codes;
        bool packed;
        unsigned count;
        std::vector<Plane> planes;
    };
    const Case cases[] = {
        {{0, 12}, false, 3, {{13, 7, one, 1}, {6, 3, two, 2}, {6, 3, two, 2}}},
        {{4, 13}, false, 3, {{13, 7, one, 1}, {6, 7, two, 1}, {6, 7, two, 1}}},
        {{5, 14}, false, 3, {{13, 7, one, 1}, {13, 7, one, 1}, {13, 7, one, 1}}},
        {{6}, false, 3, {{13, 7, one, 1}, {3, 1, four, 4}, {3, 1, four, 4}}},
        {{7}, false, 3, {{13, 7, one, 1}, {3, 7, four, 1}, {3, 7, four, 1}}},
        {{33}, false, 3, {{13, 7, one, 1}, {13, 3, one, 2}, {13, 3, one, 2}}},
        {{35}, false, 4, {{13, 7, one, 1}, {6, 3, two, 2}, {6, 3, two, 2}, {13, 7, one, 1}}},
        {{60}, false, 4, {{13, 7, one, 1}, {13, 7, one, 1}, {13, 7, one, 1}, {13, 7, one, 1}}},
        {{1, 17}, true, 3, {{26, 7, 0x20004, 1}}},
        {{2, 3}, true, 3, {{39, 7, 0x10003, 1}}},
        {{8}, true, 1, {{13, 7, one, 1}}},
        {{9, 10}, true, 1, {{1, 7, 0x80001, 1}}},
        {{18}, true, 3, {{19, 7, 0x40006, 1}}},
        {{27, 28, 29, 30}, true, 4, {{52, 7, 0x10004, 1}}},
        {{43, 44, 45, 46, 47, 48, 49, 50}, true, 3, {{26, 7, 0x10002, 1}}},
    };
    std::size_t codes = 0;
    for (const Case& c : cases)
        for (unsigned code : c.codes) {
            bool packed = !c.packed;
            unsigned count = 0;
            EXPECT_EQ(Planes(code, 13, 7, packed, count), c.planes) << code;
            EXPECT_EQ(packed, c.packed) << code;
            EXPECT_EQ(count, c.count) << code;
            ++codes;
        }
    EXPECT_EQ(codes + 1, std::size(formats));  // all but 11, whose second plane is this library's own choice
    bool packed = true;
    unsigned count = 0;
    EXPECT_EQ(Planes(11, 12, 8, packed, count).front(), (Plane{12, 8, one, 1}));
    EXPECT_FALSE(packed);
    EXPECT_EQ(count, 2u);
}

TEST(RawVideoFrame, UnknownFormatsAreRefused) {
    for (unsigned code : {15u, 16u, 31u, 61u, 0xFFFFFFFFu}) try {
            CRawVideoFrame frame(false, code, 2, 2, true);
            FAIL() << code;
        } catch (TarvoBased::CBaseException& error) {
            int line = 0;
            EXPECT_STREQ(error.GetExceptionSource(&line), "../avbase/avbase_srcutils/avbase_crawvideoframe");
            EXPECT_EQ(error.GetCode(), 10021010);
            EXPECT_STREQ(error.GetMsg(), "Bad pixel format");
            EXPECT_EQ(line, 310);
        }
}

TEST(RawVideoFrame, RowsAndPlanesStandAtMultiplesOf64Bytes) {
    CRawVideoFrame frame(false, 35, 70, 6, true);
    unsigned total = 0;
    for (unsigned p = 0; p < frame.GetBufferCount(); ++p) {
        unsigned rowBytes, pitch, rows;
        const unsigned char* data = frame.GetBuffer(p, &rowBytes, &pitch, &rows);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(data) % 64, 0u);
        EXPECT_EQ(pitch, rowBytes > 64 ? 128u : 64u);
        total += pitch * rows;
    }
    EXPECT_EQ(frame.GetTotalSize(), total);
    EXPECT_EQ(frame.GetRequireSize(), total);
}

TEST(RawVideoFrame, PlanesBeyondTheLastAreFiled) {
    CRawVideoFrame frame(false, 30, 4, 4, true);
    unsigned rowBytes = 1, pitch = 1, rows = 1;
    EXPECT_EQ(frame.GetBuffer(1, &rowBytes, &pitch, &rows), nullptr);
    EXPECT_EQ(LastError().code, 10021000);
    EXPECT_EQ(rowBytes + pitch + rows, 0u);
}

TEST(RawVideoFrame, ACloneIsDeep) {
    CRawVideoFrame frame(true, 60, 5, 3, false);
    frame.SetTimeStamp(-4);
    frame.SetDuration(9);
    frame.SetDuplicatedCount(2, 3);
    frame.SetInterlaced(true);
    frame.SetTopFieldFirst(true);
    frame.SetCanBeModified(false);
    frame.SetDAR(1.5);
    frame.SetBorderData(&frame, 7);
    frame.CropRightAndBottom(1, 1);
    std::mt19937 random(5);
    for (unsigned p = 0; p < 4; ++p) std::memset(frame.GetBuffer(p), int(random() & 255), 64 * 3);

    IRawVideoFrame* clone = frame.Clone();
    for (unsigned p = 0; p < 4; ++p) {
        unsigned char* bytes = clone->GetBuffer(p, nullptr, nullptr, nullptr);
        EXPECT_NE(bytes, frame.GetBuffer(p));
        EXPECT_EQ(std::memcmp(bytes, frame.GetBuffer(p), 64 * 3), 0);
    }
    unsigned width, height, total;
    void* border;
    int borderSize;
    clone->GetDimension(&width, &height);
    clone->GetBorderData(&border, &borderSize);
    EXPECT_EQ(width, 4u);
    EXPECT_EQ(height, 2u);
    EXPECT_EQ(clone->GetTimeStamp(), -4);
    EXPECT_EQ(clone->GetDuration(), 9u);
    EXPECT_EQ(clone->GetDuplicatedCount(&total), 2u);
    EXPECT_EQ(total, 3u);
    EXPECT_TRUE(clone->IsInterlaced() && clone->IsTopFieldFirst());
    EXPECT_FALSE(clone->CanBeModified() || clone->IsTopDown() || clone->IsPacked());
    EXPECT_EQ(clone->GetDAR(), 1.5);
    EXPECT_EQ(border, &frame);
    EXPECT_EQ(borderSize, 7);
    clone->Free();
}

TEST(RawVideoFrame, CropHidesColumnsAndRowsOfEveryPlane) {
    CRawVideoFrame frame(false, 0, 12, 10, true);
    unsigned char* const data = frame.GetBuffer(1);
    frame.CropRightAndBottom(3, 5);
    unsigned rowBytes, rows;
    EXPECT_EQ(frame.GetBuffer(1, &rowBytes, nullptr, &rows), data);
    EXPECT_EQ(rowBytes, 4u);
    EXPECT_EQ(rows, 2u);
    frame.CropRightAndBottom(99, 99);
    unsigned width, height;
    frame.GetDimension(&width, &height);
    EXPECT_EQ(width + height, 0u);
    frame.SetSize(12, 10);
    EXPECT_EQ(frame.GetBuffer(1, &rowBytes, nullptr, &rows), data);
    EXPECT_EQ(rowBytes, 6u);
    EXPECT_EQ(rows, 5u);
}

TEST(RawVideoFrame, SizesThatNoMemoryHoldsAreRefusedAndChangeNothing) {
    CRawVideoFrame frame(false, 30, 4, 3, true);
    unsigned char* const data = frame.GetBuffer(0);
    for (auto [width, height] : {std::pair{0x40000000u, 1u}, {0x10000u, 0x10000u}, {0xFFFFFFFFu, 0xFFFFFFFFu}}) try {
            frame.SetSize(width, height);
            FAIL() << width << "x" << height;
        } catch (TarvoBased::CBaseException& error) {
            EXPECT_EQ(error.GetCode(), 10021007);
            EXPECT_STREQ(error.GetMsg(), "No enough memory");
        }
    EXPECT_EQ(frame.GetBuffer(0), data);
    frame.SetSize(0, 0);
    EXPECT_EQ(frame.GetTotalSize(), 0u);
    EXPECT_NE(frame.GetBuffer(0), nullptr);
}

}  // namespace
}  // namespace AVBased::Testing
