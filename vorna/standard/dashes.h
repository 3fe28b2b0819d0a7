// Lines cut into dashes and dots.
#pragma once

#include <cstdint>
#include <vector>

#include "host/line_type.h"
#include "host/rendition.h"
#include "vorna/standard/stroke.h"

namespace vorna {

// A leading part, elements that repeat, a trailing part; lengths in pixels.
struct Dash_Pattern {
    double leading = 0, trailing = 0;
    bool has_end_dots = false;   // leading and trailing parts show a dot at the very ends only
    bool measures_depth = false; // depth counts for the length of a line as its columns and rows do
    std::vector<double> lengths; // of the elements
    std::vector<double> kinds;   // above 0 dash, below 0 gap, 0 dot at the element's beginning

    explicit Dash_Pattern(const VT_Line_Type& type, double scale);
    // One of line_style: dashes of 6 (long ones 12) weights, dots of one, gaps of 3 or, between dots, 2.
    Dash_Pattern(std::int32_t style, std::int32_t weight);

    // Elements that lead nowhere would repeat for ever: such a pattern, and one without elements, repeats nothing.
    double repetition() const noexcept;
    // Nothing but gaps.
    bool is_blank() const noexcept;
    // Whether a dash or dot lies at the very beginning.
    bool begins_drawn() const noexcept;
};

// Dashes go on around corners, each as one path. Those that do not come within margin of the rectangle are left out, whole or up
// to a vertex. The last pixel of a dash is left out when shortened, as the next one begins there: then paths are for lines of one
// pixel, which show both ends. So it is at the end of a line that ends where it began, when something is drawn there.
std::vector<Stroke_Path> cut_into_dashes(const Stroke_Path& line, const Dash_Pattern& pattern, Stroke_Colors colors,
                                         const VT_Int_Rectangle& rectangle, double margin, bool shortened);

// The same by line types: one along the line, or one a segment. Lines of two points count as segments. Nothing when the number of
// types does not fit.
std::vector<Stroke_Path> cut_by_line_types(const Stroke_Path& line, const VT_Line_Type_Set& set,
                                           const VT_Int_Rectangle& rectangle, double margin, bool shortened);

} // namespace vorna
