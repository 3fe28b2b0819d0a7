// The colour ramps of ColorBrewer.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "host/color.h"

namespace vorna::drawing::map {

std::vector<std::string> ramp_names();

// The published colours for so many classes; none for an unknown name. Of more classes than were published, colours of sequential
// and diverging ramps are interpolated, those of qualitative ones repeat.
std::optional<std::vector<VT_RGB32>> ramp_colors(const std::string& name, std::size_t count);

// Whether the ramp is for categories, without an order.
bool is_qualitative(const std::string& name);

} // namespace vorna::drawing::map
