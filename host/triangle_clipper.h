// Cuts one triangle against a rectangle of pixels. Renderers and the host cut by this code, so that both draw the same pieces.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "host/color.h"
#include "host/geometry.h"
#include "host/rounding.h"
#include "host/segment_clip.h"
#include "host/triangle_plane.h"

namespace vorna {

// A corner of a triangle, in whole device pixels or in doubles. Colour and texture parameters are carried along and mean nothing
// to callers that do not use them.
template <class Point> struct Clip_Vertex {
    Point point;
    VT_RGB32 color;
    float u, v;
};

// How colours and parameters change across the triangle: in single precision for whole pixels, as renderers have always done, and
// in double for corners that may lie as far away as doubles reach.
template <class Point> struct Gradient_Precision { using type = double; };
template <> struct Gradient_Precision<VT_DCI_Point> { using type = float; };

// A convex polygon of up to eight corners in strip order, so that the walk over a strip draws it as count - 2 triangles. Points,
// colours and parameters are apart, as strips want them.
struct Clipped_Polygon {
    static constexpr std::int32_t most_vertices = 8;

    std::int32_t count;
    VT_DCI_Point points[most_vertices];
    VT_RGB32 colors[most_vertices];
    float u[most_vertices], v[most_vertices];
};

// Where corner i of a polygon of count corners in boundary order stands in the strip: the first corner, then by turns from the
// front and from the back.
constexpr std::int32_t strip_order(std::int32_t i, std::int32_t count) noexcept {
    return i == 0 ? 0 : i % 2 == 1 ? (i + 1) / 2 : count - i / 2;
}

namespace triangle_clipper {

// Counter-clockwise with y upwards; corner k lies between side k and the next one.
enum Side { bottom, right, top, left, side_count };
static_assert(side_count == Segment_Part::no_side);

// The far edges of the rectangle's outermost pixels: areas are filled up to but not including their last column and row.
struct Bounds {
    double left, right, bottom, top;

    explicit Bounds(const VT_Int_Rectangle& pixels) noexcept
        : left(pixels.left), right(double(pixels.right) + 1), bottom(pixels.bottom), top(double(pixels.top) + 1) {}

    Position corner(int k) const noexcept {
        return {k == Side::bottom || k == Side::right ? right : left, k == Side::bottom || k == Side::left ? bottom : top};
    }
};

// To the nearest, halves upwards; what no integer holds becomes the nearest that one does.
inline std::int32_t rounded(double v) noexcept {
    return v == v ? static_cast<std::int32_t>(std::clamp(std::floor(v + 0.5), -2147483648.0, 2147483647.0)) : 0;
}

inline std::uint8_t rounded_byte(double v) noexcept {
    return static_cast<std::uint8_t>(rounded(std::clamp(v, 0.0, 255.0)));
}

inline VT_DCI_Point whole_point(const VT_DCI_Point& point) noexcept {
    return point;
}

inline VT_DCI_Point whole_point(const VT_Point_D& point) noexcept {
    return {rounded_coordinate(point.x), rounded_coordinate(point.y), rounded_coordinate(point.z)};
}

// A corner of the polygon.
struct Corner {
    VT_DCI_Point point;
    VT_RGB32 color;
    float u, v;
};

// The triangle: its outline, and attribute values at any place of it.
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

    // One without area contains nothing.
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

    // A vertex of the triangle stays itself, wherever the cut finds it. Errors of far-away corners do not lead out of the bounds.
    Corner corner_at(Position at, const Bounds& bounds) const noexcept {
        for (int i = 0; i < 3; ++i) {
            if (at == corners_[i]) {
                const Vertex& own = vertices_[i];
                return {whole_point(own.point), own.color, own.u, own.v};
            }
        }
        return {{rounded(std::clamp(at.x, bounds.left, bounds.right)), rounded(std::clamp(at.y, bounds.bottom, bounds.top)),
                 rounded(plane_.value_at(z_, at))},
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

// The part of an edge inside the bounds.
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

// The corners of the polygon in boundary order. Neighbours never lie in one place, the last and the first corner included.
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
    // The rectangle's corners on the way from one side to another, in the triangle's turning direction. Only corners inside the
    // triangle: the way past a corner that a sliver's edges just miss would lead round the whole rectangle.
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

    // Writes the polygon in strip order and returns its count; 0 when there is nothing to draw.
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

// The part of the triangle that covers pixels of the rectangle, cut at the far edges of its outermost pixels. New corners are
// found by Liang and Barsky's method and take their values from the triangle's plane; where the boundary leaves through one side
// and comes back through another, the rectangle's corners between them are put in. Returns the count; below 3 there is nothing to
// draw, as in an empty rectangle.
template <class Point>
std::int32_t clip_triangle_to_rectangle(const VT_Int_Rectangle& rectangle, const Clip_Vertex<Point> (&vertices)[3],
                                        Clipped_Polygon& polygon) noexcept {
    using namespace triangle_clipper;
    if (rectangle.left > rectangle.right || rectangle.bottom > rectangle.top) {
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
        // The tolerance keeps edges that only touch a corner.
        constexpr double tolerance = 1e-12F;
        if (!edge.is_visible(tolerance)) {
            continue;
        }
        any = true;
        const auto at = [&](double parameter, int side) {
            // Crossings lie on their side exactly, and a corner on a side where it is.
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

// The same of a transformed triangle, whose first two texture parameters of each corner go along.
struct Clipped_Texture {
    static constexpr std::int32_t width = 2; // parameters a corner

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
