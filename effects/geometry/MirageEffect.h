#pragma once

#include "effects/base/CBasedVideoEffect.h"
#include "effects/base/frame_views.h"

namespace AVBased {

inline constexpr char effectNameMirage[] = "mirage";

struct MirageSettings {
    std::uint32_t width = 10, alpha = 10;
};

/// A slightly enlarged, centred copy of the picture blended over the picture.
class CMirageVideoImageEffect : public CBasedVideoImageEffect {
 public:
    CMirageVideoImageEffect();
    void OnSetProperty(const std::string& name, PropertyNode& node) override;
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;

 private:
    MirageSettings m_settings;
};

}  // namespace AVBased
