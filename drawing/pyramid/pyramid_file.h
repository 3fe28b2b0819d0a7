// A drawn pyramid as a folder or as one file.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "drawing/map/shapes.h"
#include "drawing/pyramid/tile_log.h"

namespace vorna::drawing::pyramid {

enum class Pyramid_Format : std::uint8_t { folder, mbtiles, pmtiles };

// That of the output's suffix; a folder without one of the two.
Pyramid_Format format_of(const std::string& output);

// What readers of a pyramid are told of it.
struct Pyramid_Facts {
    std::string name, attribution; // empty = none
    std::string image_format;      // suffix of the tiles' files
    map::Extent extent;            // degrees
    int first_zoom = 0, last_zoom = 0;
    std::int32_t tile_side = 256; // pixels

    map::Position center() const noexcept { return {(extent.west + extent.east) / 2, (extent.south + extent.north) / 2}; }
};

// The writers throw std::runtime_error that names the file, and Interrupted.

// output/ZOOM/COLUMN/ROW.SUFFIX and output/tiles.json, which comes last. Tiles with the same bytes are one file with several
// names, where the file system has such. Replaces files that are there.
void write_folder(Tile_Log& log, const Pyramid_Facts& facts, const std::string& output);
// An SQLite database.
void write_mbtiles(Tile_Log& log, const Pyramid_Facts& facts, const std::string& output);
void write_pmtiles(Tile_Log& log, const Pyramid_Facts& facts, const std::string& output);

// Throws Usage_Error for an output that this build, or what is there, does not allow. replaces: whether a folder may have
// something in it.
void check_pyramid(const std::string& output, Pyramid_Format format, bool replaces);
void write_pyramid(Tile_Log& log, const Pyramid_Facts& facts, const std::string& output, Pyramid_Format format);

} // namespace vorna::drawing::pyramid
