// Colours, widths and symbols that a shape's own fields state, by the names of the simplestyle convention.
#pragma once

#include <array>
#include <span>

#include "drawing/map/shapes.h"

namespace vorna::drawing::map {

inline constexpr std::array simple_style_keys{"fill",         "fill-opacity", "stroke",      "stroke-opacity",
                                              "stroke-width", "marker-color", "marker-size", "marker-symbol"};

// values: of these keys, in this order. Values that the convention does not allow are ignored.
void set_simple_style(Shape& shape, std::span<const Value> values);

// The fields that may hold a shape's name; the first one that is not empty does.
inline constexpr std::array name_keys{"name", "NAME", "Name", "admin", "ADMIN", "title"};

// A name or a number as text; empty for none. Whole numbers have no decimal point.
std::string text_of(const Value& value);
// With at most four digits, for legends.
std::string short_text_of(double number);

} // namespace vorna::drawing::map
