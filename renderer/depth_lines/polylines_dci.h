// Members of the device polyline slots: one-pixel lines with depth, points inside the window.
#pragma once

#include "renderer/core/cases.h"
#include "renderer/host/actions.h"

namespace krb {

// In the rendition's colour; cased lines are drawn in two passes.
template <Case c> void draw_dci_polyline(VT_Renderer_Data&, const VT_Rendition&, std::int32_t count, const VT_DCI_Point* points);
// One colour a segment.
template <Case c>
void draw_dci_colorized_polyline(VT_Renderer_Data&, const VT_Rendition&, std::int32_t count, const VT_DCI_Point* points,
                                 const VT_RGB32* colors, bool single_color);
// One colour a point, interpolated.
template <Case c>
void draw_dci_gouraud_polyline(VT_Renderer_Data&, const VT_Rendition&, std::int32_t count, const VT_DCI_Point* points,
                               const VT_RGB32* colors);

} // namespace krb
