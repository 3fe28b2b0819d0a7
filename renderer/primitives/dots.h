// Members of the slot draw_dci_dot.
#pragma once

#include "host/actions.h"
#include "renderer/core/cases.h"

namespace krb {

// One pixel, in the given colour or the rendition's line colour. It must lie inside the window; neither the hard clip nor marker
// attributes are looked at.
template <Case c> VT_Draw_Dot draw_dci_dot;

} // namespace krb
