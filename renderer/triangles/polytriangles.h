// The members of the polytriangle slots, one a case.
#pragma once

#include "host/actions.h"
#include "renderer/core/cases.h"
#include "renderer/kernels/pixel_rules.h"

namespace krb {

// Strips of integer device points in the rendition's face colour. Only the window bounds them, not the hard clip; but while a 3D
// member draws through them, both do.
template <Case c> VT_Draw_Points<VT_DCI_Point> draw_dci_polytriangle;
// One colour a triangle.
template <Case c> VT_Draw_Colorized<VT_DCI_Point> draw_dci_colorized_polytriangle;
// One colour a point, interpolated.
template <Case c> VT_Draw_Gouraud<VT_DCI_Point> draw_dci_gouraud_polytriangle;
// Texels times one colour a point. Faces without a texture whose sides are powers of two are the host's. Pixels blend by alpha;
// of palette indices there is a member too that stores what is not transparent, for configurations without alpha blending.
template <Case c, Pixel_Rule texels = Pixel_Rule::blend> VT_Draw_Textured<VT_DCI_Point> draw_dci_textured_polytriangle;

// The same with float device points, rounded to whole pixels.
template <Case c> VT_Draw_Points<VT_Point> draw_dc_polytriangle;
template <Case c> VT_Draw_Colorized<VT_Point> draw_dc_colorized_polytriangle;
template <Case c> VT_Draw_Gouraud<VT_Point> draw_dc_gouraud_polytriangle;
template <Case c, Pixel_Rule texels = Pixel_Rule::blend> VT_Draw_Textured<VT_Point> draw_dc_textured_polytriangle;

// Strips without bounds, cut to the hard clip. Depth is that of the points; the 2D forms round their points.
template <Case c> VT_Draw_Points<VT_DCI_Point> draw_2di_polytriangle;
template <Case c> VT_Draw_Colorized<VT_DCI_Point> draw_2di_colorized_polytriangle;
template <Case c> VT_Draw_Gouraud<VT_DCI_Point> draw_2di_gouraud_polytriangle;
template <Case c, Pixel_Rule texels = Pixel_Rule::blend> VT_Draw_Textured<VT_DCI_Point> draw_2di_textured_polytriangle;
template <Case c> VT_Draw_Points<VT_Point> draw_2d_polytriangle;
template <Case c> VT_Draw_Colorized<VT_Point> draw_2d_colorized_polytriangle;
template <Case c> VT_Draw_Gouraud<VT_Point> draw_2d_gouraud_polytriangle;
template <Case c, Pixel_Rule texels = Pixel_Rule::blend> VT_Draw_Textured<VT_Point> draw_2d_textured_polytriangle;

} // namespace krb
