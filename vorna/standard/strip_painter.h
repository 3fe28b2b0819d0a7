// Triangles drawn by the standard functions, when a renderer has no member for them, as for textured ones without depth buffer.
#pragma once

#include "vorna/standard/strips.h"

namespace vorna {

// How a strip that crosses the hard clip is cut: by leaving out pixels, or by cutting its triangles.
enum class Strip_Cut { pixels, triangles };

// Fills a strip with a plain face inside the hard clip, through the slots of images, lines and dots. Coverage, and for textured
// strips colour, texel and depth, equal those of renderers: half-open rows and columns, interpolation in fixed point, 2DI strips
// cut by triangles. Textured strips need a drawable texture.
void paint_strip(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const Strip<VT_DCI_Point>& strip, Strip_Cut cut);

} // namespace vorna
