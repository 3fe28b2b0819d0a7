// The window in device coordinates, and the windows that renderers draw in.
#pragma once

#include <algorithm>
#include <cstdint>

#include "host/geometry.h"
#include "host/renderer_options.h"

namespace vorna {

// Device coordinates at most this far from 0 have differences of at most 31 bits.
inline constexpr std::int32_t farthest_window_side = 0x40000000;
// Columns and rows of a window fit 16.16 fixed point.
inline constexpr std::int32_t most_window_pixels = 32767;

constexpr bool is_window_in_range(VT_Int_Pair origin, VT_Int_Pair size) noexcept {
    const auto fits = [](std::int64_t first, std::int64_t length) {
        return first >= -farthest_window_side && first + length <= farthest_window_side;
    };
    return fits(origin.x, size.x) && fits(origin.y, size.y);
}

// Whether renderers draw in such a window; any other one gets no buffers.
constexpr bool is_drawable_window(VT_Int_Pair origin, VT_Int_Pair size) noexcept {
    return size.x <= most_window_pixels && size.y <= most_window_pixels && is_window_in_range(origin, size);
}

// The rectangle of size columns and rows whose lower left pixel is the origin, as far as 32 bits hold it.
constexpr VT_Int_Rectangle rectangle_of(VT_Int_Pair origin, VT_Int_Pair size) noexcept {
    const auto last = [](std::int32_t first, std::int32_t length) {
        return static_cast<std::int32_t>(std::min<std::int64_t>(std::int64_t{first} + length - 1, INT32_MAX));
    };
    return {origin.x, last(origin.x, size.x), origin.y, last(origin.y, size.y)};
}

// Device coordinates of the window's lower left pixel.
inline VT_Int_Pair window_origin(const VT_Renderer_Options& options) noexcept {
    return options.local_coordinates() ? VT_Int_Pair{} : options.window_origin();
}

// Empty when the window is too far away to be drawn in.
inline VT_Int_Rectangle window_rectangle(const VT_Renderer_Options& options) noexcept {
    const VT_Int_Pair origin = window_origin(options);
    const VT_Int_Pair size = options.window_size();
    return is_window_in_range(origin, size) ? rectangle_of(origin, size) : VT_Int_Rectangle{0, -1, 0, -1};
}

} // namespace vorna
