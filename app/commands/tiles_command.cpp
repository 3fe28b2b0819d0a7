// The command `tiles`: maps as pyramids of tiles for viewers in web pages.
#include "app/commands/tiles_command.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "app/cli/command.h"
#include "app/cli/messages.h"
#include "app/cli/progress.h"
#include "app/commands/map_options.h"
#include "app/commands/output_options.h"
#include "app/commands/part_origin.h"
#include "app/commands/tile_parts.h"
#include "drawing/files/helpers.h"
#include "drawing/files/interruption.h"
#include "drawing/files/output_file.h"
#include "drawing/files/output_files.h"
#include "drawing/files/path.h"
#include "drawing/image/image_formats.h"
#include "drawing/image/sha256.h"
#include "drawing/job/image_plan.h"
#include "drawing/pyramid/pyramid.h"
#include "drawing/pyramid/pyramid_file.h"

namespace vorna::app {
namespace {

using namespace drawing::pyramid;

// The options of models and maps that this command has too, in this order, before its own.
constexpr std::array shared_options{
    "--input-format", "--strict",       "--max-memory",   "--allow-outside", "--antialias",   "--background",   "--bbox",
    "--layer",        "--filter",       "--clip-to",      "--fill",          "--opacity",     "--water",        "--graticule",
    "--border",       "--outline",      "--border-color", "--border-width",  "--casing",      "--casing-width", "--marker",
    "--marker-size",  "--marker-color", "--labels",       "--label-size",    "--label-color", "--label-key",    "--halo",
    "--halo-color",   "--font",         "--overlay",      "--overlay-color", "--merge",       "--fill-by",      "--classes",
    "--class-count",  "--breaks",       "--ramp",         "--reverse-ramp",  "--width-by",    "--widths",       "--label-by",
    "--style",        "--title",        "--attribution"};

// Options without influence on the output: a run may be continued with others.
constexpr std::array working_options{"--output", "--threads",  "--resume", "--max-memory", "--stats",
                                     "--strict", "--parts-of", "--part",   "--plan",       "--plan-lines"};

// The file beside the output that keeps tiles until all are there.
std::string log_of(const Tiles_Options& options) {
    return options.image.output + ".vorna-tiles";
}

std::vector<std::string> tile_formats() {
    std::vector<std::string> formats;
    for (const char* suffix : {"png", "webp"}) {
        if (drawing::find_image_format(suffix)->encoder) {
            formats.emplace_back(suffix);
        }
    }
    return formats;
}

std::pair<int, int> zooms_of(const std::string& text, int most) {
    const char *place = text.data(), *end = place + text.size();
    std::pair<int, int> zooms{-1, -1};
    std::from_chars_result read = std::from_chars(place, end, zooms.first);
    zooms.second = zooms.first;
    if (read.ec == std::errc{} && read.ptr != end && *read.ptr == '-') {
        read = std::from_chars(read.ptr + 1, end, zooms.second);
    }
    if (read.ec != std::errc{} || read.ptr != end || zooms.first < 0 || zooms.second < zooms.first || zooms.second > most) {
        throw drawing::Usage_Error("--zoom: expected levels FROM-TO from 0 to " + std::to_string(most) +
                                   " for tiles of this size, found '" + text + "'");
    }
    return zooms;
}

// The extent whose tiles are wanted.
std::optional<drawing::map::Extent> extent_of(const Map_Options& options) {
    const std::optional<drawing::map::Extent> extent = map_settings_of(options).bbox;
    if (extent && !(extent->west < extent->east && extent->west >= -180 && extent->east <= 180)) {
        throw drawing::Usage_Error("--bbox: expected degrees with west below east, found '" + options.bbox + "'");
    }
    return extent;
}

Pyramid_Settings settings_of(const Tiles_Options& options) {
    Pyramid_Settings settings;
    settings.tile_side = options.tile_side;
    settings.supersample = options.supersample;
    int most = 0;
    while ((std::int64_t{options.tile_side} * options.supersample << (most + 1)) <= drawing::largest_side) {
        ++most;
    }
    std::tie(settings.first_zoom, settings.last_zoom) = zooms_of(options.zoom, std::min(most, largest_zoom));
    settings.extent = extent_of(options.map);
    settings.transparent = options.is_transparent();
    settings.background = settings.transparent ? settings.background : map_background_of(options);
    settings.file = output_file_of(options.image);
    settings.compression = compression_of(options.image);
    settings.threads = options.threads > 0 ? options.threads : drawing::processor_count();
    choose_part(options, settings);
    return settings;
}

// The value that the parser has stored.
std::string value_of(const Option& option) {
    return std::visit(
        [](const auto& target) -> std::string {
            using Pointer = std::decay_t<decltype(target)>;
            if constexpr (!std::is_pointer_v<Pointer>) {
                return {};
            } else if constexpr (std::is_same_v<Pointer, std::string*>) {
                return *target;
            } else if constexpr (std::is_same_v<Pointer, std::vector<std::string>*>) {
                std::string all;
                std::ranges::for_each(*target, [&](const std::string& text) { all += text + '\n'; });
                return all;
            } else {
                return std::to_string(*target);
            }
        },
        option.target);
}

// What tells whether a run may be continued: the values of options, and the contents of files. It is written into the output, so
// that it must not depend on when and where files lie.
std::string key_of(const Command& command, const Tiles_Options& options, const std::string& inputs,
                   const std::vector<std::string>& files) {
    std::string text = inputs + '\n' + std::to_string(options.tile_side) + '\n'; // its option is a function, which has no value
    for (const Option& option : command.options) {
        if (const std::string& name = option.names.back(); std::ranges::find(working_options, name) == working_options.end()) {
            text += name + '=' + value_of(option) + '\n';
        }
    }
    for (const std::string& file : files) {
        std::filesystem::path path = drawing::path_of(file);
        text += path.filename().string() + ' ' + digest_of_file(file) + '\n';
        if (path.extension() == ".shp" || path.extension() == ".SHP") { // which is read with the files beside it
            for (const char* suffix : {".dbf", ".DBF", ".shx", ".SHX", ".prj", ".PRJ", ".cpg", ".CPG"}) {
                text += digest_of_file(path.replace_extension(suffix).string()) + '\n';
            }
        }
    }
    drawing::Sha256 sum;
    sum.add(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
    return sum.finish();
}

void refuse_what_is_no_map(const std::vector<drawing::Input>& inputs) {
    for (const drawing::Input& input : inputs) {
        if (!drawing::is_map(input) || input.suffix == "dxf") {
            throw drawing::Usage_Error(input.name + ": expected a map, found " +
                                       (drawing::is_map(input) ? "a drawing" : "a model"));
        }
    }
}

// Draws what the log lacks, and writes the pyramid.
void draw_and_write(const Tiles_Options& options, const Pyramid_Settings& settings, const Pyramid_Facts& facts,
                    Pyramid_Format format, drawing::Map_Drawing& map, const Given& given) {
    using Clock = std::chrono::steady_clock;
    const auto seconds_since = [](Clock::time_point start) {
        return std::chrono::duration<double>(Clock::now() - start).count();
    };
    const drawing::Interruption interruption; // so that no unfinished file stays behind
    check_levels(settings, map);
    Tile_Log log(log_of(options), facts.key, options.resume);
    const auto start = Clock::now();
    if (options.parts_of > 0) {
        join_tile_parts(options, settings, facts.key, log);
    }
    Pyramid_Settings whole = settings;
    whole.parts = 1;
    draw_pyramid(whole, chosen_module(given), map, log);
    const double drawn = seconds_since(start);
    write_pyramid(log, facts, options.image.output, format);
    if (options.stats) {
        std::fprintf(stderr, "%llu tiles, %zu different images, drawn in %.1f s, written in %.1f s\n",
                     static_cast<unsigned long long>(tile_count(settings)), log.content_count(), drawn,
                     seconds_since(start) - drawn);
    }
    log.remove();
}

void make_tiles(Tiles_Options& options, const Given& given) {
    const std::string& output = options.image.output;
    const Pyramid_Format format = format_of(output);
    refuse_standard_output("-o", output);
    Pyramid_Settings settings = settings_of(options);
    check_map_options(options, options.map);
    std::vector<std::string> read = options.models;
    read.insert(read.end(), {options.map.overlay, options.map.font, options.map.style});
    drawing::refuse_same_files(read, {output, log_of(options)});
    const bool is_part = options.part >= 0 || options.plan > 0, has_parts = options.parts_of > 0 || options.plan > 0;
    if ((options.resume || has_parts) && std::ranges::find(read, "-") != read.end()) {
        throw drawing::Usage_Error(std::string(options.resume     ? "--resume"
                                               : options.plan > 0 ? "--plan"
                                                                  : "--parts-of") +
                                   ": expected files with names, found standard input");
    }
    const std::filesystem::path place = drawing::path_of(output),
                                last_file = format == Pyramid_Format::folder ? place / "tiles.json" : place;
    const bool has_log = std::filesystem::exists(drawing::path_of(log_of(options)));
    const bool is_finished = options.resume && !has_log && std::filesystem::exists(last_file);
    check_pyramid(output, format, is_part || (options.resume && (has_log || is_finished)));

    options.limits = limits_of(options, options.threads);
    std::vector<drawing::Input> inputs = open_inputs(options);
    refuse_what_is_no_map(inputs);
    const std::string contents = digest_of_inputs(inputs);
    Pyramid_Facts facts{.name = {},
                        .attribution = {},
                        .image_format = std::string(drawing::image_format(settings.file).suffix),
                        .extent = settings.extent.value_or(drawing::map::Extent{-180, -mercator_limit(), 180, mercator_limit()}),
                        .first_zoom = settings.first_zoom,
                        .last_zoom = settings.last_zoom,
                        .tile_side = settings.tile_side,
                        .key = {}};
    auto scene = load_map_scene(options, options.map, std::move(inputs), [&](drawing::map::Map_Settings& of_map) {
        fit_to_pyramid(of_map);
        facts.name = std::exchange(of_map.title, {});
        facts.attribution = std::exchange(of_map.attribution, {});
        of_map.legend = false;
    });
    const std::vector<std::string> drawn_files = scene->files();
    if (facts.name.empty()) {
        facts.name = drawing::path_of(drawn_files.front()).stem().string();
    }
    read.insert(read.end(), drawn_files.begin(), drawn_files.end());
    facts.key = key_of(*given.command, options, contents, read);
    if (options.plan > 0) {
        print_tiles_plan(options, settings, facts.key, given);
        return;
    }
    if (is_finished && !is_part) {
        if (pyramid_key(output, format) != facts.key) {
            throw drawing::Usage_Error((format == Pyramid_Format::folder ? output + "/tiles.json" : output) +
                                       ": expected tiles of the same files and options, found others");
        }
        return; // nothing to do
    }
    settings.max_memory = options.limits->memory(); // which grows with the files that have been read
    Progress progress;
    settings.progress = [&progress](double done) { progress.show(done); };
    drawing::Map_Drawing map(std::move(scene), {settings.background, false, options.antialias});
    if (is_part) {
        draw_tile_part(options, settings, facts.key, map, given);
    } else {
        draw_and_write(options, settings, facts, format, map, given);
    }
}

} // namespace

Command tiles_command() {
    const auto options = std::make_shared<Tiles_Options>();
    constexpr const char* group = "Tiles";
    std::vector<Option> others, table;
    add_model_options(others, *options);
    add_output_options(others, options->image, group);
    add_map_options(others, options->map);
    Option& output = option_named(others, "--output");
    output.value = output_value("OUTPUT", {"mbtiles", "pmtiles"});
    output.text = "A new folder for tiles as ZOOM/COLUMN/ROW.png and tiles.json, or a file NAME.mbtiles or NAME.pmtiles";
    option_named(others, "--compress").text = "Larger tiles in less time, or smaller ones in more; the pixels are the same";
    option_named(others, "--bbox").text = "Make only the tiles that touch this part, in degrees; they look the same as without";
    option_named(others, "--title").text = "Name of the tiles in their description, by default that of the file; not drawn";
    option_named(others, "--attribution").text = "Attribution for viewers to show; not drawn";
    option_named(others, "--strict").text = "Fail when a part of the map cannot be drawn, instead of warning";
    option_named(others, "--allow-outside").text = "Read files that lie outside of the folder of a style file too";
    for (const char* name : {"--output", "--compress"}) {
        table.push_back(option_named(others, name));
    }
    const std::vector<Option> own{
        {.names = {"--zoom"},
         .value = text_value("FROM-TO"),
         .text = "Levels; level Z has 2^Z columns and rows of tiles",
         .target = &options->zoom,
         .group = group,
         .is_required = true},
        {.names = {"--tile-size"},
         .value = choice_value("PIXELS", {"256", "512"}),
         .text = "Side of a tile",
         .target = [options](const std::string& text) { options->tile_side = text == "512" ? 512 : 256; },
         .group = group,
         .by_default = "256"},
        {.names = {"--tile-format"},
         .value = choice_value("SUFFIX", tile_formats()),
         .text = "Format of the tiles",
         .target = &options->image.format,
         .group = group,
         .by_default = "png"},
        {.names = {"--resume"},
         .text =
             "Continue a run of the same files and options that was interrupted; nothing to do after one that came to its end",
         .target = &options->resume,
         .group = group},
        {.names = {"--supersample"},
         .value = whole_value("N", 1, 8),
         .text = "Draw so many times as large and take the mean of the pixels: smooth faces and lines",
         .target = &options->supersample,
         .group = group,
         .by_default = "1"},
        {.names = {"--threads"},
         .value = whole_value("N", 1, 1024),
         .text = "Threads that read, draw and compress; as many as there are processors if not given",
         .target = &options->threads,
         .group = group},
        {.names = {"--stats"}, .text = "Print numbers of tiles and times", .target = &options->stats, .group = group}};
    table.insert(table.end(), own.begin(), own.end());
    add_tile_part_options(table, *options, group);
    for (const char* name : shared_options) {
        Option& option = table.emplace_back(option_named(others, name));
        option.applies_to = Applies_To::every_input;
    }
    return {
        .name = "tiles",
        .summary = "Draw a map as tiles for viewers in web pages.",
        .arguments = {model_argument(*options, "Maps of degrees, or with a coordinate system, drawn together: GeoJSON, TopoJSON, "
                                               "and with GDAL shapefiles, GeoPackage, KML, GPX, CSV; - is standard input")},
        .options = std::move(table),
        .examples = {{"vorna tiles countries.json -o world.pmtiles --zoom 0-6 --labels", "one file for maplibre-gl"},
                     {"vorna tiles towns.gpkg -o tiles --zoom 4-10 --bbox 5,45,11,48", "a folder with a part of the world"}},
        .run = [options](const Given& given) {
            make_tiles(*options, given);
            return exit_status::done;
        }};
}

} // namespace vorna::app
