// Members of the 2DI polyline slots: one-pixel lines that may reach anywhere, cut to the clip rectangle.
#pragma once

#include "renderer/core/member.h"

namespace krb {

// In the rendition's colour. Lines with line types are cut into plain pieces first; opaque 32-bit members draw cased lines in two
// passes. Throws what draw_by_line_types throws.
KRB_MEMBERS(extern, slots::Draw_2DI_Polyline)
// One colour a segment. colors: null = the rendition's line colour for all.
KRB_MEMBERS(extern, slots::Draw_2DI_Colorized_Polyline)
// One colour a point, interpolated.
KRB_MEMBERS(extern, slots::Draw_2DI_Gouraud_Polyline)

} // namespace krb
