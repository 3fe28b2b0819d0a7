// Every call that a recording can make.
#pragma once

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string_view>

namespace vorna::drawing::recording {

struct Call_Kind {
    std::string_view name;
    bool is_drawn; // false: recordings may hold the call, but a replay refuses it
};

namespace detail {

inline constexpr bool drawn = true;
inline constexpr bool not_yet = false;

// The slots in the order of the action table, then the calls that belong to the replay itself.
inline constexpr Call_Kind call_kinds[] = {
    {"draw_2d_polyline", drawn},
    {"draw_dc_polyline", drawn},
    {"draw_2di_polyline", drawn},
    {"draw_dci_polyline", drawn},
    {"draw_3d_polyline", drawn},
    {"draw_2d_colorized_polyline", drawn},
    {"draw_dc_colorized_polyline", drawn},
    {"draw_2di_colorized_polyline", drawn},
    {"draw_dci_colorized_polyline", drawn},
    {"draw_3d_colorized_polyline", drawn},
    {"draw_2d_gouraud_polyline", drawn},
    {"draw_dc_gouraud_polyline", drawn},
    {"draw_2di_gouraud_polyline", drawn},
    {"draw_dci_gouraud_polyline", drawn},
    {"draw_3d_gouraud_polyline", drawn},
    {"draw_2d_polytriangle", drawn},
    {"draw_dc_polytriangle", drawn},
    {"draw_2di_polytriangle", drawn},
    {"draw_dci_polytriangle", drawn},
    {"draw_3d_polytriangle", drawn},
    {"draw_2d_colorized_polytriangle", drawn},
    {"draw_dc_colorized_polytriangle", drawn},
    {"draw_2di_colorized_polytriangle", drawn},
    {"draw_dci_colorized_polytriangle", drawn},
    {"draw_3d_colorized_polytriangle", drawn},
    {"draw_2d_gouraud_polytriangle", drawn},
    {"draw_dc_gouraud_polytriangle", drawn},
    {"draw_2di_gouraud_polytriangle", drawn},
    {"draw_dci_gouraud_polytriangle", drawn},
    {"draw_3d_gouraud_polytriangle", drawn},
    {"draw_2d_textured_polytriangle", drawn},
    {"draw_dc_textured_polytriangle", drawn},
    {"draw_2di_textured_polytriangle", drawn},
    {"draw_dci_textured_polytriangle", drawn},
    {"draw_3d_textured_polytriangle", drawn},
    {"draw_2d_polygon", drawn},
    {"draw_dc_polygon", drawn},
    {"draw_2di_polygon", drawn},
    {"draw_dci_polygon", drawn},
    {"draw_3d_polygon", drawn},
    {"draw_2d_polymarker", drawn},
    {"draw_dc_polymarker", drawn},
    {"draw_2di_polymarker", drawn},
    {"draw_dci_polymarker", drawn},
    {"draw_3d_polymarker", drawn},
    {"draw_2d_colorized_polymarker", drawn},
    {"draw_dc_colorized_polymarker", drawn},
    {"draw_2di_colorized_polymarker", drawn},
    {"draw_dci_colorized_polymarker", drawn},
    {"draw_3d_colorized_polymarker", drawn},
    {"draw_dci_dot", drawn},
    {"draw_dci_ellipse", drawn},
    {"draw_dci_elliptical_arc", drawn},
    {"draw_dci_index8_image", drawn},
    {"draw_dci_rgb32_image", drawn},
    {"draw_dci_image", drawn},
    {"draw_window", drawn},
    {"clear_depth_rectangle", drawn},
    {"write_depth_rectangle", drawn},
    {"read_depth_image", drawn},
    {"read_color_image", drawn},
    {"set_zbuffer_write", drawn},
    {"set_zbuffer_test", drawn},
    {"establish", drawn},
    {"present", drawn},
};

inline constexpr std::string_view slot_names[] = {
#define VT_ACTION(slot, name, ...) #slot,
#include "host/action_list.inc"
#undef VT_ACTION
};
static_assert(std::equal(std::begin(slot_names), std::end(slot_names), std::begin(call_kinds),
                         [](std::string_view name, const Call_Kind& kind) { return name == kind.name; }));

} // namespace detail

using detail::call_kinds;

// Null when there is no such call.
constexpr const Call_Kind* find_call_kind(std::string_view name) {
    const auto* kind =
        std::find_if(std::begin(call_kinds), std::end(call_kinds), [name](const Call_Kind& k) { return k.name == name; });
    return kind == std::end(call_kinds) ? nullptr : kind;
}

// Position in call_kinds, by which tables of functions are ordered.
constexpr std::size_t position_of(const Call_Kind& kind) {
    return static_cast<std::size_t>(&kind - call_kinds);
}

// Whether the call goes to a slot of the renderer's.
constexpr bool is_slot(const Call_Kind& kind) {
    return position_of(kind) < std::size(detail::slot_names);
}

// Whether the call changes how the renderer draws, not what it has drawn.
constexpr bool sets_up(const Call_Kind& kind) {
    return kind.name == "establish" || kind.name.starts_with("set_");
}

// How many colours a colorized strip, polyline or marker list of that many points takes.
constexpr std::size_t colors_of(const Call_Kind& kind, std::size_t points, bool single) {
    const std::size_t fewer = kind.name.ends_with("polytriangle") ? 2 : kind.name.ends_with("polyline") ? 1 : 0;
    const std::size_t count = points - std::min(points, fewer);
    return single ? std::min<std::size_t>(count, 1) : count;
}

} // namespace vorna::drawing::recording
