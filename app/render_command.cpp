// The command `render`: a model as a picture.
#include "app/render_command.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

#include "app/command.h"
#include "app/drawn_model.h"
#include "app/image_file.h"
#include "app/interruption.h"
#include "app/map/map_reader.h"
#include "app/map_command.h"
#include "app/memory.h"
#include "app/model_options.h"
#include "app/output_file.h"
#include "app/picture/picture_file.h"
#include "app/picture/recorder.h"
#include "app/picture_part.h"
#include "app/picture_plan.h"
#include "app/picture_stream.h"
#include "app/scene/color_name.h"
#include "app/scene/model_reader.h"
#include "app/sha256.h"

namespace app {
namespace {

using Clock = std::chrono::steady_clock;

double milliseconds_since(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

struct Render_Options : Model_Options {
    std::string record; // empty = not asked for
    std::string output, size = "1280x960";
    int repeat = 1;
    bool stats = false;
    std::string tiles_of; // empty = the whole picture
    std::int32_t tile = -1, tile_size = 0;
    unsigned threads = 0;
    std::string max_memory = "1G";
    bool hash = false;
};

// What is drawn: the picture, or a part of it.
Picture_Part parsed_part(const Render_Options& options) {
    Picture_Part part;
    part.size = parsed_pair(options.size, largest_side,
                            "--size: expected WIDTHxHEIGHT with sides from 1 to " + std::to_string(largest_side));
    if (options.tiles_of.empty() != (options.tile < 0)) {
        throw Usage_Error(options.tile < 0 ? "--tiles-of: expected --tile beside it, found none"
                                           : "--tile: expected --tiles-of beside it, found none");
    }
    if (!options.tiles_of.empty()) {
        const VT_Int_Pair parts =
            parsed_pair(options.tiles_of, 1 << 10, "--tiles-of: expected COLUMNSxROWS with numbers from 1 to 1024");
        part.columns = parts.x;
        part.rows = parts.y;
        part.number = options.tile;
        if (!part.is_possible()) {
            throw Usage_Error("--tiles-of: expected parts of 8 pixels or more, found " + options.tiles_of + " for --size " +
                              options.size);
        }
        if (part.number >= parts.x * parts.y) {
            throw Usage_Error("--tile: expected a number from 0 to " + std::to_string(parts.x * parts.y - 1) + ", found " +
                              std::to_string(part.number));
        }
    }
    return part;
}

// What --stats tells.
struct Times {
    double load = 0, setup = 0, prepare = 0;
    std::vector<double> draws; // with preparing
    double written = 0;        // drawing and writing together, in pictures of several tiles
};

void print_stats(const Drawn_Model& model, const Picture_Plan& plan, Times times) {
    std::ranges::sort(times.draws);
    std::fprintf(stderr, "%s, load %.1f ms, setup %.1f ms, draw %.2f ms", model.summary().c_str(), times.load, times.setup,
                 times.draws.front());
    if (times.draws.size() > 1) {
        std::fprintf(stderr, " at best, %.2f ms in the middle of %zu", times.draws[times.draws.size() / 2], times.draws.size());
    }
    if (plan.grid.count() > 1) {
        std::fprintf(stderr, ", of it prepare %.2f ms, %zu tiles of %dx%d by %u threads, drawn and written in %.1f ms",
                     times.prepare, plan.grid.count(), plan.grid.tile_size.x, plan.grid.tile_size.y, plan.threads, times.written);
    }
    std::fputc('\n', stderr);
}

// Draws all tiles and keeps none, for measuring.
void draw_tiles(const std::vector<std::unique_ptr<Tile_Artist>>& artists, const Drawn_Model& model,
                const scene::Tile_Grid& grid) {
    std::atomic<std::size_t> next{0};
    std::mutex mutex;
    std::exception_ptr failure;
    const auto work = [&](Tile_Artist& artist) {
        try {
            for (std::size_t tile = next++; tile < grid.count(); tile = next++) {
                artist.draw(model, grid, tile);
            }
        } catch (...) {
            const std::lock_guard lock(mutex);
            failure = std::current_exception();
            next = grid.count();
        }
    };
    {
        std::vector<std::jthread> others;
        for (std::size_t i = 1; i < std::min(artists.size(), grid.count()); ++i) {
            others.emplace_back(work, std::ref(*artists[i]));
        }
        work(*artists.front());
    }
    if (failure) {
        std::rethrow_exception(failure);
    }
}

// The pixels of a tile in the file's rows.
void store_tile(Tile_Artist& artist, const scene::Tile_Grid& grid, std::size_t tile, const Png_Form& form,
                const Row_Places& places) {
    const VT_Int_Rectangle window = grid.window(tile), kept = grid.pixels(tile);
    const Frame_Buffer& buffer = artist.session().color_buffer();
    const std::ptrdiff_t skipped = std::ptrdiff_t{kept.left - window.left} * bytes_per_pixel(buffer.format);
    const std::size_t place = static_cast<std::size_t>(kept.left - grid.area.left) * form.pixel_bytes();
    for (std::int32_t y = kept.bottom; y <= kept.top; ++y) {
        store_samples(buffer.rows[y - window.bottom] + skipped, kept.right - kept.left + 1, buffer.format,
                      places(static_cast<std::uint32_t>(grid.area.top - y)) + place);
    }
}

Png_Form form_of(const Picture_Part& part, int colors, const VT_Palette& palette) {
    const VT_Int_Rectangle area = part.area();
    Png_Form form;
    form.width = static_cast<std::uint32_t>(area.right - area.left + 1);
    form.height = static_cast<std::uint32_t>(area.top - area.bottom + 1);
    if (colors != 32) {
        form.colors = Png_Form::Colors::palette;
        form.palette = png_palette_of(palette);
    }
    if (!part.is_whole()) {
        form.place = part.bytes();
    }
    return form;
}

unsigned thread_count(unsigned asked) {
    return asked > 0 ? asked : std::max(1U, std::thread::hardware_concurrency());
}

// The same file whatever the plan. A single tile has been drawn already.
void write_tiles(const Render_Options& options, const std::vector<std::unique_ptr<Tile_Artist>>& artists,
                 const Drawn_Model& model, const Picture_Plan& plan, const Png_Form& form) {
    const scene::Tile_Grid& grid = plan.grid;
    Picture_Source source;
    source.band_ends = plan.band_ends;
    source.parts = static_cast<std::uint32_t>(grid.columns());
    source.make = [&](unsigned thread, std::uint32_t band, std::uint32_t part, const Row_Places& places) {
        const auto row = static_cast<std::size_t>(grid.rows()) - 1 - band;
        const std::size_t tile = row * source.parts + part;
        Tile_Artist& artist = grid.count() == 1 ? *artists.front() : *artists[thread];
        if (grid.count() > 1) {
            artist.draw(model, grid, tile);
        }
        store_tile(artist, grid, tile, form, places);
    };
    Sha256 hash;
    const Interruption interruption;
    Output_File file(options.output);
    write_picture(file, form, source, {plan.threads, plan.rows_ahead, options.hash ? &hash : nullptr});
    file.commit();
    if (options.hash) {
        std::printf("%s\n", hash.finish().c_str());
    }
}

void render(const Render_Options& options, const Module_Choice& module) {
    const Picture_Part part = parsed_part(options);
    const VT_RGB32 background = background_of(options);
    base_color_of(options);
    const std::uint64_t max_memory = parsed_memory("--max-memory", options.max_memory);
    const scene::Edge_Settings edge_settings = edge_settings_of(options);
    const scene::Picture_Settings picture = picture_settings_of(options);
    if (options.tile_size % 8 != 0) {
        throw Usage_Error("--tile-size: expected a multiple of 8, found " + std::to_string(options.tile_size));
    }
    std::vector<std::unique_ptr<Tile_Artist>> artists;
    const auto add_artist = [&] { artists.push_back(std::make_unique<Tile_Artist>(module, options.colors, background)); };
    add_artist();
    std::optional<picture::Recorder> recorder;
    if (!options.record.empty()) {
        recorder.emplace(artists.front()->session());
    }

    Times times;
    const auto load_start = Clock::now();
    auto mesh = std::make_unique<const scene::Mesh>(scene::load_model(options.model));
    times.load = milliseconds_since(load_start);

    const auto setup_start = Clock::now();
    Drawn_Model model = make_model(options, *mesh);
    const scene::Camera camera = scene::fit_camera(camera_settings_of(options, *mesh, part.size), model.points());
    mesh = nullptr;
    const Png_Form form = form_of(part, options.colors, artists.front()->session().palette());
    Plan_Request request{part,
                         form,
                         model.edges ? scene::Edge_Renderer::tile_margin(edge_settings) : 0,
                         std::nullopt,
                         thread_count(options.threads),
                         max_memory,
                         0};
    if (options.tile_size > 0) {
        request.tile_size = options.tile_size;
    }
    request.model_memory = resident_memory() + model.prepared_memory();
    const Picture_Plan plan = plan_picture(request);
    if (recorder && plan.grid.count() > 1) {
        throw Usage_Error("--record: expected a picture that is drawn in one piece, found one of " +
                          std::to_string(plan.grid.count()) + " tiles");
    }
    while (plan.grid.count() > 1 && artists.size() < plan.threads) {
        add_artist();
    }
    times.setup = milliseconds_since(setup_start);

    Output_Files recording;
    const bool several = plan.grid.count() > 1, measured = !several || options.stats || options.repeat > 1;
    for (int i = 0; i < options.repeat; ++i) {
        const auto start = Clock::now();
        model.prepare(plan.grid, camera, picture, edge_settings);
        times.prepare = milliseconds_since(start);
        if (measured) {
            draw_tiles(artists, model, plan.grid);
        }
        times.draws.push_back(milliseconds_since(start));
        if (recorder && i == 0) {
            recording.add(options.record, picture::file_of(recorder->finish(plan.grid.pixels(0)), options.record));
        }
    }
    const auto start = Clock::now();
    write_tiles(options, artists, model, plan, form);
    recording.commit();
    times.written = milliseconds_since(start);
    if (options.stats) {
        print_stats(model, plan, std::move(times));
    }
}

// Without --size a map is as high as it needs to be.
Map_Picture map_picture_of(const Render_Options& options, bool size_given) {
    const VT_Int_Pair size =
        parsed_pair(options.size, largest_buffer_side,
                    "--size: expected WIDTHxHEIGHT with sides of a map from 1 to " + std::to_string(largest_buffer_side));
    return {.file = options.model,
            .output = options.output,
            .record = options.record,
            .size = {size.x, size_given ? size.y : 0},
            .background = background_of(options),
            .colors = options.colors,
            .antialias = options.antialias,
            .repeat = options.repeat,
            .stats = options.stats,
            .strict = options.strict};
}

std::string color_help() {
    std::string text = "Colours:\n  #rgb, #rrggbb or a name:\n ";
    for (const std::string& name : scene::color_names()) {
        text += (text.size() - text.rfind('\n') + name.size() > 76 ? "\n  " : " ") + name;
    }
    return text;
}

} // namespace

void add_render_command(CLI::App& application, int& status) {
    CLI::App& command = *application.add_subcommand("render", "Draw a model, a map or a drawing as a PNG picture.");
    const auto options = std::make_shared<Render_Options>();
    add_model_options(command, *options,
                      "Model (PLY, OBJ, STL and whatever assimp reads), map (GeoJSON, TopoJSON) or drawing (DXF)");
    command.add_option("-o,--output", options->output, "PNG file to write")->required()->type_name("FILE.png");
    command.add_option("--record", options->record, "Write what is drawn as a picture for replay too, compressed as FILE.gz")
        ->type_name("PICTURE");
    command.add_option("--size", options->size, "Width and height in pixels; maps are as high as they need to be without it")
        ->type_name("WxH")
        ->capture_default_str();
    command.add_option("--repeat", options->repeat, "Draw the picture so many times, for measuring")
        ->check(CLI::Range(1, 1000000));
    command.add_flag("--stats", options->stats, "Print sizes and times");
    command
        .add_option("--threads", options->threads, "Threads that draw and compress; as many as there are processors if not given")
        ->check(CLI::Range(1, 1024));
    command.add_option("--max-memory", options->max_memory, "Memory to get along with, such as 512M or 2G")
        ->type_name("SIZE")
        ->capture_default_str();
    command.add_option("--tile-size", options->tile_size, "Side of the tiles that the picture is drawn in, a multiple of 8")
        ->check(CLI::Range(8, largest_tile));
    command.add_option("--tiles-of", options->tiles_of, "Draw one part of so many columns and rows, for vorna assemble")
        ->type_name("COLSxROWS");
    command.add_option("--tile", options->tile, "Which part: 0 is the upper left one, counted row by row")
        ->check(CLI::Range(0, (1 << 20) - 1));
    command.add_flag("--hash", options->hash, "Print the SHA-256 of the pixels");
    const auto map_options = std::make_shared<Map_Options>();
    add_map_options(command, *map_options);
    group_options(command, "Output", "--output --size --record --hash");
    group_options(command, "Large pictures", "--threads --max-memory --tile-size --tiles-of --tile");
    group_options(command, "Measuring", "--repeat --stats");
    command.footer(
        footer({{"vorna render bunny.obj -o bunny.png --view front --edges --antialias", "a model with its edges"},
                {"vorna render truck.gltf -o truck.png --shading textured --size 1920x1080", "with its materials and images"},
                {"vorna render countries.json -o world.png --projection robinson --border dashed", "a map of the world"},
                {"vorna render bunny.obj -o poster.png --size 40000x20000", "a poster, within 1 GiB of memory"},
                {"vorna render bunny.obj -o bunny.png --record bunny.json.gz", "and the calls that drew it, for vorna replay"}},
               color_help()));
    command.fallthrough();
    command.callback([options, map_options, &command, &application, &status] {
        refuse_options_of_other_kind(command, options->model);
        if (map::is_map_file(options->model)) {
            render_map(map_picture_of(*options, command.count("--size") > 0), *map_options, chosen_module(application));
        } else {
            render(*options, chosen_module(application));
        }
        status = exit_status::done;
    });
}

} // namespace app
