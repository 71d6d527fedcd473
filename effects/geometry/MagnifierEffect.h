#pragma once

#include "avbase/avbase.h"
#include "effects/base/frame_views.h"
#include "effects/base/settings_effect.h"

namespace AVBased {

inline constexpr char effectNameMagnifier[] = "magnifier";

struct MagnifierSettings {
    std::uint32_t radius = 0, x = 0, y = 0;
    double scale = 0;
};
/// A round magnifying glass: nearest samples up to factor 2, interpolated ones beyond.
class CMagnifierVideoImageEffect : public CSettingsEffect<MagnifierSettings> {
 public:
    /// With a vector unit packed pictures are interpolated in two steps, each of which truncates.
    explicit CMagnifierVideoImageEffect(unsigned cpuFeatures = AVBasedGetCPUFeatures());
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;

 private:
    bool m_vectorised;
};

}  // namespace AVBased
