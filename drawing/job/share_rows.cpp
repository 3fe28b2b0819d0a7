// Rows of images that hold a share of a model's triangles.
#include "drawing/job/share_rows.h"

#include <algorithm>
#include <cstring>

namespace vorna::drawing {
namespace {

constexpr std::size_t pixel_size = 4;

} // namespace

Image_Form share_form(Image_Form drawn) {
    drawn.width *= share_columns;
    drawn.opaque = true;
    drawn.reducible = false;
    return drawn;
}

void store_share(const Raster& colors, const Raster& depths, const Row_Places& rows) {
    const auto width = static_cast<std::size_t>(colors.width);
    for (std::int32_t y = 0; y < colors.height; ++y) {
        std::uint8_t* const row = rows(static_cast<std::uint32_t>(y));
        std::uint8_t* const right = row + width * pixel_size;
        store_samples(colors.top + y * colors.row_bytes, colors.width, colors.format, row);
        const std::uint8_t* const line = depths.top + y * depths.row_bytes;
        for (std::size_t x = 0; x < width; ++x) {
            std::uint16_t depth = 0;
            std::memcpy(&depth, line + 2 * x, sizeof depth);
            std::uint8_t* const pixel = right + x * pixel_size;
            pixel[0] = static_cast<std::uint8_t>(depth >> 8);
            pixel[1] = static_cast<std::uint8_t>(depth);
            pixel[2] = row[x * pixel_size + 3] != 0 ? 255 : 0;
            pixel[3] = row[x * pixel_size + 3] = 255;
        }
    }
}

void draw_share_over(std::span<std::uint8_t> row, std::span<const std::uint8_t> later) {
    const std::size_t half = row.size() / 2;
    for (std::size_t i = 0; i < half; i += pixel_size) {
        std::uint8_t* const own = &row[half + i];
        const std::uint8_t* const other = &later[half + i];
        const auto depth = [](const std::uint8_t* pixel) { return pixel[0] << 8 | pixel[1]; };
        if (other[2] != 0 && (own[2] == 0 || depth(other) <= depth(own))) {
            std::copy_n(&later[i], pixel_size, &row[i]);
            std::copy_n(other, pixel_size, own);
        }
    }
}

void load_share_colors(std::span<const std::uint8_t> row, const VT_RGB32* other, VT_RGB32* pixels) {
    const std::size_t half = row.size() / 2;
    for (std::size_t i = 0; i < half; i += pixel_size) {
        const bool is_drawn = row[half + i + 2] != 0;
        *pixels++ = other && !is_drawn ? *other : VT_RGB32{row[i + 2], row[i + 1], row[i], 255};
    }
}

} // namespace vorna::drawing
