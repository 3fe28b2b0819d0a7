// Polylines with arcs and widths.
#pragma once

#include <vector>

#include "drawing/map/dxf/entities.h"
#include "drawing/map/dxf/form.h"

namespace vorna::drawing::map::dxf {

struct Vertex {
    Position place;
    double bulge = 0;
    double start = 0, end = 0; // widths of the segment that follows
};

// The number of positions of its path, at most.
std::size_t position_count(const std::vector<Vertex>& vertices);
// The path of a polyline; a closed one ends at its first position.
Path path_of(const std::vector<Vertex>& vertices, bool closed);

std::vector<Vertex> light_vertices(const Entity& polyline, const Values& values);
std::vector<Vertex> vertices_of(const Entity& polyline, const Values& values);

// Segments of one width are lines, those whose width changes are faces.
void add_polyline(const std::vector<Vertex>& vertices, bool closed, Forms& forms);

// Edges of a mesh in rows and columns, or of one with faces of numbered vertices.
void add_mesh(const Entity& polyline, const Values& values, Shape& shape);

} // namespace vorna::drawing::map::dxf
