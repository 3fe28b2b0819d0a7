// What the command `render` does with maps and drawings.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "app/cli/command.h"
#include "drawing/files/input.h"
#include "host/color.h"
#include "host/geometry.h"

namespace vorna::app {

// Texts as they are given; empty = not given.
struct Map_Options {
    std::string layer, bbox, projection, center, fill, water, clip_to;
    std::string border = "solid", outline, border_color, casing;
    std::string marker = "disc", marker_color = "#c8321e";
    std::string overlay, overlay_color = "#5a8ce6", merge;
    bool labels = false;
    std::string label_color = "black", font;
    double opacity = 1, graticule = 0;
    std::int32_t label_size = 12, border_width = 1, casing_width = 2, marker_size = 7;
};

// What maps share with models.
struct Map_Picture {
    drawing::Input input;
    std::string output;
    std::string record;  // empty = not asked for
    VT_Int_Pair size;    // a height of 0 is chosen by what is drawn
    VT_RGB32 background; // white when it is transparent
    bool transparent = false;
    int colors = 32;
    bool antialias = false;
    int repeat = 1;
    std::shared_ptr<drawing::Load_Limits> limits = std::make_shared<drawing::Load_Limits>(); // of all that is read
    bool stats = false, strict = false, dry_run = false, allow_empty = false, hash = false;
};

void add_map_options(std::vector<Option>& table, Map_Options& options);

void render_map(const Map_Picture& picture, const Map_Options& options, const drawing::Module_Choice& module);

} // namespace vorna::app
