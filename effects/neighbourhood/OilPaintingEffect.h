#pragma once

#include "effects/base/settings_effect.h"

namespace AVBased {

inline constexpr char effectNameOilPainting[] = "oilpainting";

struct OilPaintingSettings {
    std::uint32_t radius = 3;       ///< the brush is a square of side 2 x radius + 1
    std::uint32_t coarseness = 50;  ///< intensity classes 0 to coarseness; the registered text says 3
};
/// Each pixel takes the mean colour of the most frequent intensity class in the brush around it.
class COilPaintingVideoImageEffect : public CSettingsEffect<OilPaintingSettings> {
 public:
    COilPaintingVideoImageEffect();
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;
};

}  // namespace AVBased
