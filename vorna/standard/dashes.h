// Lines cut into dashes and dots.
#pragma once

#include <cstdint>
#include <vector>

#include "host/line_type.h"
#include "host/rendition.h"
#include "vorna/standard/stroke.h"

namespace vorna {

// A leading part, repeated elements, a trailing part. Lengths are in pixels.
struct Dash_Pattern {
    double leading = 0, trailing = 0;
    bool has_end_dots = false;   // leading and trailing part are a dot at the end of the line
    bool measures_depth = false; // the length of a line includes its depth
    std::vector<double> lengths; // of the repeated elements
    std::vector<double> kinds;   // above 0 a dash, below 0 a gap, 0 a dot at the start of the element

    explicit Dash_Pattern(const VT_Line_Type& type, double scale);
    // The pattern of a line_style: dashes of 6 weights (long ones 12), dots of one, gaps of 3, next to dots of 2.
    Dash_Pattern(std::int32_t style, std::int32_t weight);

    // The sum of the lengths; 0 when it is at most 1/1024 or not finite, then nothing is repeated.
    double repetition() const noexcept;
    // Whether all elements are gaps.
    bool is_blank() const noexcept;
    // Whether a dash or dot begins at the start of the line.
    bool begins_drawn() const noexcept;
};

// Cuts a line into dashes; each is a path, which continues around corners. Dashes, or their parts up to a vertex, that do not
// come within margin of the rectangle are left out. shortened: for lines of one pixel, which draw both ends. Then the last pixel
// of a dash is left out where the next one begins, and at the end of a line that ends where it begins, if a dash begins there.
std::vector<Stroke_Path> cut_into_dashes(const Stroke_Path& line, const Dash_Pattern& pattern, Stroke_Colors colors,
                                         const VT_Int_Rectangle& rectangle, double margin, bool shortened);

// The same by line types: one along the whole line, or one for each segment. Lines of two points have one segment. No dashes when
// the number of types does not fit.
std::vector<Stroke_Path> cut_by_line_types(const Stroke_Path& line, const VT_Line_Type_Set& set,
                                           const VT_Int_Rectangle& rectangle, double margin, bool shortened);

} // namespace vorna
