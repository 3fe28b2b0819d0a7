// Cased lines: a wide line in the casing's colour, and the line itself over it.
#pragma once

#include <functional>

#include "host/rendition.h"

namespace krb {

// Whether the line is drawn in two passes: the first of its line types decides.
bool is_cased(const VT_Line_Attributes& line) noexcept;

// Draws the casing, then the line, each with a rendition made for it. Throws what draw throws.
void draw_in_two_passes(const VT_Rendition& rendition, const std::function<void(const VT_Rendition& pass)>& draw);

} // namespace krb
