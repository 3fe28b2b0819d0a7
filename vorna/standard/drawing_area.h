// Where standard functions may draw, in device coordinates.
#pragma once

#include <algorithm>
#include <cstdint>

#include "renderer/host/renderer_data.h"
#include "renderer/host/rendition.h"

namespace vorna {

// Device coordinates of the window's lower left pixel.
inline VT_Int_Pair window_origin(const VT_Renderer_Options& options) noexcept {
    return options.local_coordinates() ? VT_Int_Pair{} : options.window_origin();
}

inline VT_Int_Rectangle window_rectangle(const VT_Renderer_Options& options) noexcept {
    const VT_Int_Pair origin = window_origin(options);
    const VT_Int_Pair size = options.window_size();
    const auto last = [](std::int32_t first, std::int32_t length) {
        return static_cast<std::int32_t>(std::min<std::int64_t>(std::int64_t{first} + length - 1, INT32_MAX));
    };
    return {origin.x, last(origin.x, size.x), origin.y, last(origin.y, size.y)};
}

inline VT_Int_Rectangle cut_to_window(const VT_Int_Rectangle& rectangle, const VT_Renderer_Options& options) noexcept {
    const VT_Int_Rectangle window = window_rectangle(options);
    return {std::max(rectangle.left, window.left), std::min(rectangle.right, window.right),
            std::max(rectangle.bottom, window.bottom), std::min(rectangle.top, window.top)};
}

// The hard clip as far as the window shows it.
inline VT_Int_Rectangle visible_rectangle(VT_Renderer_Data& renderer, const VT_Rendition& rendition) {
    return cut_to_window(rendition.clip.hard_clip, renderer.current_renderer_options());
}

constexpr bool is_empty(const VT_Int_Rectangle& rectangle) noexcept {
    return rectangle.left > rectangle.right || rectangle.bottom > rectangle.top;
}

} // namespace vorna
