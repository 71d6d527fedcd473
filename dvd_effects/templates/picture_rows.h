#pragma once

#include <span>
#include <vector>

#include "dvd_effects/templates/picture_grid.h"

namespace AVBased {

/// Places for pictures of any shapes, in their order in rows: all of one height, the largest that fits, and evenly
/// spread over a region.
class PictureRows {
 public:
    /// `shapes` are widths by heights; pictures stand at least about `gap` pixels apart.
    PictureRows(const Region& region, std::span<const double> shapes, double gap);

    const Region& operator[](unsigned index) const { return m_places[index]; }

 private:
    std::vector<Region> m_places;
};

}  // namespace AVBased
