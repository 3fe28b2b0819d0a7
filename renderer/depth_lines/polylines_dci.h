// Members of the device polyline slots: one-pixel lines with depth, points inside the window.
#pragma once

#include "renderer/core/cases.h"
#include "renderer/host/actions.h"

namespace krb {

// The rendition's colour; cased lines are drawn in two passes.
template <Case c> VT_Draw_Points<VT_DCI_Point> draw_dci_polyline;

template <Case c> VT_Draw_Colorized<VT_DCI_Point> draw_dci_colorized_polyline;
template <Case c> VT_Draw_Gouraud<VT_DCI_Point> draw_dci_gouraud_polyline;

// Draws a cased line's casing and then the line itself, each with a rendition of its own; false when the line is not cased.
bool draw_in_two_passes(const VT_Rendition& rendition, void (*draw)(void* context, const VT_Rendition& pass), void* context);

} // namespace krb
