#pragma once

#include "effects/base/CBasedVideoEffect.h"

namespace AVBased {

inline constexpr char effectNameErode[] = "erode";
inline constexpr char effectNameDilate[] = "dilate";

/// Dark areas grow: each sample becomes the least of the 3x3 block below and to the right of it.
class CErodeVideoImageEffect : public CBasedVideoImageEffect {
 public:
    CErodeVideoImageEffect() : CBasedVideoImageEffect(effectNameErode) {}
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;
};

/// Bright areas grow: each sample becomes the greatest of the 3x3 block above and to the right of it.
class CDilateVideoImageEffect : public CBasedVideoImageEffect {
 public:
    CDilateVideoImageEffect() : CBasedVideoImageEffect(effectNameDilate) {}
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;
};

}  // namespace AVBased
