#pragma once

#include "avbase/avbase.h"
#include "effects/base/settings_effect.h"
#include "effects/geometry/magnifier_arithmetic.h"

namespace AVBased {

inline constexpr char effectNameMagnifier[] = "magnifier";

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
