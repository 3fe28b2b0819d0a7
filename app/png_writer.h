// PNG files, written.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace app {

struct Png_Form {
    enum class Colors : std::uint8_t { grey = 0, palette = 3, red_green_blue_alpha = 6 };

    std::uint32_t width = 0, height = 0; // 1 or more
    std::uint8_t sample_bits = 8;        // 8, or 16 with the high byte first
    Colors colors = Colors::red_green_blue_alpha;
    bool linear = false;      // samples are amounts and no sRGB levels
    std::string palette = {}; // red, green, blue; for Colors::palette only

    std::size_t pixel_bytes() const noexcept { return (colors == Colors::red_green_blue_alpha ? 4U : 1U) * sample_bits / 8U; }
    std::size_t row_bytes() const noexcept { return width * pixel_bytes(); }
};

// The bytes of a file. fill(row, samples) is called for each row from the top down and stores row_bytes() bytes. The same bytes
// on every machine that has the same zlib. Throws std::runtime_error when zlib fails.
std::string png_file(const Png_Form& form, const std::function<void(std::uint32_t, std::uint8_t*)>& fill);

} // namespace app
