// Pixels in memory, row by row from the top.
#pragma once

#include <cstddef>
#include <cstdint>

#include "host/frame_buffer.h"
#include "host/geometry.h"

namespace vorna::drawing::recording {

// Columns and rows from the top left.
struct Plane_Part {
    std::int32_t left = 0, top = 0, width = 0, height = 0;

    friend bool operator==(const Plane_Part&, const Plane_Part&) = default;
    std::size_t pixels() const noexcept { return static_cast<std::size_t>(width) * static_cast<std::size_t>(height); }
};

// Does not own the pixels.
struct Plane {
    std::uint8_t* top = nullptr;  // the top row
    std::ptrdiff_t row_bytes = 0; // from a row to the one below it
    std::int32_t pixel_bytes = 0;

    // Of the part, by its rows.
    std::uint8_t* row(const Plane_Part& part, std::int32_t r) const noexcept {
        return top + (part.top + r) * row_bytes + std::ptrdiff_t{part.left} * pixel_bytes;
    }
    std::size_t row_bytes_of(const Plane_Part& part) const noexcept {
        return static_cast<std::size_t>(part.width) * static_cast<std::size_t>(pixel_bytes);
    }
};

inline Plane plane_of(const Frame_Buffer& buffer) noexcept {
    return {buffer.rows[buffer.height - 1], buffer.bytes_per_row, bytes_per_pixel(buffer.format)};
}

// The area in a plane that shows the window.
constexpr Plane_Part part_of(const VT_Int_Rectangle& window, const VT_Int_Rectangle& area) noexcept {
    return {area.left - window.left, window.top - area.top, area.right - area.left + 1, area.top - area.bottom + 1};
}

} // namespace vorna::drawing::recording
