#pragma once

#include "effects/base/settings_effect.h"

namespace AVBased {

inline constexpr char effectNameAtomize[] = "atomize";

struct AtomizeSettings {
    std::int32_t radius = 6;  ///< in pixels; held within 0 to 255
    std::uint32_t seed = 0;
};

/// The picture as spray: each pixel is taken, alpha included, from a random place nearby, nearer ones more often. The
/// places follow from the seed and the frame's position alone (place_hash.h).
///
/// Of the hash of plane 0, the two low bytes summed, less 255, are s, and the pixel's source lies s x (2 x radius + 1)
/// + 256 >> 9 columns to the right; the two high bytes give the rows downwards. A place outside the picture is the
/// nearest one inside. A planar sample that covers several luma positions goes by the first of them: the hash is that
/// position's, and the source is the sample that covers the position's source.
class CAtomizeVideoImageEffect : public CSettingsEffect<AtomizeSettings> {
 public:
    CAtomizeVideoImageEffect();
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;
};

}  // namespace AVBased
