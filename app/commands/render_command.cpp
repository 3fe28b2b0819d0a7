// The command `render`: draws models, maps and drawings as image files.
#include "app/commands/render_command.h"

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "app/cli/command.h"
#include "app/commands/batch_files.h"
#include "app/commands/map_options.h"
#include "app/commands/part_origin.h"
#include "app/commands/print_options.h"
#include "app/commands/render_batch.h"
#include "app/commands/render_map.h"
#include "app/commands/render_model.h"
#include "app/commands/render_stream.h"
#include "drawing/files/input.h"
#include "drawing/files/output_files.h"
#include "drawing/files/path.h"
#include "drawing/image/color_name.h"
#include "drawing/job/formats.h"
#include "drawing/job/image_plan.h"
#include "drawing/map/label_font.h"

namespace vorna::app {
namespace {

// Maps are drawn without models.
void refuse_models(const std::vector<drawing::Input>& inputs, const drawing::Input& map) {
    for (const drawing::Input& input : inputs) {
        if (!drawing::is_map(input)) {
            throw drawing::Usage_Error(map.name + ": expected a model beside " + input.name + ", found a map or drawing");
        }
    }
}

// The files as one image.
void draw_together(Render_Options& options, const Map_Options& map_options, const Given& given) {
    // A user easily puts -o before the wrong name.
    std::vector<std::string> read = options.models;
    read.insert(read.end(), {options.palette, map_options.overlay, map_options.font, map_options.style});
    drawing::refuse_same_files(read, {options.image.output, options.record, options.tile_times});
    options.limits = limits_of(options, options.threads);
    for (const std::string& model : is_streamed(options) ? options.models : std::vector<std::string>()) {
        // Before anything is read: a pipe may have no end.
        std::error_code none;
        if (const auto file = drawing::path_of(model);
            model != "-" && std::filesystem::exists(file, none) && !std::filesystem::is_regular_file(file, none)) {
            throw drawing::Usage_Error(model + ": expected a plain file with --stream, found another kind of file");
        }
    }
    std::vector<drawing::Input> inputs = open_inputs(options);
    options.given = &given;
    for (const auto& [name, file] : {std::pair("--style", &map_options.style), {"--overlay", &map_options.overlay}}) {
        if (has_parts(options) && *file == "-") {
            throw drawing::Usage_Error(std::string(name) + ": expected a file, which every part reads, found standard input");
        }
    }
    if (has_parts(options) && !is_streamed(options)) {
        options.models_digest = digest_of_inputs(inputs);
    }
    const auto map = std::ranges::find_if(inputs, drawing::is_map);
    reject_options_of_other_kind(given, map != inputs.end(), map == inputs.end() ? inputs.front().name : map->name);
    if (map != inputs.end()) {
        refuse_models(inputs, *map);
        render_map(options, map_options, std::move(inputs), chosen_module(given));
    } else if (choose_up_axis(options, inputs); is_streamed(options)) {
        render_streamed(options, inputs, chosen_module(given));
    } else {
        render_models(options, std::move(inputs), chosen_module(given));
    }
}

// Throws for options that are wrong whatever the files of a batch are: models or maps.
void check_without_files(Render_Options& options, const Map_Options& map_options, const drawing::Module_Choice& module) {
    for (const auto& [file, option] : {std::pair(options.palette, "--palette"), {map_options.overlay, "--overlay"}}) {
        if (file == "-") {
            throw drawing::Usage_Error(std::string(option) + " -: expected a file with --output-folder, found standard input");
        }
    }
    options.limits = limits_of(options);
    drawing::check_input_format(options.input_format);
    const VT_Int_Pair size = image_size_of(options);
    const Palette_Choice palette = palette_of(options);
    job_settings_of(options, size, supersample_of_model(options, size), palette);
    if (!options.is_transparent()) {
        background_of(options); // maps take fewer words than models
    }
    look_of(options, true, palette.drawn);
    section_of(options);
    check_map_options(options, map_options);
    const drawing::map::Map_Settings settings = map_settings_of(map_options);
    drawing::open_overlay(settings, *options.limits);
    if (settings.labels) {
        drawing::map::load_label_font(settings.font, *options.limits);
    }
    drawing::Session{module};
}

// Names of colours, in lines of up to 76 columns.
std::vector<std::string> color_lines() {
    std::vector<std::string> lines{"#rgb, #rrggbb or a name:", ""};
    for (const std::string& name : drawing::color_names()) {
        if (lines.back().size() + name.size() > 74) {
            lines.emplace_back();
        }
        lines.back() += (lines.back().empty() ? "" : " ") + name;
    }
    return lines;
}

void choose_look(Render_Options& options, const std::string& look) {
    options.studio = look == "studio";
    options.picture.tint = options.studio ? drawing::model::Tint::own : drawing::model::Tint::lit;
}

void choose_pass(Render_Options& options, const std::string& pass) {
    options.pass = pass;
    options.picture.tint = pass == "normals" ? drawing::model::Tint::normals
                           : pass == "faces" ? drawing::model::Tint::numbers
                                             : drawing::model::Tint::lit;
}

} // namespace

Command render_command() {
    const auto options = std::make_shared<Render_Options>();
    const auto map_options = std::make_shared<Map_Options>();
    constexpr const char *output = "Output", *output_of_models = "Output of models", *large = "Large images",
                         *measuring = "Measuring", *drawing_of_models = "Drawing of models";
    Command command{
        .name = "render",
        .summary = "Draw models, a map or a drawing as an image.",
        .arguments = {model_argument(*options, "Models (PLY, OBJ, STL and whatever assimp reads), drawn together, or maps "
                                               "(GeoJSON, TopoJSON, and with GDAL shapefiles, GeoPackage, KML, GPX, CSV) or a "
                                               "drawing (DXF); also compressed by gzip; - is standard input")},
        .examples = {{"vorna render bunny.obj -o bunny.png --view front --edges --antialias", "a model with its edges"},
                     {"vorna render truck.gltf -o truck.png --size 1920x1080", "with its materials and images"},
                     {"vorna render countries.json -o world.png --projection robinson --border dashed", "a map of the world"},
                     {"vorna render house.obj tree.ply -o both.png --supersample 4 --background none",
                      "two models, smooth and transparent"},
                     {"vorna render bunny.obj -o poster.png --size 40000x20000", "a poster, within 1 GiB of memory"},
                     {"vorna render plan.dxf -o plan.pdf --paper A3-landscape --scale 1:100", "a sheet in its scale"},
                     {"vorna render parts/*.stl --output-folder images", "each file by itself"},
                     {"vorna render bunny.obj -o bunny.png --record bunny.json.gz",
                      "and the calls that drew it, for vorna replay"}},
        .sections = {{"Colours", color_lines()}},
        .run = [options, map_options](const Given& given) {
            options->has_size = given.has("--size") || given.has("--paper");
            if (options->resume && options->output_folder.empty() && options->tiles_of.empty() && options->parts_of == 0) {
                throw drawing::Usage_Error("--resume: expected --output-folder, --tiles-of or --parts-of beside it, found none");
            }
            const auto draw = [&](Render_Options& one) { draw_together(one, *map_options, given); };
            if (!options->output_folder.empty()) {
                options->models = batch_files(options->models, options->files_from);
                const auto check = [&](Render_Options& one) { check_without_files(one, *map_options, chosen_module(given)); };
                return render_batch(*options, check, draw);
            }
            draw(*options);
            return exit_status::done;
        }};
    command.arguments.front().unless = "--files-from";
    add_model_options(command.options, *options);
    add_output_options(command.options, options->image, output);
    Option& single = option_named(command.options, "--output");
    single.unless = "--output-folder";
    single.excludes = {"--output-folder"};
    const std::vector<Option> own{
        {.names = {"--look"},
         .value = choice_value("LOOK", {"plain", "studio"}),
         .text = "How models are shaded: plain, or studio: soft light, dark corners, outlines and a shadow on the ground",
         .target = [options](const std::string& look) { choose_look(*options, look); },
         .group = drawing_of_models,
         .applies_to = Applies_To::models,
         .by_default = "plain"},
        {.names = {"--pass"},
         .value = choice_value("PASS", {"depth", "normals", "faces"}),
         .text = "Instead of the colours: the depth buffer as 16-bit grey, normals of surfaces in view space as colours, or a "
                 "colour for each face, its number from 1 on; black, of depths white, is nothing; faces alone, without edges, "
                 "points and "
                 "lines",
         .target = [options](const std::string& pass) { choose_pass(*options, pass); },
         .group = drawing_of_models,
         .applies_to = Applies_To::models,
         .excludes = {"--look", "--background", "--line-width", "--point-size"}},
        {.names = {"--output-folder"},
         .value = text_value("FOLDER"),
         .text = "Draw each file, and each file of a folder, by itself, into this folder under its own name, on all processors; "
                 "failures are "
                 "listed in the end",
         .target = &options->output_folder,
         .group = output,
         .excludes = {"--record", "--turntable", "--tiles-of", "--dry-run", "--repeat", "--stats"}},
        {.names = {"--resume"},
         .text = "Leave out files whose images are there, or the part that is there, undamaged, of the same inputs and options",
         .target = &options->resume,
         .group = output},
        {.names = {"--files-from"},
         .value = text_value("LIST"),
         .text = "Draw the files that this file names too, one a line; - is standard input",
         .target = &options->files_from,
         .group = output,
         .needs = {"--output-folder"}},
        {.names = {"--manifest"},
         .value = text_value("FILE"),
         .text =
             "Add a line of JSON for each file when it is done: its image, drawn, kept or failed, why, and the seconds that it "
             "took; - is standard output",
         .target = &options->manifest,
         .group = output,
         .needs = {"--output-folder"}},
        {.names = {"--time-limit"},
         .value = number_value("SECONDS", 0.001, 1e6),
         .text = "Give up a file after so long; --max-memory holds for each file too",
         .target = &options->time_limit,
         .group = output,
         .needs = {"--output-folder"}},
        {.names = {"--record"},
         .value = output_value("RECORDING", {"json", "gz", "zst", "cbor"}),
         .text = "Write what is drawn as a recording for replay, too, smaller as .cbor.zst, .json.zst or .gz",
         .target = &options->record,
         .group = output},
        {.names = {"--size"},
         .value = text_value("WxH"),
         .text = "Width and height in pixels, up to " + std::to_string(drawing::largest_side) +
                 "; maps are as high as they need to be without it",
         .target = &options->size,
         .group = output,
         .by_default = options->size},
        {.names = {"--supersample"},
         .value = whole_value("N", 1, 8),
         .text =
             "Draw so many times as large and take the mean of the pixels: smooth faces and lines. By default 2 for models, 1 "
             "for "
             "maps and with --record, --colors 8, --palette, --antialias or more than 16777216 pixels. 1: the pixels that the "
             "renderer draws",
         .target = &options->supersample,
         .group = output},
        {.names = {"--turntable"},
         .value = whole_value("FRAMES", 1, 100000),
         .text = "So many images from places all around, numbered in the file's name: frame-%03d.png or frame-{}.png",
         .target = &options->turntable,
         .group = output_of_models,
         .applies_to = Applies_To::models},
        {.names = {"--dry-run"},
         .text = "Read and check everything, tell what would be drawn, write nothing",
         .target = &options->dry_run,
         .group = output},
        {.names = {"--allow-empty"},
         .text = "Write the image though nothing is to be seen in it",
         .target = &options->allow_empty,
         .group = output},
        {.names = {"--repeat"},
         .value = whole_value("N", 1, 1000000),
         .text = "Draw the image so many times, for measuring",
         .target = &options->repeat,
         .group = measuring},
        {.names = {"--tile-times"},
         .value = text_value("FILE"),
         .text = "Write a text of milliseconds: of preparing the image, then of each of its tiles",
         .target = &options->tile_times,
         .group = measuring,
         .excludes = {"--turntable", "--dry-run"}},
        {.names = {"--stats"}, .text = "Print sizes and times", .target = &options->stats, .group = measuring},
        {.names = {"--threads"},
         .value = whole_value("N", 1, 1024),
         .text = "Threads that read, draw and compress; as many as there are processors if not given",
         .target = &options->threads,
         .group = large},
        {.names = {"--tile-size"},
         .value = whole_value("N", 8, drawing::largest_tile),
         .text = "Side of the tiles that the image is drawn in, a multiple of 8",
         .target = &options->tile_size,
         .group = large},
        {.names = {"--tiles-of"},
         .value = text_value("COLSxROWS"),
         .text = "Draw one part of so many columns and rows, for vorna assemble",
         .target = &options->tiles_of,
         .group = large,
         .needs = {"--tile"}},
        {.names = {"--tile"},
         .value = whole_value("N", 0, (1 << 20) - 1),
         .text = "Which part: 0 is the upper left one, counted row by row",
         .target = &options->tile,
         .group = large,
         .needs = {"--tiles-of"}},
        {.names = {"--area"},
         .value = text_value("X,Y,WxH"),
         .text = "The top left pixel and the size of the part, where parts are not equally large; parts meet at multiples of 8 "
                 "pixels from the lower left corner",
         .target = &options->area,
         .group = large,
         .needs = {"--tiles-of"}},
        {.names = {"--plan"},
         .value = whole_value("N", 1, most_planned_parts),
         .text = "Print the commands that draw the image in so many parts of about equal work and join them, with estimates of "
                 "time and memory, as JSON; draw nothing",
         .target = &options->plan,
         .group = large,
         .excludes = {"--tiles-of", "--record", "--turntable", "--output-folder", "--dry-run", "--repeat", "--tile-times",
                      "--resume"}},
        {.names = {"--plan-lines"},
         .text = "Print the plan as lines for a shell: parts that are not there yet, and the command that joins them all",
         .target = &options->plan_lines,
         .group = large,
         .needs = {"--plan"}},
        {.names = {"--hash"}, .text = "Print the SHA-256 of the pixels", .target = &options->hash, .group = output}};
    command.options.insert(command.options.end(), own.begin(), own.end());
    add_stream_options(command.options, *options, large);
    add_print_options(command.options, options->print);
    add_map_options(command.options, *map_options);
    return command;
}

} // namespace vorna::app
