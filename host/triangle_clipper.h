// Cuts a triangle to a rectangle of pixels. Renderers and the host use the same code, so that both draw the same pieces.
#pragma once

#include <algorithm>
#include <cstdint>

#include "host/color.h"
#include "host/geometry.h"
#include "host/rounding.h"
#include "host/segment_clip.h"
#include "host/strip.h"
#include "host/triangle_plane.h"

namespace vorna {

// A corner of a triangle, in whole device pixels or in doubles. Callers that do not need colour or texture parameters may leave
// them unset.
template <class Point> struct Clip_Vertex {
    Point point;
    VT_RGB32 color;
    float u, v;
};

// The type of the gradients of colours and texture parameters: float for whole points, which fixes the pixels of cut triangles;
// double for points that may be far away.
template <class Point> struct Gradient_Precision { using type = double; };
template <> struct Gradient_Precision<VT_DCI_Point> { using type = float; };

// A convex polygon of up to eight corners as a strip of count - 2 triangles, see strip_order.
struct Clipped_Polygon {
    static constexpr std::int32_t most_vertices = 8;

    std::int32_t count;
    VT_DCI_Point points[most_vertices];
    VT_RGB32 colors[most_vertices];
    float u[most_vertices], v[most_vertices];
};

namespace triangle_clipper {

// Sides in counter-clockwise order, y upwards. Corner k of the rectangle lies between side k and the next one.
enum Side { bottom, right, top, left, side_count };
static_assert(side_count == Segment_Part::no_side);

// The outer edges of the outermost pixels. Right and top are one greater than the last column and row, because areas are filled
// up to but not including their right and upper side.
struct Bounds {
    double left, right, bottom, top;

    explicit Bounds(const VT_Int_Rectangle& pixels) noexcept
        : left(pixels.left), right(double(pixels.right) + 1), bottom(pixels.bottom), top(double(pixels.top) + 1) {}

