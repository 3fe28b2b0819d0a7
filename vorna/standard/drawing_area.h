// Where standard functions may draw, in device coordinates.
#pragma once

#include <algorithm>

#include "renderer/host/renderer_data.h"
#include "renderer/host/rendition.h"

namespace vorna {

// Device coordinates of the window's lower left pixel.
inline VT_Int_Pair window_origin(const VT_Renderer_Options& options) noexcept {
    return options.local_coordinates() ? VT_Int_Pair{} : options.window_origin();
}

inline VT_Int_Rectangle cut_to_window(const VT_Int_Rectangle& rectangle, const VT_Renderer_Options& options) noexcept {
    const VT_Int_Pair origin = window_origin(options);
    const VT_Int_Pair size = options.window_size();
    return {std::max(rectangle.left, origin.x), std::min(rectangle.right, origin.x + size.x - 1),
            std::max(rectangle.bottom, origin.y), std::min(rectangle.top, origin.y + size.y - 1)};
}

// The hard clip as far as the window shows it.
inline VT_Int_Rectangle visible_rectangle(VT_Renderer_Data& renderer, const VT_Rendition& rendition) {
    return cut_to_window(rendition.clip.hard_clip, renderer.current_renderer_options());
}

inline bool is_empty(const VT_Int_Rectangle& rectangle) noexcept {
    return rectangle.left > rectangle.right || rectangle.bottom > rectangle.top;
}

} // namespace vorna
