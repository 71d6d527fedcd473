#pragma once

#include "effects/base/settings_effect.h"
#include "effects/neighbourhood/oil_brush.h"

namespace AVBased {

inline constexpr char effectNameOilPainting[] = "oilpainting";

/// Each pixel takes the mean colour of the most frequent intensity class in the brush around it.
class COilPaintingVideoImageEffect : public CSettingsEffect<OilPaintingSettings> {
 public:
    COilPaintingVideoImageEffect();
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;
};

}  // namespace AVBased
