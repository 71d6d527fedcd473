#pragma once

#include "dvd_effects/canvas/layer.h"
#include "dvd_effects/canvas/placement.h"

namespace AVBased {

/// A part of the menu, in pixels.
struct Region {
    double left = 0, top = 0, width = 0, height = 0;
};

/// Places for a number of pictures: in rows as even as can be, as large as `shape` (width by height) lets them be in an
/// area, `gap` pixels apart, all in the middle of it.
class CellGrid {
 public:
    CellGrid(const Region& area, unsigned count, double shape, double gap);

    /// The middle of a cell.
    Spot PlaceOf(unsigned index) const;
    /// A cell in whole pixels, at least one and never above what a picture may have.
    FrameSize Cell() const;
    unsigned Rows() const { return m_rows; }
    unsigned RowOf(unsigned index) const;

 private:
    // The first rows have one cell more where the rows do not come out even.
    unsigned InRow(unsigned row) const { return m_count / m_rows + (row < m_count % m_rows); }

    Region m_area;
    unsigned m_count, m_rows = 1;
    double m_gap, m_width = 0, m_height = 0;
};

}  // namespace AVBased
