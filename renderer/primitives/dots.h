// Members of the slot draw_dci_dot.
#pragma once

#include "renderer/core/cases.h"
#include "renderer/host/actions.h"

namespace krb {

// One pixel, in the given colour or the rendition's line colour. It must lie inside the window; neither the hard clip nor marker
// attributes are looked at.
template <Case c> void draw_dci_dot(VT_Renderer_Data&, const VT_Rendition&, const VT_DCI_Point* point, const VT_RGB32* color);

} // namespace krb
