#pragma once

#include <array>
#include <cstdint>

#include "effects/base/settings_effect.h"

namespace AVBased {

inline constexpr char effectNamePopStyle[] = "popstyle";

/// Of one palette.
inline constexpr unsigned mostInks = 5;
/// The tones from which each further ink serves; of fewer inks the last is repeated.
using InkSteps = std::array<std::uint8_t, mostInks - 1>;

struct PopStyleSettings {
    std::int32_t colours = 4;
    std::int32_t palette = 0;
    std::int32_t panels = 0;  ///< anything but 0: four of them
};
/// Pop art: the tones of the picture as 2 to 5 flat colours out of one of four palettes, without specks and with smooth
/// contours. Of n colours tones (print_tones.h) from 16 + 219 k / n on get colour k, counted from 0. Palettes have five
/// colours; of those, colour k is number (8 k + n - 1) / (2 n - 2), all rounded down. Planar colours are (66 r + 129 g
/// + 25 b + 128) / 256 + 16, (112 b - 38 r - 74 g + 128) / 256 + 128 and (112 r - 94 g - 18 b + 128) / 256 + 128,
/// rounded down.
///
/// A sample, of chroma as of luma, is the mean of the colours at its corners: of the left and of the right two, rounded
/// up, and of both. The tone at a corner in the middle of a cell is the cell's, elsewhere half the sum of the two above
/// and below it, then of those beside it, rounded down; beyond the edges the nearest cells serve. With panels, the
/// frame is divided into four, the left and upper ones larger in an odd one, each with the whole picture, a pixel for a
/// cell, alpha shrunk by rounded means too; a sample belongs to the panel of its first pixel, where it also ends; the
/// palettes follow one another from the chosen one on. A number of colours out of range counts as the nearer limit, a
/// palette modulo 4. Without panels, alpha stays.
class CPopStyleVideoImageEffect : public CSettingsEffect<PopStyleSettings> {
 public:
    CPopStyleVideoImageEffect();
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;
};

}  // namespace AVBased
