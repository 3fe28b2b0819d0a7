// Solid lines of one pixel in a window that shows a part of an image, with the pixels that they have in the whole image.
#pragma once

#include <vector>

#include "host/renderer_data.h"
#include "host/rendition.h"

namespace vorna::drawing::map {

// A 2DI polyline is drawn by two rules: device lines for segments inside the clip rectangle, and a rule of its own, without
// smoothing, for segments that cross its edge. The rectangle of the image decides here and not that of the window, so that every
// window shows the pixels of the whole. Images with sides above the largest buffer's are never drawn whole: all their segments
// are device lines.
//
// rendition: its hard clip is the image, its window rectangle the renderer's window. Its hard clip changes during the call.
void draw_line_in_tile(VT_Renderer_Data& renderer, VT_Rendition& rendition, const std::vector<VT_DCI_Point>& points);

} // namespace vorna::drawing::map
