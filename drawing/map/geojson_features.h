// The features of a GeoJSON text, read in one pass without a document: as values of the JSON library they would take several
// times the memory and time.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "drawing/files/load_limits.h"
#include "drawing/map/shapes.h"

namespace vorna::drawing::map {

struct Geojson_Features {
    std::string rest; // the text with an empty list of features
    std::vector<Shape> shapes;
    Load_Limits::Loan memory;
};

// None for texts that have no member "features", for features of an unusual form (collections of geometries, keys with escape
// sequences, members that occur twice), and for mistakes: then another reader reads the text. Throws Load_Error.
std::optional<Geojson_Features> read_features(const std::string& file, std::string_view text, const Map_Query& query,
                                              Load_Limits& limits);

} // namespace vorna::drawing::map
