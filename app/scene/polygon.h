// Polygons of any shape as triangles.
#pragma once

#include <cstdint>
#include <span>

#include "app/scene/mesh.h"

namespace app::scene {

// Appends a polygon's triangles, wound as the polygon is, and notes their diagonals; places: of its corners. Convex polygons
// become fans around their first corner; others, seen along their mean normal, lose one ear after the other. Where no ear is
// left, as in polygons that cross themselves, the rest becomes a fan. Polygons of more than 1024 corners are taken for convex, so
// that damaged files cost no hours.
void append_polygon(Mesh& mesh, std::span<const std::uint32_t> corners, std::span<const VT_Vector> places);

} // namespace app::scene
