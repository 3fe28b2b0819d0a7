// Cuts paths at the meridians and parallels that bound a projection's map.
#pragma once

#include <vector>

#include "drawing/map/projection.h"
#include "drawing/map/shapes.h"

namespace vorna::drawing::map {

// A step of more than 180 degrees of longitude goes the other way round, over the antimeridian. A position that is written where
// the map has it keeps its bits.

// Adds the parts of a ring that lie on the map (Sutherland–Hodgman). A ring around a pole is led along it.
void cut_ring_at_edges(Path ring, const Domain& domain, Face& pieces);
std::vector<Path> cut_line_at_edges(const Path& line, const Domain& domain);

} // namespace vorna::drawing::map
