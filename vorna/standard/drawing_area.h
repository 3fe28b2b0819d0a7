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

// The window in device coordinates. Empty where renderers draw nothing, which is farther away than differences of coordinates
// reach.
inline VT_Int_Rectangle window_rectangle(const VT_Renderer_Options& options) noexcept {
    constexpr std::int64_t farthest = 0x40000000;
    const VT_Int_Pair origin = window_origin(options);
    const VT_Int_Pair size = options.window_size();
    const auto is_near = [](std::int64_t first, std::int64_t length) { return first >= -farthest && first + length <= farthest; };
    if (!is_near(origin.x, size.x) || !is_near(origin.y, size.y)) {
        return {0, -1, 0, -1};
    }
    return {origin.x, origin.x + size.x - 1, origin.y, origin.y + size.y - 1};
}

inline VT_Int_Rectangle cut_to_window(const VT_Int_Rectangle& rectangle, const VT_Renderer_Options& options) noexcept {
    return common_part(rectangle, window_rectangle(options));
}

// The hard clip as far as the window shows it.
inline VT_Int_Rectangle visible_rectangle(VT_Renderer_Data& renderer, const VT_Rendition& rendition) {
    return cut_to_window(rendition.clip.hard_clip, renderer.current_renderer_options());
}

} // namespace vorna
