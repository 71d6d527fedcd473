#pragma once

#include "effects/base/CBasedVideoEffect.h"
#include "effects/base/frame_views.h"

/// Four effects on each pixel by itself, without settings.
namespace AVBased {

inline constexpr char effectNameGray[] = "gray";
inline constexpr char effectNameFlipColor[] = "flip_color";
inline constexpr char effectNameInvert[] = "invert";
inline constexpr char effectNameAgedFilm[] = "aged_film";

/// Shades of grey.
class CGrayEffect : public CBasedVideoImageEffect {
 public:
    using CBasedVideoImageEffect::CBasedVideoImageEffect;
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;
};

/// Blue and red exchanged.
class CFlipColorEffect : public CBasedVideoImageEffect {
 public:
    using CBasedVideoImageEffect::CBasedVideoImageEffect;
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;
};

/// A negative.
class CInvertEffect : public CBasedVideoImageEffect {
 public:
    using CBasedVideoImageEffect::CBasedVideoImageEffect;
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;
};

/// A sepia tone.
class CAgedFilmEffect : public CBasedVideoImageEffect {
 public:
    using CBasedVideoImageEffect::CBasedVideoImageEffect;
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;
};

}  // namespace AVBased
