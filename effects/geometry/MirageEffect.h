#pragma once

#include "effects/base/frame_views.h"
#include "effects/base/settings_effect.h"

namespace AVBased {

inline constexpr char effectNameMirage[] = "mirage";

struct MirageSettings {
    std::uint32_t width = 10, alpha = 10;
};
/// A slightly enlarged, centred copy of the picture blended over the picture.
class CMirageVideoImageEffect : public CSettingsEffect<MirageSettings> {
 public:
    CMirageVideoImageEffect();
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;
};

}  // namespace AVBased
