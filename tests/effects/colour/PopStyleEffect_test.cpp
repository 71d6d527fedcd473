#include "tests/support/sweep.h"

namespace AVBased::Testing {
namespace {

constexpr int palettes[4][5] = {
    {0x2B0B6E, 0xC2107E, 0xFF5A1F, 0xFFAE1A, 0xFFF04D},
    {0x14145A, 0x0A84C6, 0xE3172D, 0xFFC23A, 0xFFF6D6},
    {0x3A0066, 0x009E4F, 0x8CC63F, 0xFF8FC7, 0xFFF0A8},
    {0x062B3F, 0x00838F, 0xF15A24, 0xFF9EB5, 0xFFE94A},
};

int Weighted(int blue, int green, int red, const int (&weights)[3], int base) {
    return ((weights[0] * blue + weights[1] * green + weights[2] * red + 128) >> 8) + base;
}
constexpr int weightsOf[3][3] = {{25, 129, 66}, {112, -74, -38}, {-18, -94, 112}};

// Of every cell of 2 x 2 pixels, in 1/32.
Plane RawTones(const Picture& in) {
    return Plane((in.Width() + 1) / 2, (in.Height() + 1) / 2, [&](int x, int y) {
        const auto sum = [&](unsigned p) {
            return in.planes[p].Near(2 * x, 2 * y) + in.planes[p].Near(2 * x + 1, 2 * y) +
                   in.planes[p].Near(2 * x, 2 * y + 1) + in.planes[p].Near(2 * x + 1, 2 * y + 1);
        };
        int tone = 8 * sum(0), warmth = 0;
        if (in.packed) {
            tone = ((66 * sum(2) + 129 * sum(1) + 25 * sum(0)) >> 5) + 512;
            warmth = (150 * sum(2) - 20 * sum(1) - 130 * sum(0)) >> 5;
        } else if (!in.planes[1].samples.empty()) {
            warmth = 32 * (in.Near(2, 2 * x, 2 * y) - in.Near(1, 2 * x, 2 * y));
        }
        return tone + (warmth < 0 ? warmth : warmth / 4);
    });
}

template <class Combine>
Plane OfFive(Plane plane, Combine combine) {
    for (const bool along : {false, true})
        plane = plane.Like([&](int x, int y) {
            std::array<int, 5> five;
            for (int i = 0; i < 5; ++i) five[unsigned(i)] = along ? plane.Near(x + i - 2, y) : plane.Near(x, y + i - 2);
            return combine(five);
        });
    return plane;
}

Plane SmoothTones(const Picture& in) {
    const Plane raw = RawTones(in), clear = OfFive(raw, [](std::array<int, 5> five) {
                                        std::nth_element(five.begin(), five.begin() + 2, five.end());
                                        return five[2];
                                    });
    const Plane soft = OfFive(clear, [](const std::array<int, 5>& five) {
        const int outer = (five[0] + five[4]) >> 1, inner = (five[1] + five[3]) >> 1;
        return five[2] + ((outer - five[2]) >> 3) + ((inner - five[2]) >> 1);
    });
    return raw.Like([&](int x, int y) { return raw(x, y) - std::clamp(raw(x, y) - soft(x, y), -768, 768); });
}

// One sample at a time, from the inks at its corners.
class Print {
 public:
    Print(const Picture& picture, int colours, int palette, bool panels)
        : m_picture(picture),
          m_tones(SmoothTones(picture)),
          m_colours(std::clamp(colours, 2, 5)),
          m_palette(palette),
          m_across(panels ? m_tones.width : picture.Width()),
          m_down(panels ? m_tones.height : picture.Height()),
          m_panels(panels) {}

    int Sample(unsigned p, int x, int y) const {
        if (p == 3) return Alpha(x, y);
        const int left = x << m_picture.ColumnShift(p), top = y << m_picture.RowShift(p);
        const int column = left / m_across, row = top / m_down;
        const int* const inks = palettes[unsigned(m_palette + column + 2 * row) % 4];
        // Within the panel, which ends at the frame's edge.
        const int x0 = left % m_across, y0 = top % m_down;
        const int x1 =
            std::min(x0 + (1 << m_picture.ColumnShift(p)), std::min(m_across, m_picture.Width() - column * m_across));
        const int y1 = std::min(y0 + (1 << m_picture.RowShift(p)), std::min(m_down, m_picture.Height() - row * m_down));
        const auto side = [&](int corner) { return (Ink(inks, p, corner, y0) + Ink(inks, p, corner, y1) + 1) / 2; };
        return (side(x0) + side(x1) + 1) / 2;
    }

