// The area that standard functions may draw in, in device coordinates.
#pragma once

#include <algorithm>
#include <cstdint>

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

// The rows that a renderer draws in at the moment, counted from the lowest one of its window: an object of its current table.
// Pixels of other rows are lost, so that standard functions need not make them.
struct Drawn_Rows final : VT_Counted {
    static constexpr const char* option = "Canvas Rows";

    std::int32_t first = INT16_MIN, last = INT16_MAX;

    VT_Counted* clone() const override { return nullptr; }
};

// The part of the rectangle in those rows; without the option all of it.
inline VT_Int_Rectangle cut_to_drawn_rows(VT_Int_Rectangle rectangle, VT_Renderer_Data& renderer) {
    const VT_Option* const found = renderer.current_option_table().find(Drawn_Rows::option);
    if (const Drawn_Rows* const rows = found ? found->as_object<Drawn_Rows>() : nullptr) {
        // 3D members draw in coordinates that count from the window.
        const std::int32_t origin = window_rectangle(renderer.current_renderer_options()).bottom;
        rectangle.bottom = std::max(rectangle.bottom, origin + rows->first);
        rectangle.top = std::min(rectangle.top, origin + rows->last);
    }
    return rectangle;
}

} // namespace vorna
