#include "dvd_effects/canvas/pile.h"

#include <algorithm>

namespace AVBased {

void Pile::Put(const Layer& layer, const Placement& placement, std::uint8_t opacity, bool isOpaque) {
    const auto projection = opacity ? Project(placement, layer.Width(), layer.Height()) : std::nullopt;
    if (!projection) return;
    Sheet& sheet = m_sheets.emplace_back(
        Sheet{&layer, placement, opacity, isOpaque && opacity == 255, projection->least, projection->most, {}});
    std::copy(std::begin(projection->edges), std::end(projection->edges), sheet.cover.edges);
}

void Pile::Draw(Canvas& canvas) const {
    std::vector<Cover> covers;
    for (auto sheet = m_sheets.begin(); sheet != m_sheets.end(); ++sheet) {
        covers.clear();
        for (auto above = sheet + 1; above != m_sheets.end(); ++above)
            if (above->hides && above->least.x < sheet->most.x && above->most.x > sheet->least.x &&
                above->least.y < sheet->most.y && above->most.y > sheet->least.y)
                covers.push_back(above->cover);
        canvas.LayTransformed(*sheet->layer, sheet->placement, sheet->opacity, everything, covers);
    }
}

}  // namespace AVBased
