#include "tests/support/sweep.h"

namespace AVBased::Testing {
namespace {

constexpr int palettes[4][5] = {
    {0x2B0B6E, 0xE6007E, 0xFF6A00, 0xFFB400, 0xFFF04D},
    {0x14145A, 0xE3172D, 0x00A9E0, 0x6FD9C4, 0xFFF3C4},
    {0x3A0066, 0x009E4F, 0x8CC63F, 0xFF8FC7, 0xFFF0A8},
    {0x062B3F, 0x00838F, 0xF15A24, 0xFF9EB5, 0xFFE94A},
};

int Weighted(int blue, int green, int red, const int (&weights)[3], int base) {
    return ((weights[0] * blue + weights[1] * green + weights[2] * red + 128) >> 8) + base;
}
constexpr int lumaWeights[] = {25, 129, 66}, uWeights[] = {112, -74, -38}, vWeights[] = {-18, -94, 112};

// One position at a time, through its panel.
class Print {
 public:
    Print(const Picture& picture, int colours, int palette, bool panels)
        : m_picture(picture), m_colours(std::clamp(colours, 2, 5)), m_palette(palette), m_panels(panels) {}

    // valueAt(x, y) as the frame shows it at (x, y): a panel shows means of 2 x 2.
    template <class ValueAt>
    int Shown(int x, int y, ValueAt valueAt) const {
        if (!m_panels) return valueAt(x, y);
        const int across = (m_picture.Width() + 1) / 2, down = (m_picture.Height() + 1) / 2;
        const int left = 2 * (x % across), top = 2 * (y % down);
        const int nextX = std::min(left + 1, m_picture.Width() - 1), nextY = std::min(top + 1, m_picture.Height() - 1);
        return (valueAt(left, top) + valueAt(nextX, top) + valueAt(left, nextY) + valueAt(nextX, nextY) + 2) / 4;
    }
    // The colour of the tone that is shown: the tones are parted evenly, and the palette's colours spread over the
    // parts.
    int ColourAt(int x, int y) const {
        x = std::min(x, m_picture.Width() - 1);
        y = std::min(y, m_picture.Height() - 1);
        const int tone = Shown(x, y, [&](int i, int j) {
            const auto& in = m_picture.planes;
            return m_picture.packed ? Weighted(in[0](i, j), in[1](i, j), in[2](i, j), lumaWeights, 16) : in[0](i, j);
        });
        int part = 0;
        while (part + 1 < m_colours && tone >= 16 + 219 * (part + 1) / m_colours) ++part;
        const int panel = m_panels ? x / ((m_picture.Width() + 1) / 2) + 2 * (y / ((m_picture.Height() + 1) / 2)) : 0;
        return palettes[unsigned(m_palette + panel) % 4][(8 * part + m_colours - 1) / (2 * m_colours - 2)];
    }
    int PartAt(int x, int y, const int (&weights)[3], int base) const {
        const int colour = ColourAt(x, y);
        return Weighted(colour & 255, colour >> 8 & 255, colour >> 16, weights, base);
    }

 private:
    const Picture& m_picture;
    int m_colours, m_palette;
    bool m_panels;
};

TEST(PopStyle, PrintsOnePositionAtATimeInEveryFormat) {
    SweepFrames(500, [](const TestFrame& frame, std::mt19937& random) {
        const int colours = Between(0, 7, random), palette = Between(-2, 5, random), panels = Between(0, 1, random);
        const Picture from(frame);
        const Print print(from, colours, palette, panels);
        Picture to = from;
        for (unsigned p = 0; p < to.planes.size(); ++p)
            to.planes[p] = from.planes[p].Like([&](int x, int y) {
                if (p == 3) return print.Shown(x, y, from.planes[3]);
                if (from.packed) return print.ColourAt(x, y) >> 8 * p & 255;
                if (p == 0) return print.PartAt(x, y, lumaWeights, 16);
                const int columns = 1 << from.columnShift, count = columns << from.rowShift;
                int sum = count / 2;
                for (int i = 0; i < count; ++i)
                    sum += print.PartAt(x * columns + i % columns, (y << from.rowShift) + i / columns,
                                        p == 1 ? uWeights : vWeights, 128);
                return sum / count;
            });
        ExpectEffect("popstyle", Numbers("popstyle_", {{"colors", colours}, {"palette", palette}, {"panels", panels}}),
                     frame, to);
    });
}

}  // namespace
}  // namespace AVBased::Testing
