// Which attributes renderers draw themselves, and which they hand over to the standard functions.
#pragma once

#include "host/rendition.h"

namespace vorna {

// Faces with special shading or a pattern above 74 are the standard functions'.
inline bool drawn_by_renderer(const VT_Face_Attributes& face) noexcept {
    return face.pattern <= face_pattern::last_drawn_by_renderers && !(face.flags & face_flag::special_shading);
}

// So are lines with a style or of more than one pixel.
inline bool drawn_by_renderer(const VT_Line_Attributes& line) noexcept {
    return line.style == line_style::solid && line.weight <= 1;
}

inline bool has_line_types(const VT_Line_Attributes& line) noexcept {
    return line.line_types && !(line.line_types == VT_Line_Type_Set::None);
}

// Cased lines are drawn in two passes, the first one wider. The first of the line types decides.
inline bool is_cased(const VT_Line_Attributes& line) noexcept {
    return line.line_types && !line.line_types->types.empty() && line.line_types->types.front() &&
           line.line_types->types.front()->kind == line_type_kind::cased;
}

} // namespace vorna
