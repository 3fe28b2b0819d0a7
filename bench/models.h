// Models as a camera sees them.
#pragma once

#include <string>

#include "bench/scene.h"

namespace bench {

// A model file seen from in front, lit, filling the window's height; varied, smaller. Throws std::runtime_error.
Scene model_in_front(const std::string& file, const Variation& variation = {});

// A building of 10 storeys of 10 x 10 furnished rooms, seen from above one of its corners, so that its outer walls and its roof
// hide nearly everything. Walls, floors and furniture come in random order, as models of buildings have them.
Scene building_at_angle(const Variation& variation = {});

} // namespace bench
