// Polygons of any shape as triangles.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "drawing/files/load_limits.h"
#include "drawing/model/mesh.h"

namespace vorna::drawing::model {

// Appends a polygon's triangles, wound as the polygon is, and notes their diagonals; places: of its corners. Convex polygons
// become fans around their first corner; others, seen along their mean normal, lose one ear after the other. Where no ear is
// left, as in polygons that cross themselves, the rest becomes a fan. Throws Load_Error, which names the file, for polygons made
// to take hours.
void append_large_polygon(Mesh& mesh, std::span<const std::uint32_t> corners, std::span<const VT_Vector> places,
                          const std::string& file, Load_Limits& limits);

inline void append_polygon(Mesh& mesh, std::span<const std::uint32_t> corners, std::span<const VT_Vector> places,
                           const std::string& file, Load_Limits& limits) {
    if (corners.size() == 3) {
        mesh.triangles.insert(mesh.triangles.end(), corners.begin(), corners.end());
    } else {
        append_large_polygon(mesh, corners, places, file, limits);
    }
}

} // namespace vorna::drawing::model
