// Shapes cut at a rectangle.
#pragma once

#include "drawing/map/shapes.h"

namespace vorna::drawing::map::dxf {

// Leaves what lies in the rectangle. Faces may have edges of no area along its sides.
void clip_to(const Extent& box, Shape& shape);

} // namespace vorna::drawing::map::dxf