 private:
    int Alpha(int x, int y) const {
        const Plane& alpha = m_picture.planes[3];
        if (!m_panels) return alpha(x, y);
        const int left = 2 * (x % m_across), top = 2 * (y % m_down);
        return (alpha.Near(left, top) + alpha.Near(left + 1, top) + alpha.Near(left, top + 1) +
                alpha.Near(left + 1, top + 1) + 2) /
               4;
    }
    // Pixels of a panel are as large as cells, others half as large.
    int ToneAt(int x, int y) const {
        const int row = m_panels ? y : y / 2;
        const int column = m_panels ? x : x / 2;
        const auto mean = [&](int at) {
            return !m_panels && y % 2 ? m_tones.Near(at, row)
                                      : (m_tones.Near(at, row - 1) + m_tones.Near(at, row)) >> 1;
        };
        return !m_panels && x % 2 ? mean(column) : (mean(column - 1) + mean(column)) >> 1;
    }
    int Ink(const int* inks, unsigned p, int x, int y) const {
        int part = 0;
        while (part + 1 < m_colours && ToneAt(x, y) >= 32 * (16 + 219 * (part + 1) / m_colours)) ++part;
        const int colour = inks[(8 * part + m_colours - 1) / (2 * m_colours - 2)];
        if (m_picture.packed) return colour >> 8 * p & 255;
        return Weighted(colour & 255, colour >> 8 & 255, colour >> 16, weightsOf[p], p == 0 ? 16 : 128);
    }

    const Picture& m_picture;
    Plane m_tones;
    int m_colours, m_palette, m_across, m_down;
    bool m_panels;
};

TEST(PopStyle, PrintsOneSampleAtATimeInEveryFormat) {
    SweepFrames(500, [](const TestFrame& frame, std::mt19937& random) {
        const int colours = Between(0, 7, random), palette = Between(-2, 5, random), panels = Between(0, 1, random);
        const Picture from(frame);
        const Print print(from, colours, palette, panels);
        Picture to = from;
        for (unsigned p = 0; p < to.planes.size(); ++p)
            to.planes[p] = from.planes[p].Like([&](int x, int y) { return print.Sample(p, x, y); });
        ExpectEffect("popstyle", Numbers("popstyle_", {{"colors", colours}, {"palette", palette}, {"panels", panels}}),
                     frame, to);
    });
}

// A slanted change from dark to light in a grainy picture.
TEST(PopStyle, PartsGrainyTonesAtOneSmoothContour) {
    std::mt19937 random(5);
    TestFrame frame(0, 160, 90);
    Picture picture(frame);
    picture.planes[0] = picture.planes[0].Like(
        [&](int x, int y) { return std::clamp(3 * x / 2 + y / 3 - 30, 40, 200) + Between(-12, 12, random); });
    picture.StoreIn(frame);
    for (unsigned p : {1u, 2u}) frame.Fill(p, 128);
    Apply(*MakeEffect("popstyle", Numbers("popstyle_", {{"colors", 2}})), frame);
    const Plane luma = Picture(frame).planes[0];
    const int light = luma(159, 45), dark = luma(0, 45);
    int before = 0, specks = 0, jump = 0;
    for (int y = 0; y < 90; ++y) {
        int edge = 0;
        while (edge < 160 && luma(edge, y) <= (light + dark) / 2) ++edge;
        for (int x = 0; x < 160; ++x) specks += std::abs(x - edge) > 4 && luma(x, y) != (x < edge ? dark : light);
        if (y) jump = std::max(jump, std::abs(edge - before));
        before = edge;
    }
    EXPECT_EQ(specks, 0);
    EXPECT_LE(jump, 2);
}

TEST(PopStyle, KeepsSkinAndSkyOfOneBrightnessApart) {
    for (int palette = 0; palette < 4; ++palette) {
        TestFrame frame(30, 16, 8);
        Grid halves(8, std::vector<unsigned>(16, 0xFFD9A889));
        for (auto& row : halves) std::fill_n(row.begin(), 8, 0xFF86B4E4);
        frame.SetSamples(0, halves);
        Apply(*MakeEffect("popstyle", Numbers("popstyle_", {{"palette", palette}})), frame);
        EXPECT_NE(frame.Samples()[4][0], frame.Samples()[4][15]) << palette;
    }
}

}  // namespace
}  // namespace AVBased::Testing
