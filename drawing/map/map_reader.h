// Maps and drawings in memory.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>

#include "drawing/files/input.h"
#include "drawing/map/shapes.h"

namespace vorna::drawing::map {

// input: of a format for maps. layer: of TopoJSON, the object to read; empty = the first one. Throws Map_Error and Load_Error,
// and what read_file throws. Positions are finite, so that what is computed of them stays so.
Map load_map(const Input& input, const std::string& layer, Load_Limits& limits);

// The readers of the table of formats: GeoJSON and TopoJSON, told apart by their content, and DXF.
Map read_json_map(const Input& input, const std::string& layer, Load_Limits& limits);
Map read_dxf_map(const Input& input, const std::string& layer, Load_Limits& limits);

// The formats' own readers; file names the text for messages. Throw Map_Error and Load_Error. Positions may be anything.
Map read_geojson(const std::string& file, const nlohmann::ordered_json& document, Load_Limits& limits);
Map read_topojson(const std::string& file, const nlohmann::ordered_json& document, const std::string& layer, Load_Limits& limits);
Map read_dxf(const std::string& file, std::string_view content, Load_Limits& limits);

} // namespace vorna::drawing::map
