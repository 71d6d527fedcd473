#pragma once

#include "effects/base/settings_effect.h"

namespace AVBased {

inline constexpr char effectName2D3D[] = "2D_3D_TransForm";

struct Trans2D3DSettings {
    enum Output { anaglyph, sideBySide, topAndBottom };

    std::int32_t strength = 25;      ///< in 1/1000 of the width, from the farthest to the nearest; held within 0 to 100
    std::int32_t output = anaglyph;  ///< any other value than these three leaves the picture
    std::int32_t swap = 0;           ///< not 0: the eyes change places
};

/// A flat picture for two eyes. What stands lower in the picture and what is warmer in colour counts as nearer; the
/// depth is so smooth that no contour tears.
///
/// For every cell of 16 x 16 pixels, with p its row's middle as 0 to 255 (255 x (2 x row + 1) / (2 x rows)) and w the
/// mean of v - u (of packed pixels 171 red - 22 green - 149 blue >> 8) of every fourth pixel of every fourth row, the
/// depth is (p x 160 >> 8) + 48 + (w x 3 >> 2), held within 0 to 255, times 256. Twice along the rows and twice down
/// the columns it becomes the mean over an eighth of the cells of that direction, at least one, to either side, the
/// nearest cells serving beyond the edges. What stands between
/// the thirds of the cells' columns and rows is at the screen on the mean: with s for the mean of their depths, a
/// cell's shift in 256ths of a pixel is (depth - s) x width x strength / 510000; between the middles of cells it
/// changes evenly, rows first. The left eye sees at x what lies at x - shift, the right eye what lies at x + shift,
/// interpolated as (near x (256 - part) + next x part) >> 8 and held inside the row; a chroma sample has the shift of
/// its first pixel, halved as often as the plane's width is.
///
/// The anaglyph has the left eye's red and the right eye's green and blue; where the two reds differ by r, more than
/// 40, the left one is held back to a difference of 40 + (r - 40 >> 2), of less than -40 to -40 + (r + 40 >> 2), since
/// sharp edges would have fringes. In planes, with y, u, v of the right eye and r = (298 x dy + 409 x dv) >> 8 from the
/// differences to the left, held back like that, these are y + (66 x r >> 8), u - (38 x r >> 8) and
/// v + (112 x r >> 8), held within bytes; for chroma dy is the mean over its pixels of the first row. Side by side,
/// either view is halved in width, each sample the rounded mean of two; top and bottom, in height.
class CTrans2D3D : public CSettingsEffect<Trans2D3DSettings> {
 public:
    CTrans2D3D();
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;
};

}  // namespace AVBased
