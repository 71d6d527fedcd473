#pragma once

#include "effects/base/CBasedVideoEffect.h"

namespace AVBased {

inline constexpr char effectNameOilPainting[] = "oilpainting";

struct OilPaintingSettings {
    std::uint32_t radius = 3;       ///< the brush is a square of side 2 x radius + 1
    std::uint32_t coarseness = 50;  ///< intensity classes 0 to coarseness; the registered text says 3
};

/// Each pixel takes the mean colour of the most frequent intensity class in the brush around it.
class COilPaintingVideoImageEffect : public CBasedVideoImageEffect {
 public:
    COilPaintingVideoImageEffect();
    void OnSetProperty(const std::string& name, PropertyNode& node) override;
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;

 private:
    OilPaintingSettings m_settings;
};

}  // namespace AVBased
