// Members of the slot draw_dci_dot.
#pragma once

#include "renderer/core/member.h"

namespace krb {

// One pixel, in the given colour or the rendition's line colour. It must lie inside the window; neither the hard clip nor marker
// attributes are looked at.
KRB_MEMBERS(extern, slots::Draw_DCI_Dot)

} // namespace krb
