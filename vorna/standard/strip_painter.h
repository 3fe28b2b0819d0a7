// Triangles drawn by the host itself, where a renderer has no member for them: textured ones without depth buffer above all.
#pragma once

#include "vorna/standard/strips.h"

namespace vorna {

// Fills a strip with a plain face inside the hard clip, through the slots of images and dots. Coverage, and of textured strips
// colour, texel and depth, are those that renderers give: rows and columns half-open, interpolation in fixed point. Textured
// strips need a plain texture; they always blend by their alpha.
void paint_strip(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const Strip<VT_DCI_Point>& strip);

} // namespace vorna
