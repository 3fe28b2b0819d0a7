// The rows that a renderer with the option "Scissor Rows" draws, for standard functions: what they leave out takes no time.
#pragma once

#include <algorithm>
#include <cstdint>

#include "host/object.h"
#include "host/options.h"
#include "host/renderer_data.h"
#include "host/window.h"

// Rows of the window, from its lowest one, both inclusive.
class VORNA_API VT_Drawn_Rows final : public VT_Counted {
public:
    VT_Counted* clone() const override { return new VT_Drawn_Rows(*this); }

    std::int32_t first = INT16_MIN, last = INT16_MAX;
};

namespace vorna {

inline VT_Drawn_Rows* find_drawn_rows(VT_Renderer_Data& renderer) {
    const VT_Option* const option = renderer.current_table.find("Drawn Rows");
    return option ? option->as_object<VT_Drawn_Rows>() : nullptr;
}

// Hosts that set the scissor call it each time; what is drawn in other rows is then undefined.
inline void note_drawn_rows(VT_Renderer_Data& renderer, std::int32_t first, std::int32_t last) {
    VT_Drawn_Rows* rows = find_drawn_rows(renderer);
    if (!rows) {
        rows = new VT_Drawn_Rows;
        renderer.current_table.add(VT_Option("Drawn Rows", 0, VT_Pointer(VT_Reference<VT_Counted>(rows))));
    }
    rows->first = first;
    rows->last = last;
}

// The part of an area, in device pixels, that lies in these rows.
inline VT_Int_Rectangle in_drawn_rows(VT_Renderer_Data& renderer, VT_Int_Rectangle area) {
    if (const VT_Drawn_Rows* const rows = find_drawn_rows(renderer)) {
        const std::int64_t lowest = window_rectangle(renderer.current_renderer_options()).bottom;
        area.bottom = static_cast<std::int32_t>(std::clamp<std::int64_t>(lowest + rows->first, area.bottom, INT32_MAX));
        area.top = static_cast<std::int32_t>(std::clamp<std::int64_t>(lowest + rows->last, INT32_MIN, area.top));
    }
    return area;
}

} // namespace vorna
