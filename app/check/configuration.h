// The six cases that renderers install different slots for.
#pragma once

#include <cstdint>
#include <string_view>

#include "host/renderer_data.h"

namespace vorna::app::check {

struct Configuration {
    std::string_view name;
    std::int32_t color_system; // 1 = 32-bit colours, else palette indices
    bool depth, alpha;

    bool has_indices() const noexcept { return color_system != 1; }
};

inline constexpr Configuration configurations[] = {
    {"8-bit", 0, false, false},           {"32-bit", 1, false, false},           {"32-bit alpha", 1, false, true},
    {"8-bit with depth", 0, true, false}, {"32-bit with depth", 1, true, false}, {"32-bit alpha with depth", 1, true, true},
};

inline void configure(VT_Renderer_Options& options, const Configuration& configuration, VT_Int_Pair size, VT_Int_Pair origin) {
    options.set_color_system(configuration.color_system);
    options.set_buffer_depth(configuration.depth ? 16 : 0);
    options.set_alpha_blending(configuration.alpha);
    options.set_window_size(size);
    options.set_window_origin(origin);
}

} // namespace vorna::app::check
