#pragma once

#include "effects/base/frame_views.h"
#include "effects/base/settings_effect.h"

namespace AVBased {

inline constexpr char effectNameVideoWall[] = "videowall";

struct VideoWallSettings {
    double horiTiles = 3, verTiles = 3;
};
/// The picture shrunk to one tile in the top-left corner and repeated across and down the frame. Tile counts that are
/// below 1 or not finite leave the frame as it is.
class CWallVideoImageEffect : public CSettingsEffect<VideoWallSettings> {
 public:
    CWallVideoImageEffect();
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;
};

}  // namespace AVBased
