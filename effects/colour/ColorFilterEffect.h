#pragma once

#include <cstdint>

#include "effects/base/settings_effect.h"

namespace AVBased {

inline constexpr char effectNameColorFilter[] = "colorfilter";

struct ColorFilterSettings {
    std::uint32_t colour = 0xFF9933;  ///< 0xRRGGBB
    std::int32_t density = 60;        ///< per cent
};
/// A coloured glass in front of the lens: each channel lets 256 - (255 - colour) x density x 256 / 25500 parts of 256
/// of its light through, so that white behind a glass of density 100 takes on the colour. A density outside 0 to 100
/// counts as the nearer limit. Packed colours become colour x part / 256, truncated. Planar ones become what the same
/// product makes of them, as a matrix of luma and chroma (ITU-R BT.601, luma 16 to 235): each part of a result is
/// sample x weight in 1/64, rounded down, from weights in 1/16384, the sum is rounded and clamped to a byte. Luma reads
/// the chroma sample that serves it, or the nearest one; chroma the mean luma of the pixels that it serves, the last
/// ones repeated at an odd edge. Alpha stays.
class CColorFilterEffect : public CSettingsEffect<ColorFilterSettings> {
 public:
    CColorFilterEffect();
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;
};

}  // namespace AVBased
