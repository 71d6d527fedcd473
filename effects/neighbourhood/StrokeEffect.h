#pragma once

#include <cstdint>
#include <vector>

#include "effects/base/settings_effect.h"

namespace AVBased {

inline constexpr char effectNameStroke[] = "stroke";

/// A square of paper, to be repeated, with the darkness up to which each of its places stays white: streaks along
/// parallel strokes.
class StrokePaper {
 public:
    static constexpr unsigned side = 256;

    StrokePaper();
    const std::uint8_t* Strokes(unsigned y) const { return &m_darkness[y % side * side]; }
    const std::uint8_t* CrossStrokes(unsigned y) const { return &m_darkness[(side + y % side) * side]; }

 private:
    std::vector<std::uint8_t> m_darkness;
};

struct StrokeSettings {
    std::int32_t strength = 50;  ///< in per cent; held within 0 to 100
    std::int32_t colour = 0;     ///< in per cent, how much of the picture's colours stays; held within 0 to 100
};

/// A pencil drawing: lines where the picture is darker than around it, hatching where it is dark, white paper
/// elsewhere.
///
/// With the tones t of the picture and their mean m over 7 x 7 pixels (sum x 1338 >> 16, the nearest pixels serving
/// beyond the edges), a pixel is drawn as 255 less the lower of line + shade and 225. Here line = max(m - t - 4, 0) x
/// strength >> 3 and shade = (max(255 - m - s, 0) + max(255 - m - 112 - c, 0)) x strength >> 6, where s and c are the
/// paper's values for strokes and cross strokes. The tone of a packed pixel is 29 blue + 150 green + 77 red >> 8, and
/// each colour becomes drawn + ((colour - t) x kept >> 8), held within a byte, where kept is 256 hundredths of the
/// colour setting; alpha stays. The tone of luma is (luma - 16) x 298 >> 8, held within a byte, and luma becomes 16 +
/// (drawn x 220 >> 8), chroma 128 + ((chroma - 128) x kept >> 8).
class CStrokeVideoImageEffect : public CSettingsEffect<StrokeSettings> {
 public:
    CStrokeVideoImageEffect();
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;

 private:
    StrokePaper m_paper;
};

}  // namespace AVBased
