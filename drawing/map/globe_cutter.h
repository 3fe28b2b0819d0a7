// Cuts paths on a globe at the edges of a projection's map, and projects them.
#pragma once

#include <cstdint>
#include <vector>

#include "drawing/map/projection.h"
#include "drawing/map/shapes.h"

namespace vorna::drawing::map {

// All of these compute the same positions for the same segment, whatever its direction and the path it belongs to: neighbours
// keep their common borders to the last bit.

// The face on the map. Rings that cross the map's edge are cut there; rings around a pole are led along it.
Face project_face(const Face& face, const Projection& projection);
// The line on the map, in as many pieces as the map's edge and the projection's gaps cut it into.
std::vector<Path> project_line(const Path& line, const Projection& projection);
std::optional<Position> project_point(Position point, const Projection& projection);

// The memory and work that projecting a ring or line takes, computed beforehand: a short file can hold long steps, and go around
// the globe any number of times.
struct Projecting_Cost {
    std::uint64_t positions; // kept in memory
    std::uint64_t steps;     // of Load_Limits
};
Projecting_Cost projecting_cost(const Path& path, bool closed, const Projection& projection);

// The edge of the projection's map; empty for a plane.
Face project_outline(const Projection& projection);

} // namespace vorna::drawing::map
