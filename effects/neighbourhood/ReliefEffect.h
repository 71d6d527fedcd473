#pragma once

#include <array>

#include "effects/base/frame_views.h"
#include "effects/base/settings_effect.h"

namespace AVBased {

inline constexpr char effectNameRelief[] = "relief";

/// The weights of a 3x3 block in 256ths, row by row.
using ReliefKernel = std::array<std::int32_t, 9>;

/// The filter on packed pixels, whose fourth bytes come from below and to the right, and on a plane of bytes.
void ReliefRgba32Effect(PackedView picture, const ReliefKernel& kernel);
void ReliefComponentEffect(ComponentView plane, const ReliefKernel& kernel);
extern const Variants<decltype(ReliefRgba32Effect)> reliefRgba32Variants;
extern const Variants<decltype(ReliefComponentEffect)> reliefComponentVariants;

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
