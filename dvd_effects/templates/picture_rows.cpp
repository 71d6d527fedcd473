#include "dvd_effects/templates/picture_rows.h"

namespace AVBased {

namespace {

// Pictures that follow one another; `shape` is theirs side by side, without gaps.
struct Row {
    unsigned count = 0;
    double shape = 0;
};

// About equally wide rows.
std::vector<Row> Divided(std::span<const double> shapes, unsigned count) {
    double all = 0, before = 0;
    for (const double shape : shapes) all += shape;
    std::vector<Row> rows(count);
    for (const double shape : shapes) {
        Row& row = rows[std::min(count - 1, unsigned((before + shape / 2) * count / all))];
        ++row.count;
        row.shape += shape;
        before += shape;
    }
    return rows;
}

double HighestOf(const std::vector<Row>& rows, const Region& region, double gap) {
    double height = (region.height - gap * double(rows.size() - 1)) / double(rows.size());
    for (const Row& row : rows)
        if (row.count) height = std::min(height, (region.width - gap * (row.count - 1)) / row.shape);
    return height;
}

}  // namespace

PictureRows::PictureRows(const Region& region, std::span<const double> shapes, double gap) {
    if (shapes.empty()) return;
    std::vector<Row> best = Divided(shapes, 1);
    double height = HighestOf(best, region, gap);
    for (unsigned count = 2; count <= shapes.size(); ++count) {
        std::vector<Row> rows = Divided(shapes, count);
        const double higher = HighestOf(rows, region, gap);
        if (higher <= height) continue;
        height = higher;
        best = std::move(rows);
    }
    height = std::max(height, 1.0);
    const double down = (region.height - height * double(best.size())) / double(best.size() + 1);
    double top = region.top + down;
    for (const Row& row : best) {
        const double across = (region.width - height * row.shape) / (row.count + 1);
        double left = region.left + across;
        for (unsigned i = 0; i < row.count; ++i) {
            const double width = height * shapes[m_places.size()];
            m_places.push_back({left, top, width, height});
            left += width + across;
        }
        top += height + down;
    }
}

}  // namespace AVBased
