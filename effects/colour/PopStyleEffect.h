#pragma once

#include <cstdint>

#include "effects/base/settings_effect.h"

namespace AVBased {

inline constexpr char effectNamePopStyle[] = "popstyle";

struct PopStyleSettings {
    std::int32_t colours = 4;
    std::int32_t palette = 0;
    std::int32_t panels = 0;  ///< anything but 0: four of them
};
/// Pop art: the tones of the picture as 2 to 5 flat colours out of one of four palettes. The tone of a planar pixel is
/// its luma, that of a packed one (66 red + 129 green + 25 blue + 128) / 256 + 16, and of n colours pixel tones from
/// 16 + 219 k / n on get colour k, counted from 0. Palettes have five colours; of those, colour k is number
/// (8 k + n - 1) / (2 n - 2). Planar colours are (66 r + 129 g + 25 b + 128) / 256 + 16, (112 b - 38 r - 74 g + 128) /
/// 256 + 128 and (112 r - 94 g - 18 b + 128) / 256 + 128, all rounded down, and a chroma sample is the rounded mean of
/// those of the pixels that it serves, the last ones repeated at an odd edge. With panels, the frame is divided into
/// four, the left and upper ones larger in an odd one, each with the whole picture, shrunk by the rounded means of 2 x
/// 2 tones and alphas; the palettes follow one another from the chosen one on. A number of colours out of range counts
/// as the nearer limit, a palette modulo 4. Without panels, alpha stays.
class CPopStyleVideoImageEffect : public CSettingsEffect<PopStyleSettings> {
 public:
    CPopStyleVideoImageEffect();
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;
};

}  // namespace AVBased
