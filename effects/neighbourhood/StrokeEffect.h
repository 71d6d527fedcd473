#pragma once

#include <cstdint>
#include <vector>

#include "effects/base/settings_effect.h"

namespace AVBased {

inline constexpr char effectNameStroke[] = "stroke";

/// A square of rough paper, to be repeated. Graphite stays on its teeth first, along parallel strokes: each place of
/// strokes and cross strokes has the darkness up to which it stays white.
class StrokePaper {
 public:
    static constexpr unsigned side = 256;

    StrokePaper();
    const std::uint8_t* Strokes(unsigned y) const { return Row(0, y); }
    const std::uint8_t* CrossStrokes(unsigned y) const { return Row(1, y); }
    /// The paper's own shade, 0 to 9.
    const std::uint8_t* Grain(unsigned y) const { return Row(2, y); }

 private:
    const std::uint8_t* Row(unsigned plane, unsigned y) const { return &m_places[(plane * side + y % side) * side]; }

    std::vector<std::uint8_t> m_places;
};

struct StrokeSettings {
    std::int32_t strength = 50;  ///< in per cent; held within 0 to 100
    std::int32_t colour = 0;     ///< in per cent, how much of the picture's colours stays; held within 0 to 100
};

/// A pencil drawing on rough paper: lines where the picture is darker than around it, pressed harder the darker it is,
/// hatching where it is dark, paper elsewhere.
///
/// With the tones t of the picture and their mean m over 7 x 7 pixels (sum x 1338 >> 16, the nearest pixels serving
/// beyond the edges), let line = max(m - t - 5 - g, 0) x strength x 32 x (96 + (255 - m >> 1)) >> 16, shade =
/// (max(255 - m - s, 0) + max(255 - m - 112 - c, 0)) x strength >> 5 and p = min(line + shade, 511), where s, c and g
/// are the paper's values for strokes, cross strokes and grain; the pixel is drawn as 255 - g - ((p x (1024 - p) >> 10)
/// x 230
/// >> 8). The tone of a packed pixel is 29 blue + 150 green + 77 red >> 8, and each colour becomes drawn + ((colour -
/// t) x kept >> 8), held within a byte, where kept is 256 hundredths of the colour setting; alpha stays. The tone of
/// luma is (luma - 16) x 298 >> 8, held within a byte, and luma becomes 16 + (drawn x 220 >> 8), chroma 128 + ((chroma
/// - 128) x kept >> 8).
class CStrokeVideoImageEffect : public CSettingsEffect<StrokeSettings> {
 public:
    CStrokeVideoImageEffect();
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;

 private:
    StrokePaper m_paper;
};

}  // namespace AVBased
