// Meridians and parallels.
#pragma once

#include <vector>

#include "drawing/map/projection.h"
#include "drawing/map/shapes.h"

namespace vorna::drawing::map {

// On the projection's plane, so many degrees apart, and the edge of what the projection shows.
std::vector<Path> graticule_lines(double step, const Projection& projection);

} // namespace vorna::drawing::map
