// Cased lines: a wide line in the casing's colour, and the line itself over it.
#pragma once

#include <functional>

#include "host/attributes.h"
#include "host/rendition.h"

namespace krb {

using vorna::is_cased;

// Draws the casing, then the line, each with a rendition made for it. Throws what draw throws.
void draw_in_two_passes(const VT_Rendition& rendition, const std::function<void(const VT_Rendition& pass)>& draw);

} // namespace krb
