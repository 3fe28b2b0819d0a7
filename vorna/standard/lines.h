// Lines that the standard functions of other shapes draw with.
#pragma once

#include <span>
#include <vector>

#include "host/renderer_data.h"
#include "host/rendition.h"

namespace vorna {

// Draws a polyline in the given colour, or in that of the rendition when color is null. Unlike colorized polylines it has line
// types, and it keeps to the clip region in every configuration.
void draw_arc(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::int32_t count, const VT_DCI_Point* points,
              const VT_RGB32* color);

// Draws the pixels of a row from start to end, with depth. All follow the depth rule of pixels inside a line; the last pixel of a
// polyline would ignore depth test and depth writing.
//
// colors: one, or none for that of the rendition.
void draw_level_line(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const VT_DCI_Point& start,
                     const VT_DCI_Point& end, std::span<const VT_RGB32> colors);

// The same with a depth and a colour for each pixel.
void draw_level_line(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::vector<VT_DCI_Point> pixels,
                     std::vector<VT_RGB32> colors);

} // namespace vorna
