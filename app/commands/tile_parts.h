// `tiles` in parts, which several machines draw.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "app/cli/options.h"
#include "app/commands/map_options.h"
#include "app/commands/output_options.h"
#include "drawing/pyramid/pyramid.h"

namespace vorna::app {

struct Tiles_Options : Model_Options {
    Map_Options map;
    Output_Options image;
    std::string zoom;
    int tile_side = 256, supersample = 1;
    unsigned threads = 0;
    std::int32_t parts_of = 0, part = -1; // one of so many parts; -1 = all of them are joined
    std::int32_t plan = 0;                // into so many parts; 0 = tiles are made
    bool plan_lines = false;
    bool resume = false, stats = false;
};

void add_tile_part_options(std::vector<Option>& table, Tiles_Options& options, const std::string& group);

// Throws Usage_Error for a part that is none.
void choose_part(const Tiles_Options& options, drawing::pyramid::Pyramid_Settings& settings);

// Prints the commands that draw parts and join them. key: see Tile_Log.
void print_tiles_plan(const Tiles_Options& options, drawing::pyramid::Pyramid_Settings settings, const std::string& key,
                      const Given& given);
// Draws one part into its file.
void draw_tile_part(const Tiles_Options& options, const drawing::pyramid::Pyramid_Settings& settings, const std::string& key,
                    drawing::Map_Drawing& map, const Given& given);
// Adds the tiles of all parts to the log. Throws Usage_Error for parts that are missing, damaged or of others.
void join_tile_parts(const Tiles_Options& options, drawing::pyramid::Pyramid_Settings settings, const std::string& key,
                     drawing::pyramid::Tile_Log& log);

} // namespace vorna::app
