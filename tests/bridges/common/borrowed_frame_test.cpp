#include "bridges/common/borrowed_frame.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "TarvoBased/ITarvoException.h"
#include "TarvoBased/error_codes.h"

namespace Nifikral {
namespace {

constexpr unsigned planar420 = 0;

struct FreeFrame {
    void operator()(AVBased::IRawVideoFrame* frame) const { frame->Free(); }
};

// A picture of 5 x 3 pixels whose chroma has a sample for the odd edges, as other programs lay it out.
class OddPlanarFrame : public testing::Test {
 protected:
    std::vector<unsigned char> m_luma = std::vector<unsigned char>(3 * 8, 10);
    std::vector<unsigned char> m_blue = std::vector<unsigned char>(2 * 4, 20), m_red = m_blue;
    BorrowedPlane m_planes[3] = {{m_luma.data(), 5, 8, 3}, {m_blue.data(), 3, 4, 2}, {m_red.data(), 3, 4, 2}};
    BorrowedFrame m_frame{planar420, 5, 3, m_planes, 7};

    // Row length, pitch and rows.
    static std::vector<unsigned> Shape(AVBased::IRawVideoFrame& frame, unsigned plane) {
        unsigned rowBytes = 9, pitch = 9, rows = 9;
        frame.GetBuffer(plane, &rowBytes, &pitch, &rows);
        return {rowBytes, pitch, rows};
    }
};

TEST_F(OddPlanarFrame, ShowsThePlanesWhereTheyLie) {
    EXPECT_EQ(m_frame.GetBuffer(1, nullptr, nullptr, nullptr), m_blue.data());
    EXPECT_EQ(Shape(m_frame, 0), (std::vector<unsigned>{5, 8, 3}));
    EXPECT_EQ(Shape(m_frame, 2), (std::vector<unsigned>{3, 4, 2}));
    EXPECT_EQ(m_frame.GetTotalSize(), 24u + 8u + 8u);
}

TEST_F(OddPlanarFrame, HasNoFourthPlane) {
    EXPECT_EQ(m_frame.GetBuffer(3, nullptr, nullptr, nullptr), nullptr);
    EXPECT_EQ(TarvoBased::GetTarvoException()->GetExceptionCode(), TarvoBased::errorBadIndex);
    EXPECT_EQ(Shape(m_frame, 3), (std::vector<unsigned>{0, 0, 0}));
}

TEST_F(OddPlanarFrame, LeavesChromaForEveryPixelOfACrop) {
    m_frame.CropRightAndBottom(2, 2);
    EXPECT_EQ(Shape(m_frame, 0), (std::vector<unsigned>{3, 8, 1}));
    EXPECT_EQ(Shape(m_frame, 1), (std::vector<unsigned>{2, 4, 1}));
    m_frame.CropRightAndBottom(99, 0);
    EXPECT_EQ(Shape(m_frame, 1), (std::vector<unsigned>{0, 4, 2}));
}

TEST_F(OddPlanarFrame, IsClonedWithMemoryOfItsOwn) {
    m_frame.CropRightAndBottom(1, 0);
    const std::unique_ptr<AVBased::IRawVideoFrame, FreeFrame> clone(m_frame.Clone());
    ASSERT_TRUE(clone);
    m_blue.assign(m_blue.size(), 99);
    EXPECT_EQ(clone->GetBuffer(1, nullptr, nullptr, nullptr)[7], 20);
    EXPECT_EQ(clone->GetTimeStamp(), 7);
    EXPECT_EQ(Shape(*clone, 0), (std::vector<unsigned>{4, 8, 3}));
}

}  // namespace
}  // namespace Nifikral
