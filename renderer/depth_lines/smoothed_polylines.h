// Smoothed device polylines: three pixels across, blended by their distance from the line. 32-bit buffers without depth only.
#pragma once

#include "renderer/core/cases.h"
#include "renderer/core/software_z_buffer.h"
#include "renderer/depth_lines/line_kernels.h"

namespace krb {

// Whether the rendition asks for smoothed lines. Merging goes before it.
inline bool draws_smoothed(const Software_Z_Buffer& renderer, const VT_Rendition& rendition) noexcept {
    return (rendition.line.flags & vorna::line_flag::smoothed) != 0 && !renderer.merges(rendition.line.mode);
}

// A plain solid line, after all entry checks of the member. Looks for the rendition's mask. The case is rgb32, which stores, or
// rgb32_alpha, which blends by the colours' alpha as well.
void draw_smoothed_polyline(Case c, Software_Z_Buffer& renderer, const VT_Rendition& rendition, const Polyline& polyline);

} // namespace krb
