// The command `render`: models, maps and drawings as images.
#include "app/commands/render_command.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "app/cli/command.h"
#include "app/commands/map_options.h"
#include "app/commands/render_map.h"
#include "app/commands/render_model.h"
#include "drawing/files/input.h"
#include "drawing/files/output_file.h"
#include "drawing/image/color_name.h"
#include "drawing/job/image_plan.h"

namespace vorna::app {
namespace {

// A map is drawn by itself.
void refuse_several(const std::vector<drawing::Input>& inputs, const drawing::Input& map) {
    for (const drawing::Input& input : inputs) {
        if (!drawing::is_map(input)) {
            throw drawing::Usage_Error(map.name + ": expected a model beside " + input.name + ", found a map or drawing");
        }
    }
    if (inputs.size() > 1) {
        throw drawing::Usage_Error(inputs[1].name +
                                   ": expected one map or drawing, found another one; --overlay draws it over the first");
    }
}

std::string color_help() {
    std::string text = "Colours:\n  #rgb, #rrggbb or a name:\n ";
    for (const std::string& name : drawing::color_names()) {
        text += (text.size() - text.rfind('\n') + name.size() > 76 ? "\n  " : " ") + name;
    }
    return text;
}

} // namespace

void add_render_command(CLI::App& application, int& status) {
    CLI::App& command = *application.add_subcommand("render", "Draw models, a map or a drawing as a PNG image.");
    const auto options = std::make_shared<Render_Options>();
    add_model_options(
        command, *options,
        "Models (PLY, OBJ, STL and whatever assimp reads), drawn together, or a map (GeoJSON, TopoJSON) or a drawing "
        "(DXF); also compressed by gzip; - is standard input");
    command.add_option("-o,--output", options->output, "PNG file to write; - is standard output")
        ->required()
        ->type_name("FILE.png")
        ->check(written_as({"png"}));
    command
        .add_option("--record", options->record, "Write what is drawn as a recording for vorna replay too, compressed as FILE.gz")
        ->type_name("PICTURE")
        ->check(written_as({"json", "gz"}));
    command
        .add_option("--size", options->size,
                    "Width and height in pixels, up to " + std::to_string(drawing::largest_side) +
                        "; maps are as high as they need to be without it")
        ->type_name("WxH")
        ->capture_default_str();
    command
        .add_option("--supersample", options->supersample,
                    "Draw so many times as large and take the mean of the pixels: smooth faces and lines")
        ->type_name("N")
        ->check(between(1, 8));
    command
        .add_option("--turntable", options->turntable,
                    "So many images from places all around, numbered in the file's name: frame-%03d.png or frame-{}.png")
        ->type_name("FRAMES")
        ->check(between(1, 100000));
    command.add_flag("--dry-run", options->dry_run, "Read and check everything, tell what would be drawn, write nothing");
    command.add_flag("--allow-empty", options->allow_empty, "Write the image though nothing is to be seen in it");
    command.add_option("--repeat", options->repeat, "Draw the image so many times, for measuring")
        ->type_name("N")
        ->check(between(1, 1000000));
    command.add_flag("--stats", options->stats, "Print sizes and times");
    command
        .add_option("--threads", options->threads, "Threads that draw and compress; as many as there are processors if not given")
        ->type_name("N")
        ->check(between(1, 1024));
    command.add_option("--tile-size", options->tile_size, "Side of the tiles that the image is drawn in, a multiple of 8")
        ->type_name("N")
        ->check(between(8, drawing::largest_tile));
    CLI::Option* const parts =
        command.add_option("--tiles-of", options->tiles_of, "Draw one part of so many columns and rows, for vorna assemble")
            ->type_name("COLSxROWS");
    CLI::Option* const part =
        command.add_option("--tile", options->tile, "Which part: 0 is the upper left one, counted row by row")
            ->type_name("N")
            ->needs(parts);
    parts->needs(part);
    part->check(between(0, (1 << 20) - 1));
    command.add_flag("--hash", options->hash, "Print the SHA-256 of the pixels");
    const auto map_options = std::make_shared<Map_Options>();
    add_map_options(command, *map_options);
    group_options(command, "Output", "--output --size --supersample --record --hash --dry-run --allow-empty");
    group_options(command, "Output of models", "--turntable");
    group_options(command, "Large images", "--threads --tile-size --tiles-of --tile");
    group_options(command, "Measuring", "--repeat --stats");
    command.footer(footer(
        {{"vorna render bunny.obj -o bunny.png --view front --edges --antialias", "a model with its edges"},
         {"vorna render truck.gltf -o truck.png --shading textured --size 1920x1080", "with its materials and images"},
         {"vorna render countries.json -o world.png --projection robinson --border dashed", "a map of the world"},
         {"vorna render house.obj tree.ply -o both.png --supersample 4 --background none", "two models, smooth and transparent"},
         {"vorna render bunny.obj -o poster.png --size 40000x20000", "a poster, within 1 GiB of memory"},
         {"vorna render bunny.obj -o bunny.png --record bunny.json.gz", "and the calls that drew it, for vorna replay"}},
        color_help()));
    command.fallthrough();
    command.callback([options, map_options, &command, &application, &status] {
        // -o is easily put before the wrong name.
        std::vector<std::string> read = options->models;
        read.insert(read.end(), {options->palette, map_options->overlay, map_options->font});
        drawing::refuse_same_files(read, {options->output, options->record});
        options->limits = limits_of(*options);
        std::vector<drawing::Input> inputs = open_inputs(*options);
        const auto map = std::ranges::find_if(inputs, drawing::is_map);
        refuse_options_of_other_kind(command, map == inputs.end() ? inputs.front() : *map);
        if (map != inputs.end()) {
            refuse_several(inputs, *map);
            options->has_size = command.count("--size") > 0;
            render_map(*options, *map_options, *map, chosen_module(application));
        } else {
            render_models(*options, std::move(inputs), chosen_module(application));
        }
        status = exit_status::done;
    });
}

} // namespace vorna::app
