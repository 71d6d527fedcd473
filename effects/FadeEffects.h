#pragma once

#include <cstdint>

#include "effects/CBasedVideoEffect.h"

/// Two effects over time that scale a picture's opacity and leave its colours.
namespace AVBased {

inline constexpr char effectNameFadeIn[] = "fadein";
inline constexpr char effectNameFadeOut[] = "fadeout";

/// What both fades do; formats without an alpha channel stay as they are.
class CFadeVideoImageEffect : public CBasedVideoImageEffect {
 public:
    enum class Direction { In, Out };
    /// Opacity in 1/256. With the highest at 255, even a picture that is wholly there loses a trace of its alpha.
    struct Settings {
        std::int32_t lowest = 0, highest = 255;
    };

    CFadeVideoImageEffect(const char* name, Direction direction);
    void OnSetProperty(const std::string& name, PropertyNode& node) override;
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;

 private:
    // Of a position within the duration, which is not 0.
    std::uint32_t Level(std::uint32_t position, std::uint32_t duration) const;

    Direction m_direction;
    Settings m_settings;
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

}  // namespace AVBased
