#pragma once

#include <cstdint>

namespace Nifikral {

/// The part of a colour that the eye takes for its brightness, from 0 (black) to 1 (white); levels are 0 to 255.
double Luminance(double red, double green, double blue);
/// How well two luminances stand out from each other: 1, alike, to 21, black and white.
double Contrast(double one, double other);

/// A shade, as 0xAARRGGBB, that keeps a text readable over anything: dark behind light text, light behind dark text,
/// with a contrast of 5 to 1 at least where the text's colour is not of a middle brightness. It is as transparent
/// as that allows.
std::uint32_t ShadeFor(std::uint8_t red, std::uint8_t green, std::uint8_t blue);

}  // namespace Nifikral
