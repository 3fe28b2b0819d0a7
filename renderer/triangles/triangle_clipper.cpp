// Cuts one triangle against the clip rectangle.
#include "renderer/triangles/triangle_clipper.h"

#include <algorithm>
#include <cmath>

#include "renderer/triangles/triangle_plane.h"

namespace krb {

namespace {

// Counter-clockwise with y upwards; corner k lies between side k and the next one.
enum Side { bottom, right, top, left, side_count };

struct Bounds {
    double left, right, bottom, top;

    Position corner(int k) const {
        return {k == Side::bottom || k == Side::right ? right : left, k == Side::bottom || k == Side::left ? bottom : top};
    }
};

std::int32_t rounded(double v) {
    return static_cast<std::int32_t>(std::clamp(std::floor(v + 0.5), -2147483648.0, 2147483647.0));
}

std::uint8_t rounded_byte(double v) {
    return static_cast<std::uint8_t>(std::clamp(std::floor(v + 0.5), 0.0, 255.0));
}

Position position_of(const Clip_Vertex& vertex) {
    return {static_cast<double>(vertex.point.x), static_cast<double>(vertex.point.y)};
}

// Attribute values at any place of the triangle.
class Interpolation {
public:
    explicit Interpolation(const Clip_Vertex (&triangle)[3])
        : plane_(position_of(triangle[0]), position_of(triangle[1]), position_of(triangle[2])),
          z_(plane_.gradient(z_of(triangle[0]), z_of(triangle[1]), z_of(triangle[2]))),
          u_(plane_.gradient<float>(triangle[0].u, triangle[1].u, triangle[2].u)),
          v_(plane_.gradient<float>(triangle[0].v, triangle[1].v, triangle[2].v)) {
        const auto channel = [&](std::uint8_t VT_RGB32::*byte) {
            return plane_.gradient<float>(triangle[0].color.*byte, triangle[1].color.*byte, triangle[2].color.*byte);
        };
        blue_ = channel(&VT_RGB32::blue);
        green_ = channel(&VT_RGB32::green);
        red_ = channel(&VT_RGB32::red);
        alpha_ = channel(&VT_RGB32::alpha);
    }

    Clip_Vertex vertex_at(Position at) const {
        return {{rounded(at.x), rounded(at.y), rounded(plane_.value_at(z_, at))},
                {rounded_byte(plane_.value_at(blue_, at)), rounded_byte(plane_.value_at(green_, at)),
                 rounded_byte(plane_.value_at(red_, at)), rounded_byte(plane_.value_at(alpha_, at))},
                static_cast<float>(plane_.value_at(u_, at)),
                static_cast<float>(plane_.value_at(v_, at))};
    }

    bool counter_clockwise() const { return plane_.determinant() > 0; }

private:
    static double z_of(const Clip_Vertex& vertex) { return vertex.point.z; }

    Triangle_Plane plane_;
    Triangle_Plane::Gradient<double> z_;
    Triangle_Plane::Gradient<float> u_, v_, blue_{}, green_{}, red_{}, alpha_{};
};

// The part of an edge inside the bounds, as parameters along it, and the sides at which it enters and leaves.
struct Visible_Edge {
    double entering = 0, leaving = 1;
    int entry_side = side_count, exit_side = side_count;
    bool exists = true;

    Visible_Edge(Position from, Position to, const Bounds& bounds) {
        const double dx = to.x - from.x;
        const double dy = to.y - from.y;
        cut(-dy, from.y - bounds.bottom, Side::bottom);
        cut(dx, bounds.right - from.x, Side::right);
        cut(dy, bounds.top - from.y, Side::top);
        cut(-dx, from.x - bounds.left, Side::left);
        // The tolerance keeps edges that only touch a corner.
        constexpr double tolerance = 1e-12F;
        exists = exists && entering <= leaving + tolerance;
    }

private:
    // speed: how fast the edge goes out of the side; distance: how far inside it starts.
    void cut(double speed, double distance, int side) {
        if (speed == 0) {
            exists = exists && distance >= 0;
        } else if (const double parameter = distance / speed; speed < 0) {
            if (parameter > entering) {
                entering = parameter;
                entry_side = side;
            }
        } else if (parameter < leaving) {
            leaving = parameter;
            exit_side = side;
        }
    }
};

// The outline of the triangle. One without area contains nothing.
class Outline {
public:
    explicit Outline(const Clip_Vertex (&triangle)[3]) {
        for (int i = 0; i < 3; ++i) {
            corners_[i] = position_of(triangle[i]);
        }
    }

    Position operator[](int i) const { return corners_[i % 3]; }

