// The members of the 3D polyline slots for tiled pictures: the same in every case.
#pragma once

#include "host/actions.h"

namespace krb {

// Polylines of transformed points that may lie anywhere, drawn through the renderer's 2DI slot of the same primitive in the
// coordinates of the window. Where integers could not hold the points the host cuts the polyline.
VT_Draw_Points<VT_Point_D> draw_3d_polyline;
// One colour a segment.
VT_Draw_Colorized<VT_Point_D> draw_3d_colorized_polyline;
// One colour a point, interpolated.
VT_Draw_Gouraud<VT_Point_D> draw_3d_gouraud_polyline;

} // namespace krb
