#pragma once

#include "effects/base/frame_views.h"
#include "effects/base/settings_effect.h"
#include "effects/light/spotlight_disc.h"

namespace AVBased {

inline constexpr char effectNameSpotlight[] = "spotlight";

/// Every lit pixel by itself, for discs of any size; row by row routines serve all but huge ones.
void SpotlightRgba32Effect(const SpotlightSettings& settings, const PackedView& picture);
void SpotlightComponentEffect(const SpotlightSettings& settings, const PlanarView& picture);

/// A disc lit: tinted towards a colour and brightened, fully in the core, fading out across a ring. A radius below 2
/// lights nothing.
class CSpotlightVideoImageEffect : public CSettingsEffect<SpotlightSettings> {
 public:
    CSpotlightVideoImageEffect();
    void OnSetProperty(const std::string& name, PropertyNode& node) override;
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;
};

}  // namespace AVBased
