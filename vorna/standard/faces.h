// Faces that renderers leave to the host: hatched ones and ones with special shading.
#pragma once

#include "host/rendition.h"

namespace vorna {

// Whether a renderer draws such a face itself.
inline bool is_plain(const VT_Face_Attributes& face) noexcept {
    return face.pattern <= face_pattern::last_drawn_by_renderers && !(face.flags & face_flag::special_shading);
}

// The lines of a hatch, 75 or above, as a pattern of cells: drawn as a bitmap, a hatch covers its face to the pixel and takes
// part in depth, masks, blending and opaque gaps like every other pattern. From 75 on come level, upright, rising and falling
// lines, the grid and the diagonal grid, each first 8, then 16, then 32 pixels apart; then the series begins anew.
VT_Reference<const VT_Pattern_Bitmap> hatch(std::int32_t pattern);

// The rendition with a face that renderers draw: hatches as bitmaps, special shading as plain drawing.
VT_Reference<const VT_Rendition> with_plain_face(const VT_Rendition& rendition);

} // namespace vorna
