// Members of the 2DI polyline slots: one-pixel lines that may reach anywhere, cut to the clip rectangle.
#pragma once

#include "host/actions.h"
#include "renderer/core/cases.h"

namespace krb {

// In the rendition's colour. Lines with line types are cut into plain pieces first; opaque 32-bit members draw cased lines in two
// passes. Throws what draw_by_line_types throws.
template <Case c> VT_Draw_Points<VT_DCI_Point> draw_2di_polyline;
// One colour a segment. colors: null = the rendition's line colour for all.
template <Case c> VT_Draw_Colorized<VT_DCI_Point> draw_2di_colorized_polyline;
// One colour a point, interpolated.
template <Case c> VT_Draw_Gouraud<VT_DCI_Point> draw_2di_gouraud_polyline;

} // namespace krb
