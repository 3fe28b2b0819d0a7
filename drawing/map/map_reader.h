// Maps and drawings in memory.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>

#include "drawing/files/input.h"
#include "drawing/map/shapes.h"

namespace vorna::drawing::map {

// input: of a format for maps. layer: the object of a TopoJSON file; empty = the first. Throws Map_Error, Load_Error, and what
// read_file throws. Positions are finite, and small enough that sums and products of them are finite.
Map load_map(const Input& input, const std::string& layer, Load_Limits& limits);

// The readers in the table of formats: JSON maps (GeoJSON or TopoJSON, detected by content), and DXF.
Map read_json_map(const Input& input, const std::string& layer, Load_Limits& limits);
Map read_dxf_map(const Input& input, const std::string& layer, Load_Limits& limits);

// The readers of each format; file: for messages. Throw Map_Error and Load_Error. Positions are not checked yet.
Map read_geojson(const std::string& file, const nlohmann::ordered_json& document, Load_Limits& limits);
Map read_topojson(const std::string& file, const nlohmann::ordered_json& document, const std::string& layer, Load_Limits& limits);
Map read_dxf(const std::string& file, std::string_view content, Load_Limits& limits);

} // namespace vorna::drawing::map
