#pragma once

#include <algorithm>

#include "dvd_effects/canvas/animation.h"
#include "dvd_effects/canvas/compositor.h"

/// What templates paint their backgrounds with. Plain arithmetic throughout, so that every machine paints the same.
namespace AVBased {

/// A colour with parts of levels, each from 0 to 255.
struct Tint {
    double red = 0, green = 0, blue = 0, alpha = 255;
    Tint operator*(double by) const { return {red * by, green * by, blue * by, alpha}; }
};
constexpr Tint Mixed(const Tint& a, const Tint& b, double part) {
    return {Mixed(a.red, b.red, part), Mixed(a.green, b.green, part), Mixed(a.blue, b.blue, part),
            Mixed(a.alpha, b.alpha, part)};
}

/// Paints each pixel of a layer in the tint that at(x, y) says of its middle. Parts of levels become a fine grain, so
/// that slow gradients show no steps.
template <class At>
void Paint(const Layer& layer, LayerKind kind, At at) {
    const PackedView view = layer.View();
    for (unsigned y = 0; y < view.height; ++y)
        for (unsigned x = 0; x < view.width; ++x) {
            const Tint tint = at(x + 0.5, y + 0.5);
            const double grain = Scattered(y + 1, x);
            const auto byte = [grain](double level) { return std::uint8_t(std::clamp(level + grain, 0.0, 255.0)); };
            const Colour colour{byte(tint.red), byte(tint.green), byte(tint.blue), byte(tint.alpha)};
            StoreWord(view.Row(y) + x, PixelOf(kind, colour));
        }
}

/// The same over all of a canvas.
template <class At>
void Paint(Canvas& canvas, LayerKind kind, At at) {
    const Layer painted(canvas.Width(), canvas.Height());
    Paint(painted, kind, at);
    canvas.Lay(painted, 0, 0);
}

/// A number from 0 to 1 that wanders gently from place to place, about once in each unit.
double Noise(unsigned seed, double x, double y);
/// The planks of a walnut table, at a place counted in heights of the menu.
Tint Wood(double x, double y);

/// A soft shadow, to be stretched under things of any size: it is shadowStretch times as large as they are. Of a
/// roundness of 0 it is square, of 1 a circle.
Layer SoftShadow(LayerKind kind, double roundness);
inline constexpr unsigned shadowCore = 84, shadowBlur = 8;
inline constexpr double shadowStretch = double(shadowCore + 2 * shadowBlur) / shadowCore;

}  // namespace AVBased
