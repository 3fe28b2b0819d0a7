// Places of map tiles: zoom level, column and row of the Web Mercator square.
#pragma once

#include <cstdint>

#include "drawing/map/shapes.h"

namespace vorna::drawing::pyramid {

// Level z has 2^z columns and rows of tiles. Columns count from the west, rows from the north.
inline constexpr int largest_zoom = 10; // 2^18 pixels in tiles of 256

struct Map_Tile {
    int zoom = 0;
    std::uint32_t x = 0, y = 0;

    friend bool operator==(const Map_Tile&, const Map_Tile&) = default;
};

// The number of a tile among all tiles: level after level, each along a Hilbert curve, which keeps neighbours together.
std::uint64_t hilbert_number(const Map_Tile& tile) noexcept;

// Tiles of a level from first to last columns and rows.
struct Tile_Range {
    std::uint32_t left, right, top, bottom;

    std::uint64_t count() const noexcept { return std::uint64_t{right - left + 1} * (bottom - top + 1); }
};

// The parallel at which the Web Mercator square ends.
double mercator_limit() noexcept;

// The tiles of a level that an extent in degrees touches; west lies below east.
Tile_Range tiles_in(const map::Extent& degrees, int zoom) noexcept;

} // namespace vorna::drawing::pyramid
