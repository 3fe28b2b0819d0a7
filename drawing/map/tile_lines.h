// Solid lines of one pixel in a window on a part of an image, with the same pixels as in the whole image.
#pragma once

#include <vector>

#include "host/renderer_data.h"
#include "host/rendition.h"

namespace vorna::drawing::map {

// A 2DI polyline is drawn by two rules: segments inside the clip rectangle are device lines; segments that cross its edge have a
// separate rule without smoothing. Here the rectangle of the image decides, not the window, so that every window shows the pixels
// of the whole. Images larger than the largest buffer are never drawn whole: all their segments are device lines.
//
// rendition: its hard clip is the image, its window rectangle the renderer's window. Its hard clip changes during the call.
void draw_line_in_tile(VT_Renderer_Data& renderer, VT_Rendition& rendition, const std::vector<VT_DCI_Point>& points);

} // namespace vorna::drawing::map
