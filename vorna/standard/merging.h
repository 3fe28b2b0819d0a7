// What decides how pixels combine.
#pragma once

#include <cstdint>

#include "host/renderer_data.h"
#include "host/rendition.h"

namespace vorna {

inline constexpr std::int32_t farthest_depth = 0xFFFF;

// Whether pixels of a drawing mode combine by merge control.
inline bool merges(VT_Renderer_Data& renderer, std::int32_t mode) {
    const VT_Option* const forced = renderer.current_option_table().find("Force Merge Control On");
    return mode == merge_drawing_mode || (forced && forced->as_bool());
}

// Whether there is a depth buffer that the rendition asks for.
inline bool has_depth_in_force(VT_Renderer_Data& renderer, const VT_Rendition& rendition) {
    return renderer.current_renderer_options().buffer_depth() >= 1 && rendition.clip.depth_test;
}

} // namespace vorna
