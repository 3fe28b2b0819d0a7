// The area that standard functions may draw in, in device coordinates.
#pragma once

#include "host/renderer_data.h"
#include "host/rendition.h"
#include "host/window.h"

namespace vorna {

inline VT_Int_Rectangle cut_to_window(const VT_Int_Rectangle& rectangle, const VT_Renderer_Options& options) noexcept {
    return common_part(rectangle, window_rectangle(options));
}

// The part of the hard clip inside the window.
inline VT_Int_Rectangle visible_rectangle(VT_Renderer_Data& renderer, const VT_Rendition& rendition) {
    return cut_to_window(rendition.clip.hard_clip, renderer.current_renderer_options());
}

} // namespace vorna
