// A drawn pyramid as a folder or as one file.
#pragma once

#include <cstddef>
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
    std::string key;              // of everything that the pyramid depends on, told by pyramid_key(); empty = none

    map::Position center() const noexcept { return {(extent.west + extent.east) / 2, (extent.south + extent.north) / 2}; }
};

// The writers throw std::runtime_error that names the file, and Interrupted.

// output/ZOOM/COLUMN/ROW.SUFFIX and output/tiles.json, which comes last. Tiles with the same bytes are one file with several
// names, where the file system has such. Replaces files that are there.
void write_folder(Tile_Log& log, const Pyramid_Facts& facts, const std::string& output);
// An SQLite database.
void write_mbtiles(Tile_Log& log, const Pyramid_Facts& facts, const std::string& output);
void write_pmtiles(Tile_Log& log, const Pyramid_Facts& facts, const std::string& output);

inline constexpr const char* key_member = "vorna:key"; // of descriptions
// What pyramid_key() tells of each; they may throw std::exception for other files.
std::string folder_key(const std::string& output);
std::string mbtiles_key(const std::string& output);
std::string pmtiles_key(const std::string& output);
constexpr std::size_t longest_description = std::size_t{1} << 20; // bytes; longer ones are not ours

// Throws Usage_Error for an output that this build, or what is there, does not allow. replaces: whether a folder may have
// something in it.
void check_pyramid(const std::string& output, Pyramid_Format format, bool replaces);
// The key of the pyramid that is there; empty where that has none or is another file.
std::string pyramid_key(const std::string& output, Pyramid_Format format);
void write_pyramid(Tile_Log& log, const Pyramid_Facts& facts, const std::string& output, Pyramid_Format format);

} // namespace vorna::drawing::pyramid
