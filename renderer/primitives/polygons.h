// Members of the polygon slots, the same in every case.
#pragma once

#include "host/actions.h"

namespace krb {

// Fill a polygon of any shape by handing triangles to the renderer's own polytriangle slots, so that it gets exactly their depth,
// colour and mask rules. Convex 2D and DC polygons of up to 64 points become one strip; the host triangulates everything else.
VT_Draw_Polygon<VT_Point> draw_2d_polygon;
VT_Draw_Polygon<VT_Point> draw_dc_polygon;
VT_Draw_Polygon<VT_DCI_Point> draw_2di_polygon;
VT_Draw_Polygon<VT_DCI_Point> draw_dci_polygon;

} // namespace krb
