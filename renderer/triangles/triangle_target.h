// What the members gather for their kernels, once a call.
#pragma once

#include "renderer/core/cases.h"
#include "renderer/core/scratch.h"
#include "renderer/core/software_z_buffer.h"
#include "renderer/triangles/triangle_kernels.h"

namespace krb {

// Faces with special shading or a pattern of the host's own go to the host's standard function.
inline bool drawn_by_renderer(const VT_Face_Attributes& face) noexcept {
    return !(face.flags & face_flag::special_shading) && face.pattern <= face_pattern::last_drawn_by_renderers;
}

inline bool is_solid(const VT_Face_Attributes& face) noexcept {
    return face.pattern == face_pattern::solid && !(face.flags & face_flag::inverted_pattern);
}

// Cells, gaps and contrast colour of a face's pattern. Without a bitmap of its own the bitmap pattern has no cells.
Face_Pattern pattern_of(const VT_Face_Attributes& face) noexcept;

// The depth rule of a case, as the renderer's switches have it now. Only the opaque 32-bit members look at the test mode, and
// only 32-bit members at the write flag; the default mode with writing on is the fixed rule.
Depth_Rule depth_rule_of(Case c, const Software_Z_Buffer& renderer) noexcept;

// Buffers, origin and combine colours of the renderer; pattern may be null for solid faces.
Triangle_Target target_of(Case c, const Software_Z_Buffer& renderer, const Face_Pattern* pattern) noexcept;

// Device points from floats.
Scratch<VT_DCI_Point> rounded_points(std::int32_t count, const VT_Point* points);

constexpr Pixel_Format pixel_format_of(Case c) noexcept {
    return is_index8(c) ? Pixel_Format::index8 : Pixel_Format::rgb32;
}

} // namespace krb
