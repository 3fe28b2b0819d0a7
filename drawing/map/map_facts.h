// What a map file consists of.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "drawing/files/input.h"

namespace vorna::drawing::map {

// A list of layers: name, projection, numbers of shapes, faces, lines and points, extent, and fields with their types. Extents
// are in the units of the file. Throws what load_map throws.
nlohmann::ordered_json json_facts_of(const Input& input, Load_Limits& limits);

// The same in lines.
std::string text_of_facts(const nlohmann::ordered_json& layers);

} // namespace vorna::drawing::map
