// Whether MBTiles files can be written.
#pragma once

#include <string>

namespace vorna::drawing::pyramid {

// Loads SQLite. Throws Usage_Error that names the output where the build is without it, std::runtime_error where it is missing.
void load_mbtiles_library(const std::string& output);

} // namespace vorna::drawing::pyramid
