// The members of the device polytriangle slots, one a case.
#pragma once

#include <cstdint>

#include "renderer/core/cases.h"
#include "renderer/host/actions.h"

namespace krb {

// Strips of integer device points in the rendition's face colour. They must lie inside the window.
template <Case c>
void draw_dci_polytriangle(VT_Renderer_Data&, const VT_Rendition&, std::int32_t count, const VT_DCI_Point* points);
// One colour a triangle.
template <Case c>
void draw_dci_colorized_polytriangle(VT_Renderer_Data&, const VT_Rendition&, std::int32_t count, const VT_DCI_Point* points,
                                     const VT_RGB32* colors, bool single_color);
// One colour a point, interpolated.
template <Case c>
void draw_dci_gouraud_polytriangle(VT_Renderer_Data&, const VT_Rendition&, std::int32_t count, const VT_DCI_Point* points,
                                   const VT_RGB32* colors);

// The same with float device points, rounded to whole pixels.
template <Case c> void draw_dc_polytriangle(VT_Renderer_Data&, const VT_Rendition&, std::int32_t count, const VT_Point* points);
template <Case c>
void draw_dc_colorized_polytriangle(VT_Renderer_Data&, const VT_Rendition&, std::int32_t count, const VT_Point* points,
                                    const VT_RGB32* colors, bool single_color);
template <Case c>
void draw_dc_gouraud_polytriangle(VT_Renderer_Data&, const VT_Rendition&, std::int32_t count, const VT_Point* points,
                                  const VT_RGB32* colors);

} // namespace krb
