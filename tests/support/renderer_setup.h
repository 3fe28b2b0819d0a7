// What a renderer under test, and the model of it, are told before they draw.
#pragma once

#include <cstdint>
#include <string>

#include "app/check/configuration.h"
#include "app/check/guarded_buffer.h"
#include "host/color.h"
#include "host/geometry.h"
#include "host/object.h"

using vorna::app::check::Buffer_Layout;
using vorna::app::check::configure;
using vorna::app::check::Guarded_Buffer;

struct Renderer_Setup {
    std::int32_t color_system = 1; // 1 = 32-bit colours, else palette indices
    bool depth = true;
    bool alpha = false;
    VT_Int_Pair size{32, 32};
    VT_Int_Pair origin;
    VT_Int_RGB background{255, 255, 255};
    bool force_merge = false;
    bool use_mask = false;
    VT_Reference<const VT_Palette> palette;        // null = the default palette
    VT_Reference<const VT_Palette> palette_before; // null = none was in force before
    Buffer_Layout color_layout;
    Buffer_Layout depth_layout;

    bool has_indices() const noexcept { return color_system != 1; }
};

inline constexpr auto& renderer_cases = vorna::app::check::configurations;

inline Renderer_Setup setup_of_case(std::size_t index, VT_Int_Pair size = {32, 32}, VT_Int_Pair origin = {}) {
    Renderer_Setup setup;
    setup.color_system = renderer_cases[index].color_system;
    setup.depth = renderer_cases[index].depth;
    setup.alpha = renderer_cases[index].alpha;
    setup.size = size;
    setup.origin = origin;
    return setup;
}

std::string describe(const Renderer_Setup& setup);
