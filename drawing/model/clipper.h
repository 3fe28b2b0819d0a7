// Triangles and segments cut against the view volume, before the division by w.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "host/color.h"
#include "host/geometry.h"

namespace vorna::drawing::model {

// Clip coordinates, see Camera.
struct Clip_Point {
    double x = 0, y = 0, z = 0, w = 1;
};

Clip_Point transformed(const VT_Matrix& matrix, const VT_Vector& point) noexcept;

// The planes that a point lies beyond.
namespace beyond {
inline constexpr std::uint8_t left = 1, right = 2, bottom = 4, top = 8, near = 16, far = 32;
} // namespace beyond

struct Clip_Vertex {
    Clip_Point point;
    VT_RGB32 color;
    int corner = -1;     // of the triangle; -1 = made by the clipper
    double u = 0, v = 0; // place in a texture
};

// A convex polygon: the three corners, and one more for each of six planes.
struct Clip_Polygon {
    std::array<Clip_Vertex, 9> vertices;
    std::size_t count = 0;
};

// What lies inside the planes that are named. Two triangles that share an edge get the same points on it.
Clip_Polygon clip_triangle(const std::array<Clip_Vertex, 3>& triangle, std::uint8_t planes) noexcept;

struct Clip_Segment {
    Clip_Point from, to;
    bool visible = false;
};

// What lies inside the planes that are named. The same points, in turn, for the segment turned round.
Clip_Segment clip_segment(const Clip_Point& from, const Clip_Point& to, std::uint8_t planes) noexcept;

} // namespace vorna::drawing::model
