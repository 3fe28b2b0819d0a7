// Triangles and segments cut against the view volume, plane by plane.
#include "drawing/model/clipper.h"

#include "host/polygon_clip.h"

namespace vorna::drawing::model {
namespace {

// Near comes first: beyond it w may be negative, where the sides change places.
constexpr std::uint8_t planes_in_order[] = {beyond::near, beyond::far, beyond::left, beyond::right, beyond::bottom, beyond::top};

// How far inside a plane a point lies; negative beyond it.
double distance_inside(const Clip_Point& p, std::uint8_t plane) noexcept {
    switch (plane) {
    case beyond::left:
        return p.w + p.x;
    case beyond::right:
        return p.w - p.x;
    case beyond::bottom:
        return p.w + p.y;
    case beyond::top:
        return p.w - p.y;
    case beyond::near:
        return p.z;
    default:
        return p.w - p.z;
    }
}

std::uint8_t between(std::uint8_t a, std::uint8_t b, double t) noexcept {
    return static_cast<std::uint8_t>(a + (b - a) * t + 0.5);
}

Clip_Point between(const Clip_Point& a, const Clip_Point& b, double t) noexcept {
    return {a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t, a.z + (b.z - a.z) * t, a.w + (b.w - a.w) * t};
}

// Always computed from the inside outwards, so that the direction in which a triangle runs along an edge does not matter.
Clip_Vertex crossing(const Clip_Vertex& inside, double inside_distance, const Clip_Vertex& outside,
                     double outside_distance) noexcept {
    const double t = inside_distance / (inside_distance - outside_distance);
    const VT_RGB32 c = inside.color, d = outside.color;
    return {between(inside.point, outside.point, t),
            {between(c.blue, d.blue, t), between(c.green, d.green, t), between(c.red, d.red, t), between(c.alpha, d.alpha, t)},
            -1,
            inside.u + (outside.u - inside.u) * t,
            inside.v + (outside.v - inside.v) * t};
}

Clip_Polygon clip_polygon(const Clip_Polygon& polygon, std::uint8_t plane) noexcept {
    Clip_Polygon kept;
    clip_polygon_at_side(
        polygon.vertices, polygon.count, [plane](const Clip_Vertex& vertex) { return distance_inside(vertex.point, plane); },
        [](const Clip_Vertex& from, double here, const Clip_Vertex& to, double there) {
            return here > 0 ? crossing(from, here, to, there) : crossing(to, there, from, here);
        },
        [&kept](const Clip_Vertex& vertex) { kept.vertices[kept.count++] = vertex; });
    return kept;
}

} // namespace

Clip_Point transformed(const VT_Matrix& matrix, const VT_Vector& point) noexcept {
    const auto row = [&](int r) {
        const auto& m = matrix.m[r];
        return m[0] * point.x + m[1] * point.y + m[2] * point.z + m[3];
    };
    return {row(0), row(1), row(2), row(3)};
}

Clip_Segment clip_segment(const Clip_Point& from, const Clip_Point& to, std::uint8_t planes) noexcept {
    Clip_Segment segment{from, to, true};
    for (const std::uint8_t plane : planes_in_order) {
        if (!(planes & plane)) {
            continue;
        }
        const double from_distance = distance_inside(segment.from, plane), to_distance = distance_inside(segment.to, plane);
        if (from_distance < 0 && to_distance < 0) {
            return {};
        }
        if (from_distance < 0) {
            segment.from = between(segment.to, segment.from, to_distance / (to_distance - from_distance));
        } else if (to_distance < 0) {
            segment.to = between(segment.from, segment.to, from_distance / (from_distance - to_distance));
        }
    }
    return segment;
}

Clip_Polygon clip_triangle(const std::array<Clip_Vertex, 3>& triangle, std::uint8_t planes) noexcept {
    Clip_Polygon polygon;
    for (const Clip_Vertex& vertex : triangle) {
        polygon.vertices[polygon.count++] = vertex;
    }
    for (const std::uint8_t plane : planes_in_order) {
        if (planes & plane) {
            polygon = clip_polygon(polygon, plane);
        }
    }
    return polygon;
}

} // namespace vorna::drawing::model
