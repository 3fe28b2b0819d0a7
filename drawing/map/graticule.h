// Meridians and parallels.
#pragma once

#include <vector>

#include "drawing/map/projection.h"
#include "drawing/map/shapes.h"

namespace vorna::drawing::map {

// Lines on the projection's plane, step degrees apart, and the edge of the projection's map.
std::vector<Path> graticule_lines(double step, const Projection& projection);

} // namespace vorna::drawing::map
