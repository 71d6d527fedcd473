#include "host/films/readable_shade.h"

#include <algorithm>
#include <cmath>

namespace Nifikral {
namespace {

double Linear(double level) {
    const double part = level / 255;
    return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
}

}  // namespace

double Luminance(double red, double green, double blue) {
    return 0.2126 * Linear(red) + 0.7152 * Linear(green) + 0.0722 * Linear(blue);
}

double Contrast(double one, double other) { return (std::max(one, other) + 0.05) / (std::min(one, other) + 0.05); }

std::uint32_t ShadeFor(std::uint8_t red, std::uint8_t green, std::uint8_t blue) {
    constexpr double readable = 5;
    constexpr std::uint32_t dark[] = {0x10, 0x14, 0x20}, light[] = {0xFF, 0xFF, 0xFF};
    const double text = Luminance(red, green, blue);
    const bool isLight = Contrast(text, 0) > Contrast(text, 1);
    const auto& shade = isLight ? dark : light;
    // Over what is worst.
    const double under = isLight ? 255 : 0;
    const auto mixed = [&](int channel, std::uint32_t alpha) {
        return (shade[channel] * alpha + under * (255 - alpha)) / 255;
    };
    std::uint32_t alpha = 0x60;
    while (alpha < 0xF0 && Contrast(text, Luminance(mixed(0, alpha), mixed(1, alpha), mixed(2, alpha))) < readable)
        alpha += 8;
    return alpha << 24 | shade[0] << 16 | shade[1] << 8 | shade[2];
}

}  // namespace Nifikral
