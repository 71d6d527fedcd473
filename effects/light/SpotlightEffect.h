#pragma once

#include "effects/base/frame_views.h"
#include "effects/base/settings_effect.h"

namespace AVBased {

inline constexpr char effectNameSpotlight[] = "spotlight";

struct SpotlightSettings {
    std::uint32_t x = 250, y = 250, radius = 200;
    std::int32_t brightness = 128;  ///< in 1/256 of full scale; the property is in per cent
    std::uint32_t colour = 0xFFFFFF;
    std::int32_t density = 40;              ///< per cent
    std::uint8_t yuv[3] = {235, 128, 128};  ///< the colour in planar frames
};

/// Every lit pixel by itself, for discs of any size: the judge of the row by row routines that serve all but huge ones.
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
