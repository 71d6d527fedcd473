#pragma once

#include "effects/base/settings_effect.h"

namespace AVBased {

inline constexpr char effectNameReverse[] = "reverse";

struct ReverseSettings {
    std::int32_t mirror = 0, vertical = 0;
};

/// Exchanges left and right, or top and bottom, or both, in every plane.
void ReverseFrame(IRawVideoFrame& frame, bool mirror, bool vertical, InstructionSet set);
/// The picture left to right, top to bottom or both. Every plane turns, alpha included; padding stays.
class CReverseVideoImageEffect : public CSettingsEffect<ReverseSettings> {
 public:
    CReverseVideoImageEffect();
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;
};

}  // namespace AVBased
