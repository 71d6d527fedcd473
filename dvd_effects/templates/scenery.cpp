#include "dvd_effects/templates/scenery.h"

#include "dvd_effects/canvas/painting.h"

namespace AVBased {

double Noise(unsigned seed, double x, double y) {
    const double left = WholePart(x), top = WholePart(y), across = Eased(x - left), down = Eased(y - top);
    const auto at = [&](int dx, int dy) {
        const auto column = static_cast<unsigned>(static_cast<long long>(left) + dx);
        const auto row = static_cast<unsigned>(static_cast<long long>(top) + dy);
        return Scattered(seed, column * 73856093u ^ row * 19349663u);
    };
    return Mixed(Mixed(at(0, 0), at(1, 0), across), Mixed(at(0, 1), at(1, 1), across), down);
}

Tint Wood(double x, double y) {
    constexpr double planks = 4.5, seam = 0.012;
    constexpr Tint dark{58, 35, 22}, light{128, 82, 50};
    const double plank = WholePart(y * planks), down = y * planks - plank;
    const auto seed = static_cast<unsigned>(static_cast<long long>(plank) + 8);
    const double shift = Scattered(seed, 1) * 40;
    const double bend = Noise(seed, x * 1.3 + shift, y * 3) * 0.05;
    const double streaks = Noise(seed + 50, x * 2 + shift, (y + bend) * 70);
    const double fibres = Noise(seed + 90, x * 9 + shift, (y + bend) * 400);
    const double tone = 0.2 + 0.25 * Scattered(seed, 2) + 0.35 * streaks + 0.2 * fibres;
    return Mixed(dark, light, tone) * (down < seam || down > 1 - seam ? 0.45 : 1);
}

Layer SoftShadow(LayerKind kind, double roundness) {
    const Layer shape = PlainLayer(kind, {shadowCore, shadowCore}, {0, 0, 0});
    RoundCorners(shape, roundness * shadowCore / 2);
    return ShadowOf(shape, kind, shadowBlur, {0, 0, 0});
}

}  // namespace AVBased