    bool contains(Position point) const {
        bool left_of = false;
        bool right_of = false;
        for (int i = 0; i < 3; ++i) {
            const double turn = cross(corners_[i], (*this)[i + 1], point);
            left_of = left_of || turn > 0;
            right_of = right_of || turn < 0;
        }
        return left_of != right_of && cross(corners_[0], corners_[1], corners_[2]) != 0;
    }

private:
    static double cross(Position a, Position b, Position c) { return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x); }

    Position corners_[3];
};

// The corners of the polygon in boundary order.
class Boundary {
public:
    Boundary(const Bounds& bounds, const Outline& outline, const Interpolation& interpolation)
        : bounds_(bounds), outline_(outline), interpolation_(interpolation) {}

    void add(Position at, const Clip_Vertex& vertex) {
        if (count_ > 0 && at == last_) {
            return;
        }
        if (count_ < Clipped_Polygon::most_vertices) {
            vertices_[count_] = vertex;
        }
        ++count_;
        last_ = at;
    }
    void add(Position at) { add(at, interpolation_.vertex_at(at)); }

    // The rectangle's corners on the way from one side to another, in the triangle's turning direction. Only corners inside the
    // triangle: the way past a corner that a sliver's edges just miss would lead round the whole rectangle.
    void add_corners(int from, int to) {
        while (from != to) {
            const bool forwards = interpolation_.counter_clockwise();
            const int next = forwards ? (from + 1) % side_count : (from + side_count - 1) % side_count;
            add_corner(forwards ? from : next);
            from = next;
        }
    }
    void add_corner(int corner) {
        if (outline_.contains(bounds_.corner(corner))) {
            add(bounds_.corner(corner));
        }
    }

    int count() const { return count_; }
    const Clip_Vertex& operator[](int i) const { return vertices_[i]; }

private:
    const Bounds& bounds_;
    const Outline& outline_;
    const Interpolation& interpolation_;
    Clip_Vertex vertices_[Clipped_Polygon::most_vertices];
    Position last_{};
    int count_ = 0;
};

void put_in_strip_order(const Boundary& boundary, Clipped_Polygon& polygon) {
    polygon.count = boundary.count();
    for (int i = 0; i < polygon.count; ++i) {
        // The first corner, then by turns from the front and from the back.
        const Clip_Vertex& vertex = boundary[i == 0 ? 0 : i % 2 == 1 ? (i + 1) / 2 : polygon.count - i / 2];
        polygon.points[i] = vertex.point;
        polygon.colors[i] = vertex.color;
        polygon.u[i] = vertex.u;
        polygon.v[i] = vertex.v;
    }
}

} // namespace

std::int32_t clip_triangle_to_rectangle(const VT_Int_Rectangle& rectangle, const Clip_Vertex (&triangle)[3],
                                        Clipped_Polygon& polygon) {
    const Bounds bounds{double(rectangle.left), double(rectangle.right) + 1, double(rectangle.bottom), double(rectangle.top) + 1};
    const Interpolation interpolation(triangle);
    const Outline corners(triangle);
    Boundary boundary(bounds, corners, interpolation);

    int first_entry = side_count;
    int last_exit = side_count;
    bool any = false;
    for (int i = 0; i < 3; ++i) {
        const Position from = corners[i];
        const Position to = corners[i + 1];
        const Visible_Edge edge(from, to, bounds);
        if (!edge.exists) {
            continue;
        }
        any = true;
        const auto at = [&](double parameter, int side) {
            Position position{from.x + parameter * (to.x - from.x), from.y + parameter * (to.y - from.y)};
            // Crossings lie on their side exactly.
            if (side == Side::left || side == Side::right) {
                position.x = side == Side::left ? bounds.left : bounds.right;
            } else {
                position.y = side == Side::bottom ? bounds.bottom : bounds.top;
            }
            return position;
        };
        if (edge.entry_side == side_count) {
            boundary.add(from, triangle[i]);
        } else {
            if (last_exit != side_count) {
                boundary.add_corners(last_exit, edge.entry_side);
                last_exit = side_count;
            } else if (first_entry == side_count) {
                first_entry = edge.entry_side;
            }
            boundary.add(at(edge.entering, edge.entry_side));
        }
        if (edge.exit_side != side_count) {
            boundary.add(at(edge.leaving, edge.exit_side));
            last_exit = edge.exit_side;
        }
    }
    if (last_exit != side_count && first_entry != side_count) {
        boundary.add_corners(last_exit, first_entry);
    }
    if (!any) {
        for (int k = 0; k < side_count; ++k) {
            boundary.add_corner(interpolation.counter_clockwise() ? k : side_count - 1 - k);
        }
    }
    if (boundary.count() < 3 || boundary.count() > Clipped_Polygon::most_vertices) {
        polygon.count = 0;
        return 0;
    }
    put_in_strip_order(boundary, polygon);
    return polygon.count;
}

} // namespace krb
