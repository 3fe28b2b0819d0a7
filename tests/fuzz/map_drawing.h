// Maps and drawings of fuzzers, drawn as the command does it.
#pragma once

#include <string>
#include <string_view>

#include "app/commands/map_command.h"
#include "tests/fuzz/fuzzing.h"

namespace fuzzing {

// style: chooses among options.
inline void draw_map(std::string_view content, std::size_t style, bool is_drawing) {
    constexpr const char* projections[] = {"", "plane", "mercator", "equirectangular"};
    constexpr const char* borders[] = {"solid", "dashed", "3,2", "none"};
    vorna::app::Map_Picture picture;
    picture.input = {"map", is_drawing ? "dxf" : "json", std::string(content)};
    picture.output = "/dev/null";
    picture.size = {40, (style & 1) != 0 ? 30 : 0};
    picture.background = {255, 255, 255, 255};
    picture.colors = (style & 2) != 0 ? 8 : 32;
    picture.allow_empty = true;
    picture.transparent = picture.colors == 32 && (style & 1024) != 0;
    picture.antialias = picture.colors == 32 && (style & 4) != 0;
    vorna::app::Map_Options options;
    options.projection = is_drawing ? "" : projections[style / 8 % 4];
    options.border = borders[style / 32 % 4];
    options.border_width = (style & 128) != 0 ? 3 : 1;
    options.bbox = (style & 512) != 0 ? "0,0,1e-9,1e-9" : "";
    options.casing = (style & 256) != 0 ? "red" : "";
    vorna::app::render_map(picture, options, renderer_module());
}

} // namespace fuzzing
