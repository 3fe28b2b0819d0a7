// Members of the polymarker slots.
#pragma once

#include "host/actions.h"
#include "renderer/core/cases.h"

namespace krb {

// One pixel a point in the rendition's marker colour, cut to the hard clip; other symbols are the host's. Members with a depth
// buffer test each point's own depth and know neither mask nor merging. There is none for 8-bit buffers with depth.
template <Case c> VT_Draw_Points<VT_DCI_Point> draw_2di_polymarker;

// One colour a point, for 32-bit buffers with alpha and without depth. Markers wider than a pixel are the host's as well; without
// colours this is the plain polymarker.
VT_Draw_Colorized<VT_DCI_Point> draw_2di_colorized_polymarker;

} // namespace krb
