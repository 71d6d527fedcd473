#pragma once

#include "effects/CBasedVideoEffect.h"

namespace AVBased {

inline constexpr char effectNameReverse[] = "reverse";

struct ReverseSettings {
    std::int32_t mirror = 0, vertical = 0;
};

/// The picture left to right, top to bottom or both. Every plane turns, alpha included; padding stays.
class CReverseVideoImageEffect : public CBasedVideoImageEffect {
 public:
    CReverseVideoImageEffect();
    void OnSetProperty(const std::string& name, PropertyNode& node) override;
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;

 private:
    ReverseSettings m_settings;
};

}  // namespace AVBased
