#pragma once

#include "effects/base/settings_effect.h"
#include "effects/neighbourhood/relief_kernel.h"

namespace AVBased {

inline constexpr char effectNameRelief[] = "relief";

struct ReliefSettings {
    std::int32_t angle = 40;
};

/// A surface lit from an angle: each sample becomes a weighted sum of the 3x3 block around it.
class CReliefVideoImageEffect : public CSettingsEffect<ReliefSettings> {
 public:
    CReliefVideoImageEffect();
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;

    static ReliefKernel Kernel(std::int32_t angle);

 private:
    void OnSettingsChanged() override { m_kernel = Kernel(m_settings.angle); }

    ReliefKernel m_kernel;
};

}  // namespace AVBased
