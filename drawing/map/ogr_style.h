// Styles of shapes as GDAL states them, of KML files for example.
#pragma once

#include <string_view>

#include "drawing/map/shapes.h"

namespace vorna::drawing::map {

// style: tools such as PEN(c:#FF0000FF,w:2px);BRUSH(fc:#00FF0080). Sets what the shape does not state otherwise: colour and width
// of lines, colour of faces and of points. Ignores what it does not know.
void set_ogr_style(Shape& shape, std::string_view style);

} // namespace vorna::drawing::map
