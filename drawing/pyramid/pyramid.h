// The tiles of a map at several zoom levels.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "drawing/image/image_form.h"
#include "drawing/job/map_drawing.h"
#include "drawing/pyramid/tile_log.h"

namespace vorna::drawing::pyramid {

struct Pyramid_Settings {
    int first_zoom = 0, last_zoom = 0;
    std::int32_t tile_side = 256;      // pixels
    std::optional<map::Extent> extent; // degrees: only tiles that it touches; empty = all
    std::int32_t supersample = 1;      // columns and rows of drawn pixels for one
    VT_RGB32 background{255, 255, 255, 255};
    bool transparent = false; // instead of the background
    Image_File file = Image_File::png;
    Compression compression = Compression::standard;
    unsigned threads = 1;
    std::uint64_t max_memory = std::uint64_t{1} << 30;
    // Only one of so many parts, which have about as many tiles each.
    std::uint32_t parts = 1, part = 0;
    std::function<void(double)> progress; // is told how much is done, 0 to 1
};

// The settings of a map whose images are squares of Web Mercator: its projection and extent.
void fit_to_pyramid(map::Map_Settings& settings);

// Throws Usage_Error for dashes that cannot be cut, and for too little memory.
void check_levels(const Pyramid_Settings& settings, const Map_Drawing& drawing);

// Draws each level as one image of tile_side * 2^zoom pixels each way, in blocks of tiles that several threads share, and adds
// the tiles to the log, without blocks that it has. So a tile is a part of its level's image, labels included.
// The tiles of other parts are left out.
void draw_pyramid(const Pyramid_Settings& settings, const Module_Choice& module, Map_Drawing& drawing, Tile_Log& log);

// The number of tiles of all parts.
std::uint64_t tile_count(const Pyramid_Settings& settings);
// Whether the log has all tiles of the settings' part.
bool has_all_tiles(const Pyramid_Settings& settings, const Tile_Log& log);

} // namespace vorna::drawing::pyramid
