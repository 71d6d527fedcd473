#pragma once

#include "effects/base/settings_effect.h"

namespace AVBased {

inline constexpr char effectNamePortrait[] = "portrait";

struct PortraitSettings {
    std::int32_t strength = 50;  ///< in per cent; held within 0 to 100
    std::int32_t radius = 8;     ///< in pixels; held within 1 to 64
    std::int32_t glow = 15;      ///< in per cent; held within 0 to 100
};

/// A flattering softness: contrast that is small for its surroundings goes, most of it on bright skin, while edges,
/// eyes and hair keep theirs; bright parts glow a little, and dark ones among them stay dark. Colours change with their
/// tones only.
///
/// The tones (luma; of packed pixels 29 blue + 150 green + 77 red >> 8) are halved in size: a cell is the mean of 2 x 2
/// of them, rounded. Over the square of cells that reaches (radius + 1) / 2 to each side, the nearest cells serving
/// beyond the edges, let m and q be the means of the cells and of their squares, with 8 binary digits after the point,
/// and v = max(q - (m x m >> 8), 0) >> 8 the variance. The share of contrast that goes is 255 x f^2 / (v^2 + f^2) x
/// weight x min(m >> 7, 255) >> 16 (0 without an f), with f = strength x strength x 5 / 100 and a weight of 90 to 254
/// for the nearness of u and v, the chroma of the cell's first pixel, to 108 and 152: 90 + (min(max(8 x (52 - |u - 108|
/// - |v - 152|), 0), 255) x 165 >> 8). Share (times 256), share x m >> 8 and m are averaged over the same square once
/// more and brought back to the full size, first down the columns, then along the rows, as (3 x near + far) >> 2. With
/// these a, b and l a tone t becomes s = t + (256 x b - a x t + 2^15 >> 16), held within a byte, and with light s +
/// ((max(white - s, 0) x s >> 4) x ((l >> 8)^2 x g >> 8) >> 20), g being 256 hundredths of the glow and white 235 for
/// luma, 255 for packed pixels, of which each colour then moves by as much as the tone.
class CPortraitVideoImageEffect : public CSettingsEffect<PortraitSettings> {
 public:
    CPortraitVideoImageEffect();
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;
};

}  // namespace AVBased
