// Maps and drawings of fuzzers, drawn as the command does it.
#pragma once

#include <string>
#include <string_view>

#include "app/commands/render_map.h"
#include "drawing/job/formats.h"
#include "tests/fuzz/fuzzing.h"

namespace fuzzing {

// style: chooses among options.
inline void draw_map(std::string_view content, std::size_t style, bool is_drawing) {
    constexpr const char* projections[] = {"", "plane", "mercator", "equirectangular"};
    constexpr const char* borders[] = {"solid", "dashed", "3,2", "none"};
    vorna::app::Render_Options render;
    const std::string suffix = is_drawing ? "dxf" : "json";
    const vorna::drawing::Input input{"map", suffix, vorna::drawing::find_format(suffix), std::string(content)};
    render.models = {"map"};
    render.image.output = "/dev/null";
    render.has_size = (style & 1) != 0;
    render.size = "40x30";
    render.colors = (style & 2) != 0 ? 8 : 32;
    render.allow_empty = true;
    render.background = render.colors == 32 && (style & 1024) != 0 ? "none" : "white";
    render.antialias = render.colors == 32 && (style & 4) != 0;
    render.tile_size = (style & 2048) != 0 ? 16 : 0;
    render.threads = 1;
    vorna::app::Map_Options options;
    options.projection = is_drawing ? "" : projections[style / 8 % 4];
    options.layout = is_drawing && (style & 24) == 24 ? "Sheet" : "";
    options.border = borders[style / 32 % 4];
    options.border_width = (style & 128) != 0 ? 3 : 1;
    options.bbox = (style & 512) != 0 ? "0,0,1e-9,1e-9" : "";
    options.casing = (style & 256) != 0 ? "red" : "";
    vorna::app::render_map(render, options, {input}, renderer_module());
}

} // namespace fuzzing
