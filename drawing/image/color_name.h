// Colours as people write them.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/color.h"

namespace vorna::drawing {

// #rgb, #rrggbb or a common name; nothing for anything else.
std::optional<VT_RGB32> color_named(std::string_view text);

// The common names.
std::vector<std::string> color_names();

} // namespace vorna::drawing
