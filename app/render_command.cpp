// The command `render`: a model as a picture.
#include "app/render_command.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>
#include <utility>
#include <vector>

#include "app/command.h"
#include "app/drawn_model.h"
#include "app/image_file.h"
#include "app/model_options.h"
#include "app/output_file.h"
#include "app/scene/model_reader.h"
#include "app/session.h"
#include "vorna/draw.h"

namespace app {
namespace {

using Clock = std::chrono::steady_clock;

struct Render_Options : Model_Options {
    std::string output;
    std::string size = "1280x960";
    int repeat = 1;
    bool stats = false;
};

double milliseconds_since(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

// Clears the window and draws the model.
void draw_frame(Session& session, VT_Rendition& rendition, const Drawn_Model& model, const scene::Camera& camera,
                const scene::Picture_Settings& settings, const scene::Edge_Settings& edge_settings) {
    VT_Renderer_Data& renderer = session.renderer();
    renderer.begin_picture_all();
    VD_Draw_Window(renderer, rendition);
    VD_Clear_Depth_Rectangle(renderer, rendition);
    if (model.faces) {
        model.faces->prepare(scene::Tile_Grid(session.window()), camera, settings);
        model.faces->draw(renderer, rendition, 0);
    }
    if (model.edges) {
        model.edges->prepare(scene::Tile_Grid(session.window()), camera, edge_settings);
        model.edges->draw(renderer, rendition, 0);
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

void render(const Render_Options& options, const Module_Choice& module) {
    const VT_Int_Pair size = parsed_size(options.size);
    const VT_RGB32 background = background_of(options);
    base_color_of(options);
    const scene::Edge_Settings edge_settings = edge_settings_of(options);
    const scene::Picture_Settings picture = picture_settings_of(options);
    Session session(module);

    const auto load_start = Clock::now();
    const scene::Mesh mesh = scene::load_model(options.model);
    const double load = milliseconds_since(load_start);

    const auto setup_start = Clock::now();
    const Drawn_Model model = make_model(options, mesh);
    const scene::Camera camera = scene::fit_camera(camera_settings_of(options, mesh, size), model.points());
    session.options().set_window_size({size.x + window_margin, size.y + window_margin});
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

} // namespace

void add_render_command(CLI::App& application, int& status) {
    CLI::App& command = *application.add_subcommand("render", "Draw a model as a picture");
    const auto options = std::make_shared<Render_Options>();
    add_model_options(command, *options);
    command.add_option("-o,--output", options->output, "PNG file to write")->required();
    command.add_option("--size", options->size, "Width and height in pixels")->type_name("WxH")->capture_default_str();
    command.add_option("--repeat", options->repeat, "Draw the picture so many times, for measuring")
        ->check(CLI::Range(1, 1000000));
    command.add_flag("--stats", options->stats, "Print sizes and times");
    command.fallthrough();
    command.callback([options, &application, &status] {
        render(*options, chosen_module(application));
        status = exit_status::done;
    });
}

} // namespace app
