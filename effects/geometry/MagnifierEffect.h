#pragma once

#include "avbase/avbase.h"
#include "effects/base/CBasedVideoEffect.h"
#include "effects/base/frame_views.h"

namespace AVBased {

inline constexpr char effectNameMagnifier[] = "magnifier";

struct MagnifierSettings {
    std::uint32_t radius = 0, x = 0, y = 0;
    double scale = 0;
};

/// A round magnifying glass: nearest samples up to factor 2, interpolated ones beyond.
class CMagnifierVideoImageEffect : public CBasedVideoImageEffect {
 public:
    /// With a vector unit packed pictures are interpolated in two steps, each of which truncates.
    explicit CMagnifierVideoImageEffect(unsigned cpuFeatures = AVBasedGetCPUFeatures());
    void OnSetProperty(const std::string& name, PropertyNode& node) override;
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;

 private:
    MagnifierSettings m_settings;
    bool m_vectorised;
};

}  // namespace AVBased
