// Smoothed device polylines: three pixels across, blended by their distance from the line. 32-bit buffers without depth only.
#pragma once

#include "renderer/core/cases.h"
#include "renderer/core/software_z_buffer.h"

namespace krb {

// Whether the rendition asks for smoothed lines. Merging goes before it.
inline bool draws_smoothed(const Software_Z_Buffer& renderer, const VT_Rendition& rendition) noexcept {
    return (rendition.line.flags & line_flag::smoothed) != 0 && !renderer.merges(rendition.line.mode);
}

// Plain solid lines; count points, at least 2, inside the window. One colour a segment, the first for all with single_color.
// Looks for the rendition's mask. The case is rgb32, which stores, or rgb32_alpha, which blends by the colours' alpha as well.
void draw_smoothed_polyline(Case c, Software_Z_Buffer& renderer, const VT_Rendition& rendition, std::int32_t count,
                            const VT_DCI_Point* points, const VT_RGB32* colors, bool single_color);

} // namespace krb
