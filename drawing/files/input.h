// Files to draw: models, maps and drawings, from where they come.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "drawing/files/load_limits.h"

namespace vorna::drawing {

struct Input {
    std::string name;                   // the file's path; what messages call it
    std::string format;                 // as the format's usual suffix in lower case without its dot; empty = not known
    std::optional<std::string> content; // of what is no file, or not as it stands; none = what the file holds
};

// Finds out about a file; "-" is standard input. format: what the user says it is, empty = nothing. Without that the name's
// suffix decides, and the content where that says nothing. Compressed files (gzip) are unpacked. Throws Usage_Error.
Input open_input(const std::string& path, const std::string& format, Load_Limits& limits);

// Maps and drawings: GeoJSON, TopoJSON and DXF.
bool is_map(const Input& input);

} // namespace vorna::drawing
