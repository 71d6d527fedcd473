#pragma once

#include <cstdint>

#include "effects/neighbourhood/OilPaintingEffect.h"

namespace AVBased {

/// A picture for painting, whatever its layout: each line is three rows of bytes, one a channel, all as wide as the
/// picture. Lines are read once each, from the top, and a line is written only after it has been read.
class OilPicture {
 public:
    unsigned width = 0, height = 0;
    unsigned intensity = 0;                  ///< the channel that decides a pixel's class
    unsigned columnShift = 0, rowShift = 0;  ///< channels 1 and 2 are written for the last pixel of each such cell

    virtual void Read(unsigned y, std::uint8_t* const channel[3]) = 0;
    virtual void Write(unsigned y, const std::uint8_t* const channel[3]) = 0;

 protected:
    ~OilPicture() = default;
};

/// The intensity class, or its rank where classes are more than 256 and so all different.
constexpr std::uint8_t OilClass(std::uint8_t level, std::uint32_t coarseness) {
    return coarseness > 255 ? level : std::uint8_t(coarseness * level >> 8);
}

/// Paints with one histogram that slides along each row.
void PaintBySliding(OilPicture& picture, const OilPaintingSettings& settings, InstructionSet set);

/// Paints many pixels at once. Needs AVX2; false, with nothing done, for settings that it does not serve.
bool PaintByVectors(OilPicture& picture, const OilPaintingSettings& settings);

}  // namespace AVBased
