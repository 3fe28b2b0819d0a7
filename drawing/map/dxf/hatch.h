// Hatches: boundaries and patterns.
#pragma once

#include "drawing/files/load_limits.h"
#include "drawing/map/dxf/entities.h"
#include "drawing/map/dxf/form.h"

namespace vorna::drawing::map::dxf {

// A face for a solid hatch, else the lines of its pattern and its dots as points. Throws Map_Error and Load_Error.
Form hatch_form(const Entity& hatch, const Values& values, const std::string& file, Load_Limits& limits);

// Parallel lines through base + k · offset for all whole k.
struct Line_Family {
    Position direction; // of length 1
    Position base, offset;
    std::vector<double> dashes; // above 0 a dash, below 0 a gap, 0 a dot; empty = whole lines
};

// Adds what lies in the face, even-odd. Throws Load_Error.
void add_pattern(const Face& face, const Line_Family& family, const std::string& file, Load_Limits& limits, Shape& shape);

} // namespace vorna::drawing::map::dxf
