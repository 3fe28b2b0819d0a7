// Faces that renderers hand over: hatches and special shading.
#pragma once

#include "host/rendition.h"

namespace vorna {

// The bitmap of a hatch, pattern 75 or above. Drawn as a bitmap, a hatch covers its face exactly and follows depth, masks,
// blending and opaque gaps like other patterns. 75 to 80 are level, upright, rising and falling lines, grid and diagonal grid, 8
// pixels apart; then the six again 16 and 32 pixels apart; then the series repeats.
VT_Reference<const VT_Pattern_Bitmap> hatch(std::int32_t pattern);

// The rendition with a face that renderers draw: a hatch as its bitmap, no special shading.
VT_Reference<const VT_Rendition> with_plain_face(const VT_Rendition& rendition);

} // namespace vorna
