#include "dvd_effects/canvas/laying.h"

#include <algorithm>

#include "dvd_effects/canvas/compositor.h"

namespace AVBased {

double Laying::CoverageAt(Spot at) const {
    if (at.x < window.xBegin || at.x >= window.xEnd || at.y < window.yBegin || at.y >= window.yEnd) return 0;
    for (const EdgeDistance& edge : projection.edges)
        if (edge.At(at.x, at.y) < 0) return 0;
    const auto pixel = [](double place, unsigned side) {
        return unsigned(std::clamp(place, 0.0, std::max(side, 1u) - 1.0));
    };
    const Spot on = projection.At(at.x, at.y);
    const PackedView view = layer.View();
    const double most = opacity / 255.0;
    if (!map) return most * view.Row(pixel(on.y, view.height))[pixel(on.x, view.width)].alpha / 255;
    const std::size_t index = std::size_t(pixel(on.y, map->height)) * map->width + pixel(on.x, map->width);
    const auto column = unsigned(map->sourceColumns[index]), line = unsigned(map->sourceRows[index]);
    const unsigned shown = std::min(map->coverage[index], coveragePanel);
    return view.Contains(column, line) ? most * shown / coveragePanel * view.Row(line)[column].alpha / 255 : 0;
}

}  // namespace AVBased
