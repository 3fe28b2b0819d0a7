// Lines that follow each other, as one.
#pragma once

#include <vector>

#include "drawing/map/shapes.h"

namespace vorna::drawing::map {

// Joins lines where exactly two of their ends meet; the others stay as they are. Lines have two points or more.
std::vector<Path> joined_lines(const std::vector<const Path*>& lines);

} // namespace vorna::drawing::map