    Position corner(int k) const noexcept {
        return {k == Side::bottom || k == Side::right ? right : left, k == Side::bottom || k == Side::left ? bottom : top};
    }
};

inline std::uint8_t rounded_byte(double v) noexcept {
    return static_cast<std::uint8_t>(nearest_integer(v, 0, 255));
}

inline VT_DCI_Point whole_point(const VT_DCI_Point& point) noexcept {
    return point;
}

inline VT_DCI_Point whole_point(const VT_Point_D& point) noexcept {
    return rounded_point(point);
}

struct Corner {
    VT_DCI_Point point;
    VT_RGB32 color;
    float u, v;
};

// A triangle and its attributes, interpolated at any position.
template <class Point> class Triangle {
public:
    explicit Triangle(const Clip_Vertex<Point> (&vertices)[3]) noexcept
        : vertices_(vertices), corners_{position_of(vertices[0]), position_of(vertices[1]), position_of(vertices[2])},
          plane_(corners_[0], corners_[1], corners_[2]),
          z_(gradient<double>([](const Vertex& of) { return double(of.point.z); })),
          u_(gradient<Value>([](const Vertex& of) { return Value{of.u}; })),
          v_(gradient<Value>([](const Vertex& of) { return Value{of.v}; })),
          blue_(gradient<Value>([](const Vertex& of) { return Value(of.color.blue); })),
          green_(gradient<Value>([](const Vertex& of) { return Value(of.color.green); })),
          red_(gradient<Value>([](const Vertex& of) { return Value(of.color.red); })),
          alpha_(gradient<Value>([](const Vertex& of) { return Value(of.color.alpha); })) {}

    Position operator[](int i) const noexcept { return corners_[i % 3]; }
    bool counter_clockwise() const noexcept { return plane_.determinant() > 0; }

    // A triangle without area contains no point.
    bool contains(Position point) const noexcept {
        bool left_of = false;
        bool right_of = false;
        for (int i = 0; i < 3; ++i) {
            const double turn = cross(corners_[i], (*this)[i + 1], point);
            left_of = left_of || turn > 0;
            right_of = right_of || turn < 0;
        }
        return left_of != right_of && cross(corners_[0], corners_[1], corners_[2]) != 0;
    }

    // A corner of the polygon. At a vertex of the triangle it has the attributes of the vertex, since interpolation over a long
    // triangle is inexact. Positions are clamped to the bounds, because rounding errors of far corners can lead out of them.
    Corner corner_at(Position at, const Bounds& bounds) const noexcept {
        for (int i = 0; i < 3; ++i) {
            if (at == corners_[i]) {
                const Vertex& own = vertices_[i];
                return {whole_point(own.point), own.color, own.u, own.v};
            }
        }
        return {{nearest_integer(std::clamp(at.x, bounds.left, bounds.right)),
                 nearest_integer(std::clamp(at.y, bounds.bottom, bounds.top)), nearest_integer(plane_.value_at(z_, at))},
                {rounded_byte(plane_.value_at(blue_, at)), rounded_byte(plane_.value_at(green_, at)),
                 rounded_byte(plane_.value_at(red_, at)), rounded_byte(plane_.value_at(alpha_, at))},
                static_cast<float>(plane_.value_at(u_, at)),
                static_cast<float>(plane_.value_at(v_, at))};
    }

private:
    using Vertex = Clip_Vertex<Point>;
    using Value = typename Gradient_Precision<Point>::type;

    static Position position_of(const Vertex& vertex) noexcept { return {double(vertex.point.x), double(vertex.point.y)}; }
    static double cross(Position a, Position b, Position c) noexcept {
        return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
    }
    template <class Kept, class Attribute> Triangle_Plane::Gradient<Kept> gradient(Attribute of) const noexcept {
        return plane_.gradient<Kept>(of(vertices_[0]), of(vertices_[1]), of(vertices_[2]));
    }

    const Vertex (&vertices_)[3];
    Position corners_[3];
    Triangle_Plane plane_;
    Triangle_Plane::Gradient<double> z_;
    Triangle_Plane::Gradient<Value> u_, v_, blue_, green_, red_, alpha_;
};

// The part of an edge inside the bounds, and the sides where it enters and leaves.
inline Segment_Part visible_part(Position from, Position to, const Bounds& bounds) noexcept {
    const double dx = to.x - from.x;
    const double dy = to.y - from.y;
    Segment_Part part;
    part.cut_at(Side::bottom, -dy, from.y - bounds.bottom);
    part.cut_at(Side::right, dx, bounds.right - from.x);
    part.cut_at(Side::top, dy, bounds.top - from.y);
    part.cut_at(Side::left, -dx, from.x - bounds.left);
    return part;
}

// The corners of the polygon in boundary order. Adjacent corners have different positions, also the last and the first one.
template <class Point> class Boundary {
public:
    Boundary(const Bounds& bounds, const Triangle<Point>& triangle) noexcept : bounds_(bounds), triangle_(triangle) {}

    void add(Position at) noexcept {
        if (count_ > 0 && at == last_) {
            return;
        }
        if (count_ < Clipped_Polygon::most_vertices) {
            corners_[count_] = triangle_.corner_at(at, bounds_);
        }
        first_ = count_ == 0 ? at : first_;
        last_ = at;
        ++count_;
    }
    // Adds the corners of the rectangle between two sides, in the orientation of the triangle. Corners outside the triangle are
    // left out: the edges of a sliver may leave and enter so close to a corner that the path goes around the whole rectangle.
    void add_corners(int from, int to) noexcept {
        while (from != to) {
            const bool forwards = triangle_.counter_clockwise();
            const int next = forwards ? (from + 1) % side_count : (from + side_count - 1) % side_count;
            add_corner(forwards ? from : next);
            from = next;
        }
    }
    void add_corner(int corner) noexcept {
        if (triangle_.contains(bounds_.corner(corner))) {
            add(bounds_.corner(corner));
        }
    }

    // Writes the polygon in strip order and returns the count of its corners; 0 when there are fewer than 3.
    std::int32_t put_into(Clipped_Polygon& polygon) const noexcept {
        const std::int32_t count = count_ > 1 && last_ == first_ ? count_ - 1 : count_;
        polygon.count = count < 3 || count > Clipped_Polygon::most_vertices ? 0 : count;
        for (std::int32_t i = 0; i < polygon.count; ++i) {
            const Corner& corner = corners_[strip_order(i, count)];
            polygon.points[i] = corner.point;
            polygon.colors[i] = corner.color;
            polygon.u[i] = corner.u;
            polygon.v[i] = corner.v;
        }
        return polygon.count;
    }

private:
    const Bounds& bounds_;
    const Triangle<Point>& triangle_;
    Corner corners_[Clipped_Polygon::most_vertices];
    Position first_{}, last_{};
    std::int32_t count_ = 0;
};

} // namespace triangle_clipper

// Cuts a triangle to the outer edges of the rectangle's outermost pixels. The edges are cut by the method of Liang and Barsky,
// the attributes of new corners are those of the triangle's plane. Where the boundary leaves through one side and enters through
// another, the corners of the rectangle between the two are inserted. Returns the count of corners, 0 when there is nothing to
// draw.
template <class Point>
std::int32_t clip_triangle_to_rectangle(const VT_Int_Rectangle& rectangle, const Clip_Vertex<Point> (&vertices)[3],
                                        Clipped_Polygon& polygon) noexcept {
    using namespace triangle_clipper;
    if (is_empty(rectangle)) {
        return polygon.count = 0;
    }
    const Bounds bounds(rectangle);
    const Triangle<Point> triangle(vertices);
    Boundary<Point> boundary(bounds, triangle);

    int first_entry = side_count;
    int last_exit = side_count;
    bool any = false;
    for (int i = 0; i < 3; ++i) {
        const Position from = triangle[i];
        const Position to = triangle[i + 1];
        const Segment_Part edge = visible_part(from, to, bounds);
        // The tolerance keeps edges that only touch a corner of the rectangle.
        constexpr double tolerance = 1e-12F;
        if (!edge.is_visible(tolerance)) {
            continue;
        }
        any = true;
        const auto at = [&](double parameter, int side) {
            // A crossing has exactly the coordinate of its side; a vertex on a side keeps its position.
            if (parameter == 1) {
                return to;
            }
            Position position{from.x + parameter * (to.x - from.x), from.y + parameter * (to.y - from.y)};
            if (side == Side::left || side == Side::right) {
                position.x = side == Side::left ? bounds.left : bounds.right;
            } else {
                position.y = side == Side::bottom ? bounds.bottom : bounds.top;
            }
            return position;
        };
        if (edge.entry_side == side_count) {
            boundary.add(from);
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
            boundary.add_corner(triangle.counter_clockwise() ? k : side_count - 1 - k);
        }
    }
    return boundary.put_into(polygon);
}

// A cut triangle with texture parameters: the first two of each corner. given_width: parameters of each point in `given`.
struct Clipped_Texture {
    static constexpr std::int32_t width = 2; // parameters of each corner

    Clipped_Polygon polygon;
    VT_Parameter parameters[width * Clipped_Polygon::most_vertices];

    Clipped_Texture(const VT_Int_Rectangle& rectangle, const VT_Point_D* points, const VT_RGB32* colors,
                    const VT_Parameter* given, std::int32_t given_width) noexcept {
        Clip_Vertex<VT_Point_D> triangle[3];
        for (std::int32_t i = 0; i < 3; ++i) {
            const VT_Parameter* const of_corner = given + std::int64_t{i} * given_width;
            triangle[i] = {points[i], colors[i], given_width > 0 ? of_corner[0] : 0, given_width > 1 ? of_corner[1] : 0};
        }
        clip_triangle_to_rectangle(rectangle, triangle, polygon);
        for (std::int32_t i = 0; i < polygon.count; ++i) {
            parameters[width * i] = polygon.u[i];
            parameters[width * i + 1] = polygon.v[i];
        }
    }
};

} // namespace vorna
