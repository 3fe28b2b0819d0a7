// Triangles drawn by the host itself, where a renderer has no member for them: textured ones without depth buffer above all.
#pragma once

#include "vorna/standard/strips.h"

namespace vorna {

// How a strip that crosses the hard clip is cut: by pixels, or by triangles, whose pieces are interpolated anew.
enum class Strip_Cut { pixels, triangles };

// Fills a strip with a plain face inside the hard clip, through the slots of images, lines and dots. Coverage, and of textured
// strips colour, texel and depth, are those that renderers give: rows and columns half-open, interpolation in fixed point, and
// 2DI strips cut by triangles. Textured strips need a plain texture.
void paint_strip(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const Strip<VT_DCI_Point>& strip, Strip_Cut cut);

} // namespace vorna
