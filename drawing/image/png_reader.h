// PNG files, read as they are stored.
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "drawing/files/load_limits.h"

namespace vorna::drawing {

// Samples without any conversion, but of at least 8 bits.
struct Png_Image {
    enum class Colors : std::uint8_t { grey = 0, rgb = 2, palette = 3, grey_alpha = 4, rgb_alpha = 6 };

    std::int32_t width = 0, height = 0;
    Colors colors = Colors::rgb_alpha;
    int sample_bits = 8;      // as the file says; samples of less than 8 bits take a byte each
    std::string palette;      // red, green, blue
    std::string transparency; // as it is stored: an alpha for each colour of the palette, or the transparent grey or RGB samples
    std::vector<std::uint8_t> samples; // rows from the top down; of 16 bits the high byte first

    int channels() const noexcept {
        return colors == Colors::rgb_alpha ? 4 : colors == Colors::rgb ? 3 : colors == Colors::grey_alpha ? 2 : 1;
    }
    std::size_t sample_bytes() const noexcept { return sample_bits == 16 ? 2 : 1; }
    std::size_t pixel_bytes() const noexcept { return static_cast<std::size_t>(channels()) * sample_bytes(); }
};

// What is wrong with a file, without its name.
struct Png_Error : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Sides of up to 16384 pixels. name: what messages call the file. Throws Png_Error and Load_Error. png_libpng.cpp defines it
// with libpng, png_stb.cpp without.
Png_Image read_png(const std::string& name, std::string_view file, Load_Limits& limits);

} // namespace vorna::drawing
