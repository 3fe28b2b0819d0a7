// The interface of krb.vrd, which --profile krb compares modules with.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <string_view>

#include "host/options.h"

namespace vorna::app::check {

struct Known_Option {
    const char* name;
    std::int32_t scope;
    VT_Option_Content initial;
};

// In the order of registration. Pointers are null at first, except for the two setters.
inline const Known_Option known_options[] = {
    {"Margin", 0, 0},
    {"Color Buffer", 0, VT_Pointer(nullptr)},
    {"Depth Buffer", 0, VT_Pointer(nullptr)},
    {"Use Mask", 0, false},
    {"Clip Phase", 0, false},
    {"Enable Tiling", 0, false},
    {"Merge Control Background Color", 0, VT_Int_RGB{255, 255, 255}},
    {"Force Merge Control On", 0, false},
    {"ZBuffer Write", 0, VT_Pointer(nullptr)},
    {"ZBuffer Test", 0, VT_Pointer(nullptr)},
    {"Mask Cache", 1, VT_Pointer(nullptr)},
    {"Supports Advanced Planvex Rendering", 0, true},
    {"Supports Antialiased Lines", 0, false},
    {"Supports Gooch Shader", 0, false},
    {"Supports Shadow Mapping Shader", 0, false},
    {"Shadow Mapping Quality", 0, 0},
    {"Max Active Lights", 0, std::numeric_limits<std::int32_t>::max()},
    {"No KVX Image Support", 0, true},
    {"Hardcopy Mode", 0, false},
};

// The contents of a new renderer's slot: o = a function of the renderer, h = the host's standard function, - = nothing.
inline char krb_slot_letter(std::string_view slot, std::size_t configuration, bool tiling) {
    static const std::map<std::string_view, std::string_view> table{
        {"draw_2di_polymarker", "ooo-oo"},
        {"draw_2di_colorized_polymarker", "--o---"},
        {"draw_dci_dot", "oooooo"},
        {"draw_dci_ellipse", "-oo---"},
        {"draw_dci_elliptical_arc", "-oo---"},
        {"draw_dci_index8_image", "ohhohh"},
        {"draw_dci_rgb32_image", "hoohoo"},
        {"draw_dci_image", "oooooo"},
        {"draw_window", "oooooo"},
        {"clear_depth_rectangle", "oooooo"},
        {"write_depth_rectangle", "---ooo"},
        {"read_depth_image", "---ooo"},
        {"read_color_image", "oooooo"},
    };
    if (const auto found = table.find(slot); found != table.end()) {
        return found->second[configuration];
    }
    const auto is = [slot](std::string_view part) { return slot.find(part) != std::string_view::npos; };
    if (is("polymarker")) {
        return '-';
    }
    if (is("_3d_")) {
        return slot == "draw_3d_polytriangle" || (tiling && !is("polygon")) ? 'o' : '-';
    }
    if (is("textured")) {
        return configuration >= 3 ? 'o' : '-';
    }
    return is("polyline") && !is("_2di_") && !is("_dci_") ? '-' : 'o';
}

} // namespace vorna::app::check
