// Members of the device polyline slots: one-pixel lines with depth, points inside the window.
#pragma once

#include "renderer/core/member.h"

namespace krb {

// In the rendition's colour; cased lines are drawn in two passes.
KRB_MEMBERS(extern, slots::Draw_DCI_Polyline)
// One colour a segment.
KRB_MEMBERS(extern, slots::Draw_DCI_Colorized_Polyline)
// One colour a point, interpolated.
KRB_MEMBERS(extern, slots::Draw_DCI_Gouraud_Polyline)

} // namespace krb
