// Curves of drawings as paths.
#pragma once

#include "drawing/map/shapes.h"

namespace vorna::drawing::map::dxf {

// An arc of an ellipse, center + major cos t + minor sin t, from one angle to another; clockwise when the second is smaller.
// Positions are at most a degree apart.
void add_arc(Position center, Position major, Position minor, double from, double to, Path& path);

// Adds the arc between two positions without the second. bulge: the tangent of a quarter of the arc's angle, positive when the
// arc lies to the right of the direction.
void add_bulge(Position from, Position to, double bulge, Path& path);

} // namespace vorna::drawing::map::dxf
