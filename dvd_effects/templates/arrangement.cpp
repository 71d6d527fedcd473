#include "dvd_effects/templates/arrangement.h"

#include <algorithm>

#include "dvd_effects/canvas/layer_maker.h"

namespace AVBased {

CellGrid::CellGrid(const Region& area, unsigned count, double shape, double gap)
    : m_area(area), m_count(std::max(1u, count)), m_gap(gap) {
    for (unsigned rows = 1; rows <= m_count; ++rows) {
        const unsigned columns = (m_count + rows - 1) / rows;
        const double width = (area.width - gap * (columns - 1)) / columns;
        const double height = (area.height - gap * (rows - 1)) / rows;
        const double fitting = std::min(width, height * shape);
        if (fitting <= m_width) continue;
        m_rows = rows;
        m_width = fitting;
        m_height = fitting / shape;
    }
}

unsigned CellGrid::RowOf(unsigned index) const {
    unsigned row = 0;
    for (unsigned left = index; row + 1 < m_rows && left >= InRow(row); ++row) left -= InRow(row);
    return row;
}

Spot CellGrid::PlaceOf(unsigned index) const {
    const unsigned row = RowOf(index);
    unsigned column = index;
    for (unsigned above = 0; above < row; ++above) column -= InRow(above);
    const auto middle = [&](unsigned place, unsigned places, double size) {
        return (place - (places - 1) / 2.0) * (size + m_gap);
    };
    return {m_area.left + m_area.width / 2 + middle(column, InRow(row), m_width),
            m_area.top + m_area.height / 2 + middle(row, m_rows, m_height)};
}

FrameSize CellGrid::Cell() const {
    const auto side = [](double size) { return unsigned(std::clamp(size, 1.0, double(largestSide))); };
    return {side(m_width), side(m_height)};
}

}  // namespace AVBased
