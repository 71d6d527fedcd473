#pragma once

#include "effects/base/CBasedVideoEffect.h"
#include "effects/base/frame_views.h"

namespace AVBased {

inline constexpr char effectNameRadiate[] = "radiate";

struct RadiateSettings {
    std::int32_t x = 300, y = 300, level = 300;
};

/// A brightening zoom blur: every pixel averaged with samples on its way to a centre.
class CRadiateVideoImageEffect : public CBasedVideoImageEffect {
 public:
    CRadiateVideoImageEffect();
    void OnSetProperty(const std::string& name, PropertyNode& node) override;
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;

 private:
    RadiateSettings m_settings;
};

}  // namespace AVBased
