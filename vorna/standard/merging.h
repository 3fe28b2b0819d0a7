// How pixels are combined, and the attributes and options that decide it.
#pragma once

#include <cstdint>

#include "host/renderer_data.h"
#include "host/rendition.h"

namespace vorna {

inline constexpr std::int32_t farthest_depth = 0xFFFF;

// Whether pixels of a drawing mode are combined by merge control.
inline bool merges(VT_Renderer_Data& renderer, std::int32_t mode) {
    const VT_Option* const forced = renderer.current_option_table().find("Force Merge Control On");
    return mode == merge_drawing_mode || (forced && forced->as_bool());
}

// Whether there is a depth buffer and the rendition uses it.
inline bool has_depth_in_force(VT_Renderer_Data& renderer, const VT_Rendition& rendition) {
    return renderer.current_renderer_options().buffer_depth() >= 1 && rendition.clip.depth_test;
}

// A translucent colour over an opaque one.
constexpr VT_RGB32 blended(VT_RGB32 over, VT_RGB32 under) noexcept {
    const auto mix = [over](int a, int b) { return static_cast<std::uint8_t>((a * over.alpha + b * (255 - over.alpha)) / 255); };
    return {mix(over.blue, under.blue), mix(over.green, under.green), mix(over.red, under.red), 255};
}

} // namespace vorna
