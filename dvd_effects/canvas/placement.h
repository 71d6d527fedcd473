#pragma once

#include <optional>

namespace AVBased {

/// A place on a frame, in pixels and parts of them: the pixel (0, 0) reaches from 0 to 1, its middle is at 0.5.
struct Spot {
    double x = 0, y = 0;
};

/// In pixels; with one square root in place of a library's own routine, so that it is the same everywhere.
double Distance(Spot from, Spot to);

/// Where the four corners of a layer go: a rectangle, turned, mirrored or not, or any convex quadrilateral, such as a
/// picture on a plane in space.
struct Placement {
    Spot topLeft, topRight, bottomRight, bottomLeft;

    /// A rectangle about its centre, turned clockwise.
    static Placement Turned(Spot centre, double width, double height, double degrees = 0);
    /// A rectangle whose upper side's middle is at `from` and whose lower side's middle is at `to`.
    static Placement Along(Spot from, Spot to, double width);
    /// A rectangle about its centre whose upper side runs in a direction; corners at 0 when there is none.
    static Placement Towards(Spot centre, Spot direction, double width, double height);
};

/// How far a point lies on the inner side of an edge, in pixels: a x + b y + c.
struct EdgeDistance {
    double a = 0, b = 0, c = 0;

    double At(double x, double y) const { return a * x + b * y + c; }
};

/// What hides a part of a frame wholly: the pixels whose middles lie at least a pixel inside of all edges.
struct Cover {
    EdgeDistance edges[4];
};

/// The way back from a frame to a layer.
struct Projection {
    /// u = (row 0) / (row 2) and v = (row 1) / (row 2) for a point (x, y, 1), in pixels of the layer.
    double matrix[3][3] = {};
    EdgeDistance edges[4];
    Spot least, most;  ///< the corners' bounds

    Spot At(double x, double y) const {
        const auto row = [&](int i) { return matrix[i][0] * x + matrix[i][1] * y + matrix[i][2]; };
        return {row(0) / row(2), row(1) / row(2)};
    }
    /// Whether a step on the frame is the same step on the layer everywhere.
    bool IsAffine() const { return matrix[2][0] == 0 && matrix[2][1] == 0; }
};

/// Nothing for corners that are not finite, enclose no area or are not convex.
std::optional<Projection> Project(const Placement& placement, unsigned layerWidth, unsigned layerHeight);

}  // namespace AVBased
