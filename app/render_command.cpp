// The command `render`: a model as a picture.
#include "app/render_command.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <memory>
#include <sstream>
#include <utility>
#include <vector>

#include "app/command.h"
#include "app/image_file.h"
#include "app/map/map_reader.h"
#include "app/map_command.h"
#include "app/output_file.h"
#include "app/scene/color_name.h"
#include "app/scene/edge_renderer.h"
#include "app/scene/model_reader.h"
#include "app/scene/scene_renderer.h"
#include "app/scene/textured_scene.h"
#include "app/session.h"
#include "vorna/draw.h"

namespace app {
namespace {

using Clock = std::chrono::steady_clock;

// Spans leave out their last pixel, and no point may lie outside the window: a model that is cut off at the picture's right or
// upper edge reaches it only when the window is larger by one.
constexpr std::int32_t margin = 1;
constexpr std::int32_t largest_side = 16384 - margin;

double milliseconds_since(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

struct Render_Options {
    std::string model, output;
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
};

VT_Int_Pair parsed_size(const std::string& text) {
    VT_Int_Pair size;
    const char* end = text.data() + text.size();
    const auto [x, width_error] = std::from_chars(text.data(), end, size.x);
    if (width_error == std::errc{} && x != end && *x == 'x') {
        const auto [stop, height_error] = std::from_chars(x + 1, end, size.y);
        if (height_error == std::errc{} && stop == end && size.x >= 1 && size.x <= largest_side && size.y >= 1 &&
            size.y <= largest_side) {
            return size;
        }
    }
    throw Usage_Error("--size: expected WIDTHxHEIGHT with sides from 1 to 16383, found '" + text + "'");
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

// The window without its margin.
Raster picture_of(const Session& session) {
    Raster raster = raster_of(session.color_buffer());
    raster.top += margin * raster.row_bytes;
    raster.height -= margin;
    raster.width -= margin;
    return raster;
}

// What there is to draw: faces, edges or both.
struct Drawn_Model {
    std::unique_ptr<scene::Scene> faces;
    std::unique_ptr<scene::Edge_Renderer> edges;

    const std::vector<VT_Vector>& points() const { return faces ? faces->points() : edges->points(); }
    std::string summary() const {
        return (faces ? faces->summary() : "") + (faces && edges ? ", " : "") + (edges ? edges->summary() : "");
    }
};

// Clears the window and draws the model.
void draw_frame(Session& session, VT_Rendition& rendition, const Drawn_Model& model, const scene::Camera& camera,
                const scene::Picture_Settings& settings, const scene::Edge_Settings& edge_settings) {
    VT_Renderer_Data& renderer = session.renderer();
    renderer.begin_picture_all();
    VD_Draw_Window(renderer, rendition);
    VD_Clear_Depth_Rectangle(renderer, rendition);
    if (model.faces) {
        model.faces->draw(renderer, rendition, session.window(), camera, settings);
    }
    if (model.edges) {
        model.edges->draw(renderer, rendition, session.window(), camera, edge_settings);
    }
    renderer.end_picture_all();
}

void print_stats(const Drawn_Model& model, double load, double setup, std::vector<double> draws) {
    std::ranges::sort(draws);
    std::fprintf(stderr, "%s, load %.1f ms, setup %.1f ms, draw %.2f ms", model.summary().c_str(), load, setup, draws.front());
    if (draws.size() > 1) {
        std::fprintf(stderr, " at best, %.2f ms in the middle of %zu", draws[draws.size() / 2], draws.size());
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

void render(const Render_Options& options, const Module_Choice& module) {
    const VT_Int_Pair size = parsed_size(options.size);
    const VT_RGB32 background = parsed_color("--background", options.background);
    const VT_RGB32 color = parsed_color("--color", options.color);
    const scene::Edge_Settings edge_settings = edge_settings_of(options);
    scene::Picture_Settings picture = options.picture;
    picture.light = parsed_direction(options.light);
    scene::Camera_Settings camera_settings = options.camera;
    camera_settings.aspect = static_cast<double>(size.x) / size.y;
    camera_settings.projection = options.orthographic ? scene::Projection::orthographic : scene::Projection::perspective;
    Session session(module);

    const auto load_start = Clock::now();
    const scene::Mesh mesh = scene::load_model(options.model);
    const double load = milliseconds_since(load_start);

    const auto setup_start = Clock::now();
    const Drawn_Model model = make_model(options, mesh, color);
    const scene::Camera camera = scene::fit_camera(camera_settings, model.points());
    session.options().set_window_size({size.x + margin, size.y + margin});
    session.options().set_color_system(options.colors == 32 ? 1 : 0);
    session.options().set_buffer_depth(16);
    session.establish();
    const double setup = milliseconds_since(setup_start);

    const VT_Reference<VT_Rendition> rendition(new VT_Rendition);
    rendition->clip.hard_clip = session.window();
    rendition->window.rectangle = session.window();
    rendition->window.color = background;
    rendition->window.index = static_cast<std::uint8_t>(session.palette().closest_match(background, false));
    std::vector<double> draws;
    for (int i = 0; i < options.repeat; ++i) {
        const auto start = Clock::now();
        draw_frame(session, *rendition, model, camera, picture, edge_settings);
        draws.push_back(milliseconds_since(start));
    }
    write_file(options.output, png_of(picture_of(session), session.palette()));
    if (options.stats) {
        print_stats(model, load, setup, std::move(draws));
    }
}

// Without --size a map is as high as it needs to be.
Map_Picture map_picture_of(const Render_Options& options, bool size_given) {
    const VT_Int_Pair size = parsed_size(options.size);
    return {.file = options.model,
            .output = options.output,
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
