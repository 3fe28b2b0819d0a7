// Options that take the style of maps from their data.
#pragma once

#include <vector>

#include "app/commands/map_options.h"

namespace vorna::app {

void add_map_style_options(std::vector<Option>& table, Map_Options& options);

// Throws Usage_Error for texts that say nothing.
void set_map_style(const Map_Options& options, drawing::map::Map_Settings& settings);

} // namespace vorna::app
