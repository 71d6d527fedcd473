#pragma once

#include "effects/base/settings_effect.h"

namespace AVBased {

inline constexpr char effectNameAddNoise[] = "addnoise";

struct AddNoiseSettings {
    std::int32_t strength = 15;  ///< in levels; held within 0 to 255
    std::int32_t colour = 0;     ///< not 0: each colour has a grain of its own
    std::uint32_t seed = 0;
};

/// Film grain, strongest in the middle tones. It follows from the seed and the frame's position alone (place_hash.h),
/// so neighbouring frames differ and each comes out the same again.
///
/// The four bytes of a sample's hash, summed, less 510, are a grain of nearly Gaussian distribution with a standard
/// deviation of 147.8. A sample v becomes v + (grain x 8 x slope + 2^14 >> 15), held within a byte, where slope =
/// weight x gain >> 8, weight = 128 + (v x (255 - v) >> 7) and gain = unit x strength. The unit 28 makes the strength
/// the standard deviation in the middle tones. The three colours of a packed pixel share one grain, or have one each
/// when coloured; alpha is kept. Planar luma has the unit 24, coloured 16, and coloured chroma 16, 11, 8, 6 or 4 by the
/// number of times that it is halved, which is what the packed grain comes to in these planes; a chroma sample's weight
/// is that of the first luma sample which it covers, and plain grain leaves chroma as it is.
class CAddNoiseVideoImageEffect : public CSettingsEffect<AddNoiseSettings> {
 public:
    CAddNoiseVideoImageEffect();
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;
};

}  // namespace AVBased
