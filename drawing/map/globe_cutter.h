// Cuts what lies on a globe so that it fits on a projection's map, and projects it.
#pragma once

#include <cstdint>
#include <vector>

#include "drawing/map/projection.h"
#include "drawing/map/shapes.h"

namespace vorna::drawing::map {

// All of these give the same places for the same stretch between two positions, whichever way it runs and whatever it belongs to:
// neighbours keep their common borders to the last bit.

// The face on the map. Rings that cross the map's edge are cut there, rings around a pole are led along it.
Face project_face(const Face& face, const Projection& projection);
// The line on the map, in as many pieces as the map's edge and the projection's gaps cut it into.
std::vector<Path> project_line(const Path& line, const Projection& projection);
std::optional<Position> project_point(Position point, const Projection& projection);

// What to project a ring or a line takes, before it is done: a short file can tell of long steps, and go around the globe as
// often as it likes.
struct Projecting_Cost {
    std::uint64_t positions; // in memory
    std::uint64_t steps;     // of Load_Limits
};
Projecting_Cost projecting_cost(const Path& path, bool closed, const Projection& projection);

// The edge of all that the projection shows; nothing for a plane.
Face project_outline(const Projection& projection);

} // namespace vorna::drawing::map
