#pragma once

#include <cstdint>

#include "effects/base/settings_effect.h"

namespace AVBased {

inline constexpr char effectNameColorFilter[] = "colorfilter";

struct ColorFilterSettings {
    std::uint32_t colour = 0xFF9933;  ///< 0xRRGGBB
    std::int32_t density = 60;        ///< per cent
};
/// A coloured glass in front of the lens, and an exposure that makes up for the light that it takes: colours shift,
/// luma stays. Of 256 parts of a channel's light the glass lets 256 - (255 - colour) x density x 256 / 25500 through,
/// all channels then multiplied by 256 / the greatest, so that a grey glass changes nothing, nor does a black one. A
/// density outside 0 to 100 counts as the nearer limit. Packed colours become (colour x part + light) / 256, at most
/// 255, where light is the sum of colour x (share x (256 - part) / 256) over the channels with the shares 77, 150 and
/// 29 of red, green and blue, all rounded down. Planar ones become what the same product makes of them, as a matrix of
/// luma and chroma (ITU-R BT.601, luma 16 to 235) that keeps luma: each part of a result is sample x weight in 1/64,
/// rounded down, from weights in 1/16384, the sum is rounded and clamped to a byte. Chroma reads the mean luma of the
/// pixels that it serves, the last ones repeated at an odd edge. Alpha stays.
class CColorFilterEffect : public CSettingsEffect<ColorFilterSettings> {
 public:
    CColorFilterEffect();
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;
};

}  // namespace AVBased
