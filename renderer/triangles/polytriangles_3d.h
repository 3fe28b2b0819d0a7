// The members of the 3D polytriangle slots: the same in every case.
#pragma once

#include "host/actions.h"

namespace krb {

// Strips of transformed points that may lie anywhere, drawn through the renderer's DCI slot of the same primitive in the
// coordinates of the window and cut to the hard clip. Where integers could not hold the points the host cuts the triangles.
VT_Draw_Points<VT_Point_D> draw_3d_polytriangle;
// One colour a triangle.
VT_Draw_Colorized<VT_Point_D> draw_3d_colorized_polytriangle;
// One colour a point, interpolated.
VT_Draw_Gouraud<VT_Point_D> draw_3d_gouraud_polytriangle;
// Texels times one colour a point. Triangles that the host cuts lose weights and normals.
VT_Draw_Textured<VT_Point_D> draw_3d_textured_polytriangle;

} // namespace krb
