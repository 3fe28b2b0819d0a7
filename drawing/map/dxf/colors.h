// Colours of drawings.
#pragma once

#include <cstdint>
#include <optional>

#include "host/color.h"

namespace vorna::drawing::map::dxf {

// Numbers of colours beside those of the table.
inline constexpr std::int64_t by_block = 0, by_layer = 256, foreground = 7;

// The colour of a number in the format's table. Empty for the foreground, which contrasts with the background, and for numbers
// outside the table.
std::optional<VT_RGB32> table_color(std::int64_t number);

// value: 0xRRGGBB.
VT_RGB32 true_color(std::int64_t value);

} // namespace vorna::drawing::map::dxf
