#include "dvd_effects/templates/picture_grid.h"

#include "dvd_effects/canvas/layer_maker.h"

namespace AVBased {

PictureGrid::PictureGrid(const Region& region, unsigned count, double gap)
    : m_region(region), m_corner(region.At(0, 0)), m_count(std::max(1u, count)), m_gap(gap) {}

PictureGrid PictureGrid::Spaced(const Region& region, unsigned count, double shape, double gap) {
    PictureGrid grid(region, count, gap);
    for (unsigned rows = 1; rows <= grid.m_count; ++rows) {
        const unsigned columns = (grid.m_count + rows - 1) / rows;
        const double width = (region.width - gap * (columns - 1)) / columns;
        const double height = (region.height - gap * (rows - 1)) / rows;
        const double fitting = std::min(width, height * shape);
        if (fitting > grid.m_width) grid.SetCells(columns, rows, fitting, fitting / shape);
    }
    const auto margin = [gap](double whole, unsigned cells, double size) {
        return (whole - cells * size - (cells - 1) * gap) / 2;
    };
    grid.m_corner.x += margin(region.width, grid.m_columns, grid.m_width);
    grid.m_corner.y += margin(region.height, grid.m_rows, grid.m_height);
    return grid;
}

void PictureGrid::SetCells(unsigned columns, unsigned rows, double width, double height) {
    m_columns = columns;
    m_rows = rows;
    m_width = width;
    m_height = height;
}

unsigned PictureGrid::InRow(unsigned row) const { return m_count / m_rows + (row < m_count % m_rows); }

PictureGrid::Place PictureGrid::Find(unsigned index) const {
    Place place{0, index};
    for (; place.row + 1 < m_rows && place.column >= InRow(place.row); ++place.row) place.column -= InRow(place.row);
    return place;
}

Region PictureGrid::Cell(unsigned index) const {
    const auto [row, column] = Find(index);
    const double across = m_width + m_gap, down = m_height + m_gap;
    return {m_corner.x + (m_columns - InRow(row)) * across / 2 + column * across, m_corner.y + row * down, m_width,
            m_height};
}

Spot PictureGrid::MiddleOf(unsigned index) const {
    const auto [row, column] = Find(index);
    const auto fromMiddle = [&](unsigned place, unsigned places, double size) {
        return (place - (places - 1) / 2.0) * (size + m_gap);
    };
    return {m_region.left + m_region.width / 2 + fromMiddle(column, InRow(row), m_width),
            m_region.top + m_region.height / 2 + fromMiddle(row, m_rows, m_height)};
}

FrameSize PictureGrid::CellSize() const {
    const auto side = [](double size) { return unsigned(std::clamp(size, 1.0, double(largestSide))); };
    return {side(m_width), side(m_height)};
}

}  // namespace AVBased
