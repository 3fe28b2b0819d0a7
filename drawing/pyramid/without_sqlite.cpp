// MBTiles files where SQLite is not available.
#include "drawing/files/usage_error.h"
#include "drawing/pyramid/mbtiles_library.h"
#include "drawing/pyramid/pyramid_file.h"

namespace vorna::drawing::pyramid {

void load_mbtiles_library(const std::string& output) {
    throw Usage_Error(output + ": expected a folder or a file that ends with .pmtiles; MBTiles files need a build with SQLite, "
                               "Debian's libsqlite3-dev");
}

std::string mbtiles_key(const std::string&) {
    return {};
}

void write_mbtiles(Tile_Log&, const Pyramid_Facts&, const std::string& output) {
    load_mbtiles_library(output);
}

} // namespace vorna::drawing::pyramid
