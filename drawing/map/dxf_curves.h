// Curves of drawings as paths.
#pragma once

#include "drawing/map/shapes.h"

namespace vorna::drawing::map::dxf {

// Along an ellipse from one angle to another, clockwise where the second is the smaller one: center + major cos t + minor sin t.
// Places follow each other a degree apart.
void add_arc(Position center, Position major, Position minor, double from, double to, Path& path);

// The bulge between two places is a quarter of the arc's angle as a tangent, positive to the right of the way; the second place
// itself is not added.
void add_bulge(Position from, Position to, double bulge, Path& path);

} // namespace vorna::drawing::map::dxf
