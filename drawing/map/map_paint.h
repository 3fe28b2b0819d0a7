// Attributes of the lines and points of a map.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "host/color.h"
#include "host/rendition.h"

namespace vorna::drawing::map {

// Lengths of alternate dashes and gaps, in multiples of the line's width in pixels; a dash of 0 is a dot. Empty: a solid line.
using Dashes = std::vector<double>;

struct Line_Paint {
    VT_RGB32 color;
    std::int32_t width = 1;
    const Dashes* dashes = nullptr; // null: a solid line
    double dash_unit = 0;           // pixels for a length of 1; 0 = the width

    double pixels_of_dashes() const noexcept { return dash_unit > 0 ? dash_unit : width; }
    bool is_dashed() const noexcept { return dashes && !dashes->empty(); }
};

struct Marker_Paint {
    VT_RGB32 color;
    std::int32_t symbol = vorna::marker_symbol::filled_circle;
    std::int32_t size = 7;

    friend bool operator==(const Marker_Paint&, const Marker_Paint&) = default;
};

struct Text_Paint {
    VT_RGB32 color;
    VT_RGB32 halo_color = {};
    double halo_width = 0; // in pixels
    // What lies below letters without a halo, where that is one colour: images of 8 bits have colours between both.
    std::optional<VT_RGB32> ground = {};
};

} // namespace vorna::drawing::map
