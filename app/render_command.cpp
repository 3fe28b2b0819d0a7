// The command `render`: a model as a picture.
#include "app/render_command.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <atomic>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <sstream>
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
#include "app/output_file.h"
#include "app/picture/picture_file.h"
#include "app/picture/recorder.h"
#include "app/picture_part.h"
#include "app/picture_plan.h"
#include "app/picture_stream.h"
#include "app/scene/color_name.h"
#include "app/scene/model_reader.h"
#include "app/scene/scene_renderer.h"
#include "app/scene/textured_scene.h"
#include "app/sha256.h"

namespace app {
namespace {

using Clock = std::chrono::steady_clock;

double milliseconds_since(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

struct Render_Options {
    std::string model, output;
    std::string record; // empty = not asked for
    std::string size = "1280x960", background = "white", color = "#8fa9c4", light = "-0.5,0.65,0.7";
    bool color_given = false;
    scene::Camera_Settings camera;
    bool orthographic = false;
    scene::Picture_Settings picture;
    std::string edges; // empty = none
    std::string edge_color;
    bool antialias = false;
    int colors = 32;
    int repeat = 1;
    bool stats = false;
    bool strict = false;
    std::string tiles_of; // empty = the whole picture
    std::int32_t tile = -1, tile_size = 0;
    unsigned threads = 0;
    std::string max_memory = "1G";
    bool hash = false;
};

// A pair of numbers from 1 to most with an x between them.
VT_Int_Pair parsed_pair(const std::string& text, std::int32_t most, const std::string& expected) {
    VT_Int_Pair size;
    const char* end = text.data() + text.size();
    const auto [x, width_error] = std::from_chars(text.data(), end, size.x);
    if (width_error == std::errc{} && x != end && *x == 'x') {
        const auto [stop, height_error] = std::from_chars(x + 1, end, size.y);
        if (height_error == std::errc{} && stop == end && size.x >= 1 && size.x <= most && size.y >= 1 && size.y <= most) {
            return size;
        }
    }
    throw Usage_Error(expected + ", found '" + text + "'");
}

VT_RGB32 parsed_color(const char* option, const std::string& text) {
    const auto color = scene::color_named(text);
    if (!color) {
        throw Usage_Error(std::string(option) + ": expected #rrggbb or a colour's name, found '" + text + "'");
    }
    return *color;
}

VT_Vector_D parsed_direction(const std::string& text) {
    VT_Vector_D direction;
    std::istringstream stream(text);
    stream.imbue(std::locale::classic());
    char first_comma = 0, second_comma = 0;
    stream >> direction.x >> first_comma >> direction.y >> second_comma >> direction.z;
    const double squared = direction.x * direction.x + direction.y * direction.y + direction.z * direction.z;
    if (!stream || !(stream >> std::ws).eof() || first_comma != ',' || second_comma != ',' || !std::isfinite(squared) ||
        squared == 0) {
        throw Usage_Error("--light: expected a direction x,y,z, found '" + text + "'");
    }
    return direction;
}

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

// Textures are drawn when they are asked for and there are any. What could not be read of them is said, or refused.
std::unique_ptr<scene::Scene> make_faces(const Render_Options& options, const scene::Mesh& mesh, VT_RGB32 color) {
    if (options.picture.shading != scene::Shading::textured) {
        return std::make_unique<scene::Scene_Renderer>(mesh, color, !options.color_given);
    }
    std::unique_ptr<scene::Scene> scene;
    std::vector<std::string> warnings = mesh.warnings;
    if (scene::Textured_Scene::has_work(mesh)) {
        scene = std::make_unique<scene::Textured_Scene>(mesh, color, !options.color_given, warnings);
    } else {
        scene = std::make_unique<scene::Scene_Renderer>(mesh, color, !options.color_given);
    }
    for (const std::string& warning : warnings) {
        if (options.strict) {
            throw Usage_Error(warning);
        }
        std::fprintf(stderr, "vorna: warning: %s\n", warning.c_str());
    }
    return scene;
}

// Wireframes have the model's colour, edges over faces a dark one.
scene::Edge_Settings edge_settings_of(const Render_Options& options) {
    constexpr VT_RGB32 dark{51, 40, 30, 255};
    scene::Edge_Settings settings;
    const bool wireframe = options.picture.shading == scene::Shading::wireframe;
    if (options.edges.empty() && !wireframe) {
        for (const auto& [given, name] :
             {std::pair(options.antialias, "--antialias"), {!options.edge_color.empty(), "--edge-color"}}) {
            if (given) {
                throw Usage_Error(std::string(name) + ": expected --edges or --shading wireframe beside it, found neither");
            }
        }
    }
    if (options.antialias && options.colors != 32) {
        throw Usage_Error("--antialias: expected 32 bits a pixel, found --colors 8");
    }
    if (!options.edges.empty() && options.edges != "all" && options.edges != "feature") {
        throw Usage_Error("--edges: expected all or feature, found '" + options.edges + "'");
    }
    settings.choice = options.edges == "feature" ? scene::Edge_Choice::features : scene::Edge_Choice::all;
    settings.culling = options.picture.culling;
    settings.over_faces = !wireframe;
    settings.smoothed = options.antialias;
    if (!options.edge_color.empty()) {
        settings.color = parsed_color("--edge-color", options.edge_color);
    } else if (!wireframe) {
        settings.color = dark;
    }
    return settings;
}

Drawn_Model make_model(const Render_Options& options, const scene::Mesh& mesh, VT_RGB32 color) {
    Drawn_Model model;
    const bool wireframe = options.picture.shading == scene::Shading::wireframe;
    if (!wireframe) {
        model.faces = make_faces(options, mesh, color);
    }
    if (wireframe || !options.edges.empty()) {
        model.edges = std::make_unique<scene::Edge_Renderer>(mesh, color, !options.color_given);
    }
    return model;
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
    const VT_RGB32 background = parsed_color("--background", options.background);
    const VT_RGB32 color = parsed_color("--color", options.color);
    const std::uint64_t max_memory = parsed_memory("--max-memory", options.max_memory);
    const scene::Edge_Settings edge_settings = edge_settings_of(options);
    scene::Picture_Settings picture = options.picture;
    picture.light = parsed_direction(options.light);
    scene::Camera_Settings camera_settings = options.camera;
    camera_settings.aspect = static_cast<double>(part.size.x) / part.size.y;
    camera_settings.projection = options.orthographic ? scene::Projection::orthographic : scene::Projection::perspective;
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
    Drawn_Model model = make_model(options, *mesh, color);
    mesh = nullptr;
    const scene::Camera camera = scene::fit_camera(camera_settings, model.points());
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
            .background = parsed_color("--background", options.background),
            .colors = options.colors,
            .antialias = options.antialias,
            .repeat = options.repeat,
            .stats = options.stats,
            .strict = options.strict};
}

// The first one is the default.
template <class Value> using Choices = std::vector<std::pair<std::string, Value>>;

template <class Value>
void add_choice(CLI::App& command, const std::string& name, Value& target, const std::string& description,
                Choices<Value> choices) {
    std::string listed = choices.front().first;
    for (std::size_t i = 1; i < choices.size(); ++i) {
        listed += (i + 1 < choices.size() ? ", " : " or ") + choices[i].first;
    }
    const auto choose = [name, &target, listed, choices = std::move(choices)](const std::string& given) {
        const auto found = std::ranges::find(choices, given, [](const auto& choice) { return choice.first; });
        if (found == choices.end()) {
            throw Usage_Error(name + ": expected " + listed + ", found '" + given + "'");
        }
        target = found->second;
    };
    command.add_option_function<std::string>(name, choose, description + ": " + listed)->type_name("NAME");
}

} // namespace

void add_render_command(CLI::App& application, int& status) {
    CLI::App& command = *application.add_subcommand("render", "Draw a model, a map or a drawing as a picture");
    const auto options = std::make_shared<Render_Options>();
    command
        .add_option("model", options->model,
                    "Model (PLY, OBJ, STL and whatever assimp reads), map (GeoJSON, TopoJSON) or drawing (DXF)")
        ->required();
    command.add_option("-o,--output", options->output, "PNG file to write")->required();
    command.add_option("--record", options->record, "Write what is drawn as a picture for replay too, compressed as FILE.gz")
        ->type_name("FILE");
    command.add_option("--size", options->size, "Width and height in pixels")->type_name("WxH")->capture_default_str();
    using scene::View;
    add_choice(command, "--view", options->camera.view, "Side to look at",
               Choices<View>{{"iso", View::iso},
                             {"front", View::front},
                             {"back", View::back},
                             {"left", View::left},
                             {"right", View::right},
                             {"top", View::top},
                             {"bottom", View::bottom}});
    CLI::Option* perspective = command.add_flag("--perspective")->description("Near things are larger (default)");
    command.add_flag("--ortho", options->orthographic, "Parallel lines stay parallel")->excludes(perspective);
    add_choice(command, "--up", options->camera.up, "The model's axis that points up",
               Choices<scene::Up_Axis>{{"y", scene::Up_Axis::y}, {"z", scene::Up_Axis::z}});
    command.add_option("--zoom", options->camera.zoom, "Enlarge the middle of the picture")
        ->check(CLI::Range(0.01, 1000.0))
        ->capture_default_str();
    add_choice(command, "--shading", options->picture.shading, "How colours run over faces",
               Choices<scene::Shading>{{"gouraud", scene::Shading::gouraud},
                                       {"flat", scene::Shading::flat},
                                       {"textured", scene::Shading::textured},
                                       {"wireframe", scene::Shading::wireframe}});
    command.add_flag("--edges{all}", options->edges,
                     "Draw the edges of polygons over them; --edges=feature: outlines, borders and sharp bends only");
    command.add_option("--edge-color", options->edge_color, "Colour of edges and wireframes")->type_name("COLOR");
    command.add_flag("--antialias", options->antialias, "Smooth edges, wireframes and lines of maps");
    add_choice(command, "--cull", options->picture.culling, "Faces to leave out, as seen by the viewer",
               Choices<scene::Culling>{{"none", scene::Culling::none}, {"back", scene::Culling::back}});
    command.add_option("--background", options->background, "Colour behind the model")->type_name("COLOR")->capture_default_str();
    CLI::Option* color =
        command.add_option("--color", options->color, "Colour of the model instead of its own")->type_name("COLOR");
    command.add_option("--light", options->light, "Direction towards the light: right, up, towards the viewer")
        ->type_name("X,Y,Z")
        ->capture_default_str();
    add_choice(command, "--colors", options->colors, "Bits a pixel, 8 through a palette", Choices<int>{{"32", 32}, {"8", 8}});
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
    command.add_flag("--strict", options->strict, "Fail when a material or texture cannot be read");
    const auto map_options = std::make_shared<Map_Options>();
    add_map_options(command, *map_options);
    command.fallthrough();
    command.callback([options, map_options, color, &command, &application, &status] {
        refuse_options_of_other_kind(command, options->model);
        if (map::is_map_file(options->model)) {
            render_map(map_picture_of(*options, command.count("--size") > 0), *map_options, chosen_module(application));
        } else {
            options->color_given = color->count() > 0;
            render(*options, chosen_module(application));
        }
        status = exit_status::done;
    });
}

} // namespace app
