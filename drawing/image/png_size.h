// What PNG files say of their size.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace vorna::drawing {

// Whether the file could hold as many pixels as it states: a packed byte stands for 1032 bytes at the most. True for what has no
// header to look at.
inline bool png_can_hold(std::string_view file) noexcept {
    constexpr std::size_t header = 33, width_place = 16, height_place = 20, bits_place = 24, colors_place = 25;
    constexpr std::uint64_t densest = 1032;
    if (file.size() < header || !file.starts_with("\x89PNG")) {
        return true;
    }
    const auto number_at = [&](std::size_t place) {
        std::uint64_t number = 0;
        for (const char byte : file.substr(place, 4)) {
            number = number << 8 | static_cast<unsigned char>(byte);
        }
        return number;
    };
    const auto colors = static_cast<unsigned char>(file[colors_place]);
    const std::uint64_t channels = colors == 2 ? 3 : colors == 4 ? 2 : colors == 6 ? 4 : 1;
    const std::uint64_t row = (number_at(width_place) * channels * static_cast<unsigned char>(file[bits_place]) + 7) / 8 + 1;
    return row / densest <= file.size() && number_at(height_place) * row / densest <= file.size();
}

} // namespace vorna::drawing
