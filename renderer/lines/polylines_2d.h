// Members of the 2DI polyline slots: one-pixel lines that may reach anywhere, cut to the clip rectangle.
#pragma once

#include "renderer/core/cases.h"
#include "renderer/host/actions.h"

namespace krb {

// In the rendition's colour. Lines with line types are cut into plain pieces first; opaque 32-bit members draw cased lines in two
// passes. Throws what draw_by_line_types throws.
template <Case c> void draw_2di_polyline(VT_Renderer_Data&, const VT_Rendition&, std::int32_t count, const VT_DCI_Point* points);
// One colour a segment. colors: null = the rendition's line colour for all.
template <Case c>
void draw_2di_colorized_polyline(VT_Renderer_Data&, const VT_Rendition&, std::int32_t count, const VT_DCI_Point* points,
                                 const VT_RGB32* colors, bool single_color);
// One colour a point, interpolated.
template <Case c>
void draw_2di_gouraud_polyline(VT_Renderer_Data&, const VT_Rendition&, std::int32_t count, const VT_DCI_Point* points,
                               const VT_RGB32* colors);

} // namespace krb
