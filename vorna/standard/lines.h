// Lines that standard functions of other shapes draw with.
#pragma once

#include <span>
#include <vector>

#include "host/renderer_data.h"
#include "host/rendition.h"

namespace vorna {

// A polyline in a colour of its own, or in the rendition's when color is null. Unlike colorized ones it has line types, and it
// keeps to the clip region in every configuration.
void draw_arc(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const std::vector<VT_DCI_Point>& points,
              const VT_RGB32* color);

// The pixels of a row from start to end, with depth. Where lines end they have a depth rule of their own, which ignores test and
// writing; these pixels all follow the rules of a line's inside.
//
// colors: one, or none for the rendition's.
void draw_level_line(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const VT_DCI_Point& start,
                     const VT_DCI_Point& end, std::span<const VT_RGB32> colors);

// The same with a depth and a colour of its own for every pixel.
void draw_level_line(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::vector<VT_DCI_Point> pixels,
                     std::vector<VT_RGB32> colors);

} // namespace vorna
