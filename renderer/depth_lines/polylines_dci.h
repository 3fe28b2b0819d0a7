// Members of the device polyline slots: one-pixel lines with depth, points inside the window.
#pragma once

#include "host/actions.h"
#include "renderer/core/cases.h"

namespace krb {

// In the rendition's colour; cased lines are drawn in two passes.
template <Case c> VT_Draw_Points<VT_DCI_Point> draw_dci_polyline;
// One colour a segment.
template <Case c> VT_Draw_Colorized<VT_DCI_Point> draw_dci_colorized_polyline;
// One colour a point, interpolated.
template <Case c> VT_Draw_Gouraud<VT_DCI_Point> draw_dci_gouraud_polyline;

} // namespace krb
