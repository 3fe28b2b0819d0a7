// Maps and drawings in memory.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>

#include "drawing/files/input.h"
#include "drawing/map/shapes.h"

namespace vorna::drawing::map {

class Coordinate_Lists;

// input: of a format for maps. Throws Map_Error, Load_Error, and what read_file throws. Positions are finite, and small enough
// that sums and products of them are finite. Every shape has a value for each field of the query, and its layer is one of the
// map's.
Map load_map(const Input& input, const Map_Query& query, Load_Limits& limits);

// The readers in the table of formats: JSON maps (GeoJSON or TopoJSON, detected by content), DXF, and the formats that GDAL
// reads.
Map read_json_map(const Input& input, const Map_Query& query, Load_Limits& limits);
Map read_dxf_map(const Input& input, const Map_Query& query, Load_Limits& limits);
// With GDAL only.
Map read_gdal_map(const Input& input, const Map_Query& query, Load_Limits& limits);

// The parts of a text between separators.
std::vector<std::string> parts_between(std::string_view text, char separator = ',');

// The readers of each format; file: for messages. Throw Map_Error and Load_Error. Positions are not checked yet.
// lists: the coordinates, for a document that names them by numbers; null: they are in the document. With lists throws Map_Error
// for geometries of any unusual form, which the reader without them may accept. read: the shapes of features that have been read
// already, and are not in the document.
Map read_geojson(const std::string& file, const nlohmann::ordered_json& document, const Coordinate_Lists* lists,
                 std::vector<Shape> read, const Map_Query& query, Load_Limits& limits);
Map read_topojson(const std::string& file, const nlohmann::ordered_json& document, const Map_Query& query, Load_Limits& limits);
Map read_dxf(const std::string& file, std::string_view content, const Map_Query& query, Load_Limits& limits);

} // namespace vorna::drawing::map
