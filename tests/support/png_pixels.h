// PNG files as they are stored, for comparisons to the last bit.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace replay_tests {

struct Png_Pixels {
    std::uint32_t width = 0, height = 0;
    int bit_depth = 0, color_type = 0;
    std::size_t pixel_bytes = 0;
    std::vector<std::uint8_t> palette; // red, green, blue
    std::vector<std::uint8_t> alphas;  // of the palette's first colours; the others are opaque
    std::vector<std::uint8_t> bytes;   // rows from the top, samples as the file holds them
};

// Samples of fewer than 8 bits take a byte each.
Png_Pixels read_png(const std::string& path);

// Red, green, blue and alpha of every pixel, however the file stores them; of files of 8 bits.
Png_Pixels read_colors(const std::string& path);

// Empty when both are the same, else where they differ first. Where colours are expected, they may be stored in any way.
std::string difference(const Png_Pixels& stored, const Png_Pixels& expected);

} // namespace replay_tests
