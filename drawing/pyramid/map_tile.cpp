// Places of map tiles.
#include "drawing/pyramid/map_tile.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace vorna::drawing::pyramid {
namespace {

constexpr double degree = std::numbers::pi / 180;

// The column or row of a place from 0 to 1 across the square.
std::uint32_t column_of(double share, int zoom) noexcept {
    const double count = std::ldexp(1, zoom);
    return static_cast<std::uint32_t>(std::clamp(std::floor(share * count), 0.0, count - 1));
}

// That of an extent's far end, which does not touch the tile that begins there.
std::uint32_t last_column_of(double share, int zoom) noexcept {
    return column_of(std::nextafter(share, 0.0), zoom);
}

// From the north down.
double share_of_latitude(double latitude) noexcept {
    const double limit = mercator_limit();
    return 0.5 - std::asinh(std::tan(std::clamp(latitude, -limit, limit) * degree)) / (2 * std::numbers::pi);
}

} // namespace

// At each scale, from the coarsest on, the quadrant gives two digits, and the curve inside it is turned or mirrored.
std::uint64_t hilbert_number(const Map_Tile& tile) noexcept {
    std::uint64_t number = ((std::uint64_t{1} << 2 * tile.zoom) - 1) / 3; // tiles of all levels above
    std::uint32_t x = tile.x, y = tile.y;
    for (std::uint32_t side = tile.zoom > 0 ? std::uint32_t{1} << (tile.zoom - 1) : 0; side > 0; side /= 2) {
        const bool right = (x & side) != 0, low = (y & side) != 0;
        number += std::uint64_t{side} * side * ((right ? 3U : 0U) ^ (low ? 1U : 0U));
        if (!low) {
            if (right) {
                x = side - 1 - (x & (side - 1));
                y = side - 1 - (y & (side - 1));
            }
            std::swap(x, y);
        }
        x &= side - 1;
        y &= side - 1;
    }
    return number;
}

double mercator_limit() noexcept {
    return std::atan(std::sinh(std::numbers::pi)) / degree;
}

Tile_Range tiles_in(const map::Extent& degrees, int zoom) noexcept {
    Tile_Range range{column_of(degrees.west / 360 + 0.5, zoom), last_column_of(degrees.east / 360 + 0.5, zoom),
                     column_of(share_of_latitude(degrees.north), zoom), last_column_of(share_of_latitude(degrees.south), zoom)};
    range.right = std::max(range.left, range.right);
    range.bottom = std::max(range.top, range.bottom);
    return range;
}

} // namespace vorna::drawing::pyramid
