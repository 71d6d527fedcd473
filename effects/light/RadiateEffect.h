#pragma once

#include "effects/base/frame_views.h"
#include "effects/base/settings_effect.h"

namespace AVBased {

inline constexpr char effectNameRadiate[] = "radiate";

struct RadiateSettings {
    std::int32_t x = 300, y = 300, level = 300;
};
/// A brightening zoom blur: every pixel averaged with samples on its way to a centre.
class CRadiateVideoImageEffect : public CSettingsEffect<RadiateSettings> {
 public:
    CRadiateVideoImageEffect();
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;
};

}  // namespace AVBased
