#pragma once

#include <cstdint>

#include "effects/base/settings_effect.h"

/// Effects that scale a picture's opacity, or its colours, by one level: over time, or by as much at all times.
namespace AVBased {

inline constexpr char effectNameFadeIn[] = "fadein";
inline constexpr char effectNameFadeOut[] = "fadeout";
inline constexpr char effectNameDirectFadeIn[] = "directfadein";
inline constexpr char effectNameDirectFadeOut[] = "directfadeout";
inline constexpr char effectNameTransparency[] = "transparency";

/// Scales every colour byte of packed pixels by level / 256, truncated, or draws every sample of a plane towards a rest
/// value: (sample x level + rest x (256 - level) + 128) / 256. Rounded, since chroma truncated would take on a tint. A
/// level beyond 256 counts as 256, which changes nothing. Width and pitch in bytes.
void fade_in_out_direct_rgba32_c(unsigned char* data, unsigned width, unsigned pitch, unsigned height, unsigned level);
void fade_in_out_direct_component_c(unsigned char* data, unsigned width, unsigned pitch, unsigned height,
                                    unsigned level, unsigned rest);

/// Levels in 1/256. With the highest at 255, even a picture that is wholly there loses a trace of itself.
struct FadeSettings {
    std::int32_t lowest = 0, highest = 255;
};

/// What all fades do: a level from the place within the duration, by which the opacity is scaled; formats without an
/// alpha channel stay as they are.
class CFadeVideoImageEffect : public CSettingsEffect<FadeSettings> {
 public:
    enum class Direction { In, Out };

    CFadeVideoImageEffect(const char* name, Direction direction);
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;

 protected:
    virtual void Scale(IRawVideoFrame& frame, std::uint32_t level);

 private:
    // Of a position within the duration, which is not 0.
    std::uint32_t Level(std::uint32_t position, std::uint32_t duration) const;

    Direction m_direction;
};

/// The picture appears over the effect's duration.
class CFadeInVideoImageEffect : public CFadeVideoImageEffect {
 public:
    CFadeInVideoImageEffect() : CFadeVideoImageEffect(effectNameFadeIn, Direction::In) {}
};

/// The picture disappears over the effect's duration.
class CFadeOutVideoImageEffect : public CFadeVideoImageEffect {
 public:
    CFadeOutVideoImageEffect() : CFadeVideoImageEffect(effectNameFadeOut, Direction::Out) {}
};

/// What both direct fades do: the level of the other fades, applied to the colours, so that the picture comes from
/// black or goes there by itself. Each colour byte of a packed pixel becomes byte x level / 256, truncated; luma
/// becomes (luma x level + 16 x (256 - level) + 128) / 256, and chroma the same with 128 in place of 16; a level beyond
/// 256 counts as 256. Alpha stays.
class CDirectFadeEffect : public CFadeVideoImageEffect {
 public:
    using CFadeVideoImageEffect::CFadeVideoImageEffect;

 protected:
    void Scale(IRawVideoFrame& frame, std::uint32_t level) override;
};

/// The picture comes from black over the effect's duration. Deliberate: the object shares the other fade's name.
class CDirectFadeInEffect : public CDirectFadeEffect {
 public:
    CDirectFadeInEffect() : CDirectFadeEffect(effectNameFadeIn, Direction::In) {}
};

/// The picture goes to black over the effect's duration. Deliberate: the object shares the other fade's name.
class CDirectFadeOutEffect : public CDirectFadeEffect {
 public:
    CDirectFadeOutEffect() : CDirectFadeEffect(effectNameFadeOut, Direction::Out) {}
};

struct TransparencySettings {
    std::int32_t opacity = 50;  ///< per cent
};

/// The whole picture as translucent as wished, its own transparent parts the more so: alpha becomes alpha x level /
/// 256, truncated, where the level is opacity x 256 / 100. An opacity outside 0 to 100 counts as the nearer limit; at
/// 100 the picture stays. Formats without an alpha channel stay as they are.
class CTransparencyAjustEffect : public CSettingsEffect<TransparencySettings> {
 public:
    CTransparencyAjustEffect();
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;
};

}  // namespace AVBased
