// What the samples of an image are.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "drawing/image/compression.h"

namespace vorna::drawing {

// The formats of files that images are written in; image_formats.h has their table.
enum class Image_File : std::uint8_t { png, jpeg, webp, tiff, pdf, ppm, raw };

struct Image_Form {
    enum class Colors : std::uint8_t { grey = 0, palette = 3, red_green_blue_alpha = 6 };

    std::uint32_t width = 0, height = 0; // 1 or more
    std::uint8_t sample_bits = 8;        // 8, or 16 with the high byte first
    Colors colors = Colors::red_green_blue_alpha;
    bool opaque = false;      // alpha is 255 everywhere, and files may leave it out
    bool reducible = false;   // files may store the colours in another way, when they show the same
    bool linear = false;      // samples are amounts and no sRGB levels
    std::string palette = {}; // red, green, blue; for Colors::palette only
    std::string place = {};   // content of the chunk that says which part of an image this is; empty = no part
    Image_File file = Image_File::png;
    Compression compression = Compression::standard;
    std::uint32_t pixels_per_metre = 0; // on paper; 0 = files do not tell

    std::size_t pixel_bytes() const noexcept { return (colors == Colors::red_green_blue_alpha ? 4U : 1U) * sample_bits / 8U; }
    std::size_t row_bytes() const noexcept { return width * pixel_bytes(); }
};

} // namespace vorna::drawing
