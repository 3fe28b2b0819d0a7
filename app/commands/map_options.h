// What the commands that draw maps and drawings have in common.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "app/commands/model_options.h"
#include "drawing/files/input.h"
#include "drawing/map/map_scene.h"

namespace vorna::app {

// Texts as they are given; empty = not given.
struct Map_Options {
    std::string layout, layer, bbox, projection, center, fill, water, clip_to;
    std::string border = "solid", outline, border_color, casing;
    std::string marker = "disc", marker_color = "#c8321e";
    std::string overlay, overlay_color = "#5a8ce6", merge;
    bool labels = false, flip_y = false;
    std::string label_color = "black", label_key, halo_color, font, scale_bar;
    std::string filter, fill_by, classes, breaks, ramp, width_by, widths, label_by, style, title, attribution;
    std::int32_t class_count = 5;
    bool reverse_ramp = false, legend = false;
    double opacity = 1, graticule = 0, halo = 1;
    std::int32_t label_size = 12, border_width = 1, casing_width = 2, marker_size = 7;
};

void add_map_options(std::vector<Option>& table, Map_Options& options);

// Throws Usage_Error for options that exclude each other.
void check_map_options(const Model_Options& options, const Map_Options& map_options);

// Throws Usage_Error for texts that say nothing.
drawing::map::Map_Settings map_settings_of(const Map_Options& options);

// change: of the settings of the whole map, after a style file's. Warns of what is not drawn, or refuses it with --strict. Throws
// what reading and options throw.
std::unique_ptr<drawing::map::Map_Scene> load_map_scene(const Model_Options& options, const Map_Options& map_options,
                                                        std::vector<drawing::Input> inputs,
                                                        const std::function<void(drawing::map::Map_Settings&)>& change = {});

} // namespace vorna::app
