#include "host/run/region.h"

#include <cmath>
#include <stdexcept>

#include "tests/host/command.h"

namespace Nifikral {
namespace {

using Shares = std::vector<std::uint8_t>;

Coverage CoverageOf(const char* area, const char* soft, bool outside, int width, int height,
                    AVPixelFormat format = AV_PIX_FMT_BGRA, long long frame = 0, long long frames = 1) {
    return *Region(area, soft, outside).On({width, height, 25}, format).At(frame, frames);
}

TEST(RegionTest, CoversPixelsWhoseCentresItHolds) {
    EXPECT_EQ(CoverageOf("rectangle,25%,1,50%,1", "", false, 4, 3).whole.shares,
              (Shares{0, 0, 0, 0, 0, 255, 255, 0, 0, 0, 0, 0}));
    EXPECT_EQ(CoverageOf("rectangle,25%,1,50%,1", "", true, 4, 3).whole.shares,
              (Shares{255, 255, 255, 255, 255, 0, 0, 255, 255, 255, 255, 255}));
    EXPECT_EQ(CoverageOf("circle,50%,50%,50%", "", false, 4, 4).whole.shares,
              (Shares{0, 255, 255, 0, 255, 255, 255, 255, 255, 255, 255, 255, 0, 255, 255, 0}));
    // An eighth of the width is 4 pixels, a half of the height 8.
    const Coverage ellipse = CoverageOf("ellipse,50%,50%,12.5%,50%", "", false, 32, 16);
    const auto covered = [&](int x, int y) { return ellipse.whole.shares[std::size_t(y * 32 + x)] == 255; };
    EXPECT_TRUE(covered(12, 8) && covered(19, 8) && covered(16, 0) && covered(16, 15));
    EXPECT_FALSE(covered(11, 8) || covered(20, 8) || covered(13, 0));
}

TEST(RegionTest, ComesInSoftlyFromTheEdgeInwards) {
    const Coverage soft = CoverageOf("rectangle,2,-100,100,200", "4", false, 8, 1);
    // Depths of 0.5 to 3.5 of 4 pixels, then whole; the way is 3t^2 - 2t^3.
    EXPECT_EQ(soft.whole.shares, (Shares{0, 0, 11, 81, 174, 244, 255, 255}));
    const Coverage circle = CoverageOf("circle,50,50,40", "10", false, 100, 100);
    for (int x = 0; x < 100; ++x)
        for (int y = 0; y < 100; ++y) {
            const double depth = 40 - std::hypot(x + 0.5 - 50, y + 0.5 - 50), t = std::clamp(depth / 10, 0.0, 1.0);
            EXPECT_NEAR(circle.whole.shares[std::size_t(y * 100 + x)], 255 * t * t * (3 - 2 * t), 0.51)
                << x << " " << y;
        }
}

TEST(RegionTest, GivesChromaTheMeanOfWhatItCovers) {
    const Coverage coverage = CoverageOf("rectangle,1,0,1,1", "", false, 5, 3, AV_PIX_FMT_YUV420P);
    // One of four pixels; at the right edge chroma has one column, at the lower edge one row.
    EXPECT_EQ(coverage.chroma.shares, (Shares{64, 0, 0, 0, 0, 0}));
    EXPECT_EQ(CoverageOf("rectangle,4,2,1,1", "", false, 5, 3, AV_PIX_FMT_YUV420P).chroma.shares,
              (Shares{0, 0, 0, 0, 0, 255}));
    EXPECT_TRUE(CoverageOf("rectangle,1,0,1,1", "", false, 5, 3, AV_PIX_FMT_YUVA444P).chroma.shares.empty());
}

TEST(RegionTest, MovesWithItsNumbers) {
    for (const long long frame : {0, 1, 2})
        EXPECT_EQ(CoverageOf("rectangle,0..2,0,1,1", "", false, 3, 1, AV_PIX_FMT_BGRA, frame, 3)
                      .whole.shares[std::size_t(frame)],
                  255);
}

TEST(RegionTest, RefusesWhatIsNotAnArea) {
    for (const char* const area : {"", "circle,1,2", "circle,a,2,3", "elipse,1,2,3,4", "rectangle,1,2,3,4,5"})
        EXPECT_THROW(Region(area, "", false), std::invalid_argument) << area;
    EXPECT_THROW(Region("circle,1,2,3", "-1", false), std::invalid_argument);
    EXPECT_THROW(Region("mask.png", "3", false), std::invalid_argument);
}

class RegionRun : public CommandTest {
 protected:
    // Each byte of both, with how much of the second is to show.
    static std::string Mixed(const std::string& under, const std::string& over, const std::vector<int>& shares) {
        std::string mixed;
        for (std::size_t i = 0; i < under.size(); ++i) {
            const int a = static_cast<unsigned char>(under[i]), b = static_cast<unsigned char>(over[i]);
            mixed += char((b * shares[i] + a * (255 - shares[i]) + 127) / 255);
        }
        return mixed;
    }
};

TEST_F(RegionRun, LeavesBytesOutsideAndTakesTheEffectsInside) {
    constexpr int width = 33, height = 17;
    struct Format {
        const char* name;
        int components, columnShift, rowShift;
    };
    for (const Format& format : {Format{"bgra", 4, 0, 0}, {"yuv420p", 3, 1, 1}, {"yuva444p", 4, 0, 0}}) {
        const std::string name = format.name;
        Ffmpeg("-f lavfi -i testsrc=size=33x17:rate=25:duration=0.12,format=" + name + " -c:v ffv1 in.mkv");
        ASSERT_EQ(Nifikral("apply in.mkv whole.mkv -y --encoder ffv1 simple_gauss_blur:count=3").exitCode, 0);
        const Outcome outcome = Nifikral(
            "apply in.mkv part.mkv -y --encoder ffv1 simple_gauss_blur:count=3:inside=rectangle,4,4,21,9 --threads 2");
        ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
        std::vector<int> shares;
        for (int p = 0; p < (name == "bgra" ? 1 : format.components); ++p) {
            const bool chroma = p == 1 || p == 2;
            const int columns = chroma ? format.columnShift : 0, rows = chroma ? format.rowShift : 0;
            for (int y = 0; y < -(-height >> rows); ++y)
                for (int x = 0; x < -(-width >> columns); ++x) {
                    int covered = 0, all = 0;
                    for (int j = y << rows; j < std::min((y + 1) << rows, height); ++j)
                        for (int i = x << columns; i < std::min((x + 1) << columns, width); ++i, ++all)
                            covered += i >= 4 && i < 25 && j >= 4 && j < 13;
                    shares.insert(shares.end(), name == "bgra" ? 4 : 1, (covered * 255 + all / 2) / all);
                }
        }
        const std::string under = RawPictures("in.mkv", name), over = RawPictures("whole.mkv", name);
        const std::size_t size = under.size() / 3;
        ASSERT_EQ(size, shares.size());
        std::string expected;
        for (std::size_t i = 0; i < 3; ++i)
            expected += Mixed(under.substr(i * size, size), over.substr(i * size, size), shares);
        EXPECT_TRUE(RawPictures("part.mkv", name) == expected) << name;
        EXPECT_NE(under, expected);
    }
}

TEST_F(RegionRun, TakesAGreyPictureAndItsOutside) {
    Ffmpeg("-f lavfi -i testsrc2=size=40x30 -frames:v 1 in.png");
    // White, a grey and black from the left.
    Ffmpeg(
        "-f lavfi -i color=black:size=40x30,format=gray,geq=lum='if(lt(X\\,10)\\,255\\,if(lt(X\\,20)\\,51\\,0))' "
        "-frames:v 1 "
        "mask.png");
    for (const std::string side : {"inside", "outside"}) {
        ASSERT_EQ(Nifikral("apply in.png out.png -y invert:" + side + "=mask.png").exitCode, 0);
        const std::string before = RawPictures("in.png", "rgb24"), after = RawPictures("out.png", "rgb24");
        for (std::size_t i = 0; i < before.size(); ++i) {
            const std::size_t x = i / 3 % 40;
            const int own = static_cast<unsigned char>(before[i]);
            int share = x < 10 ? 255 : x < 20 ? 51 : 0;
            if (side == "outside") share = 255 - share;
            const int mixed = ((255 - own) * share + own * (255 - share) + 127) / 255;
            ASSERT_EQ(int(static_cast<unsigned char>(after[i])), mixed) << side << " byte " << i;
        }
    }
    const Outcome missing = Nifikral("apply in.png out.png -y invert:inside=nosuch.png");
    EXPECT_EQ(missing.exitCode, 3);
    EXPECT_NE(missing.errors.find("nosuch.png"), std::string::npos) << missing.errors;
}

}  // namespace
}  // namespace Nifikral
