#include "dvd_effects/canvas/placement.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "effects/base/correct_rounding.h"

namespace AVBased {

namespace {

// Twice the area of the triangle, positive where a, b, c run clockwise on the screen.
double Turn(const Spot& a, const Spot& b, const Spot& c) {
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

// The projection of the unit square onto the corners, inverted by its cofactors and stretched to the layer's size.
void FillMatrix(Projection& projection, const Spot (&p)[4], double width, double height) {
    const double dx1 = p[1].x - p[2].x, dx2 = p[3].x - p[2].x, dx3 = p[0].x - p[1].x + p[2].x - p[3].x;
    const double dy1 = p[1].y - p[2].y, dy2 = p[3].y - p[2].y, dy3 = p[0].y - p[1].y + p[2].y - p[3].y;
    const double whole = dx1 * dy2 - dx2 * dy1;
    const double g = (dx3 * dy2 - dx2 * dy3) / whole, h = (dx1 * dy3 - dx3 * dy1) / whole;
    const double a = p[1].x - p[0].x + g * p[1].x, b = p[3].x - p[0].x + h * p[3].x, c = p[0].x;
    const double d = p[1].y - p[0].y + g * p[1].y, e = p[3].y - p[0].y + h * p[3].y, f = p[0].y;
    const double rows[3][3] = {{(e - f * h) * width, (c * h - b) * width, (b * f - c * e) * width},
                               {(f * g - d) * height, (a - c * g) * height, (c * d - a * f) * height},
                               {d * h - e * g, b * g - a * h, a * e - b * d}};
    std::copy(&rows[0][0], &rows[0][0] + 9, &projection.matrix[0][0]);
}

}  // namespace

double Distance(Spot from, Spot to) {
    const double dx = to.x - from.x, dy = to.y - from.y;
    return std::sqrt(dx * dx + dy * dy);
}

Placement Placement::Turned(Spot centre, double width, double height, double degrees) {
    const SineAndCosine<double> turn = SineAndCosineOf(degrees * std::numbers::pi / 180);
    const auto corner = [&](double x, double y) {
        return Spot{centre.x + x * width * turn.cosine - y * height * turn.sine,
                    centre.y + x * width * turn.sine + y * height * turn.cosine};
    };
    return {corner(-0.5, -0.5), corner(0.5, -0.5), corner(0.5, 0.5), corner(-0.5, 0.5)};
}

Placement Placement::Along(Spot from, Spot to, double width) {
    const double dx = to.x - from.x, dy = to.y - from.y, length = Distance(from, to);
    // A line of no length has no direction either, and shows nothing.
    const double x = length > 0 ? -dy / length * width / 2 : 0, y = length > 0 ? dx / length * width / 2 : 0;
    return {{from.x - x, from.y - y}, {from.x + x, from.y + y}, {to.x + x, to.y + y}, {to.x - x, to.y - y}};
}

Placement Placement::Towards(Spot centre, Spot direction, double width, double height) {
    const double length = Distance({}, direction);
    if (!(length > 0)) return {};
    const double ax = direction.x / length * width / 2, ay = direction.y / length * width / 2;
    const double dx = -direction.y / length * height / 2, dy = direction.x / length * height / 2;
    const auto corner = [&](int along, int across) {
        return Spot{centre.x + along * ax + across * dx, centre.y + along * ay + across * dy};
    };
    return {corner(-1, -1), corner(1, -1), corner(1, 1), corner(-1, 1)};
}

std::optional<Projection> Project(const Placement& placement, unsigned layerWidth, unsigned layerHeight) {
    // Beyond this, neighbouring pixels are no longer distinct.
    constexpr double farthest = 1e7, leastArea = 1e-3;
    const Spot corners[4] = {placement.topLeft, placement.topRight, placement.bottomRight, placement.bottomLeft};
    const double sign = Turn(corners[0], corners[1], corners[2]) < 0 ? -1 : 1;
    Projection projection;
    projection.least = projection.most = corners[0];
    for (int i = 0; i < 4; ++i) {
        const Spot &from = corners[i], &to = corners[(i + 1) % 4];
        if (!(std::abs(from.x) < farthest && std::abs(from.y) < farthest)) return std::nullopt;
        if (!(sign * Turn(from, to, corners[(i + 2) % 4]) > leastArea)) return std::nullopt;
        const double scale = sign / Distance(from, to);
        const double a = (from.y - to.y) * scale, b = (to.x - from.x) * scale;
        projection.edges[i] = {a, b, -(a * from.x + b * from.y)};
        projection.least = {std::min(projection.least.x, from.x), std::min(projection.least.y, from.y)};
        projection.most = {std::max(projection.most.x, from.x), std::max(projection.most.y, from.y)};
    }
    FillMatrix(projection, corners, layerWidth, layerHeight);
    return projection;
}

}  // namespace AVBased
