// The files of a map, with the settings of each.
#pragma once

#include <vector>

#include "drawing/files/input.h"
#include "drawing/map/map_sheet.h"

namespace vorna::drawing {

// The inputs with the settings; with a style file its layers, each with its own, and settings changed to those of the whole map.
// Throws Usage_Error, Map_Error and Load_Error.
std::vector<map::Map_Source> open_map_sources(std::vector<Input> inputs, map::Map_Settings& settings, Load_Limits& limits);

} // namespace vorna::drawing
