// Rows of images that hold a share of a model's triangles: colours beside depths, so that shares can be joined.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "drawing/image/image_file.h"
#include "drawing/image/image_form.h"
#include "drawing/job/image_stream.h"

namespace vorna::drawing {

// Such an image is opaque and twice as wide as what is drawn. The left half has the colours. A pixel of the right half has the
// high byte of the depth as red and the low one as green; blue is 255 where a triangle is drawn, else 0.
inline constexpr std::uint32_t share_columns = 2;

// Of the file, for an image of drawn pixels.
Image_Form share_form(Image_Form drawn);

// All rows of a drawn image. Pixels that are drawn have another alpha than 0.
void store_share(const Raster& colors, const Raster& depths, const Row_Places& rows);

// Draws a row of a later share over one of earlier shares: at equal depths the later triangle is seen, as where one process
// draws both.
void draw_share_over(std::span<std::uint8_t> row, std::span<const std::uint8_t> later);

// The left half of a row as a renderer's pixels. other: the colour of pixels that are not drawn; null = as they are.
void load_share_colors(std::span<const std::uint8_t> row, const VT_RGB32* other, VT_RGB32* pixels);

} // namespace vorna::drawing
