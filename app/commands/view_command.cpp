// The command `view`: shows a model, map or drawing in a window.
#include "app/commands/view_command.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <optional>

#include "app/cli/command.h"
#include "app/commands/map_options.h"
#include "app/commands/model_options.h"
#include "app/commands/window_options.h"
#include "app/view/map_viewer.h"
#include "app/view/script.h"
#include "app/view/viewer.h"
#include "app/view/window.h"
#include "drawing/files/input.h"

namespace vorna::app {
namespace {

struct View_Options : Model_Options {
    Window_Options window;
    unsigned threads = 0;
};

void show(const View_Options& options, std::vector<drawing::Input> inputs, const Map_Options& map_options,
          const drawing::Module_Choice& module) {
    if (options.is_transparent()) {
        throw drawing::Usage_Error("--background: expected a colour in a window, found 'none'");
    }
    const std::optional<VT_Int_Pair> size = window_size_of(options.window);
    const std::vector<view::Script_Step> script = script_of(options.window, *options.limits);
    if (options.models.size() > 1 && std::ranges::any_of(inputs, drawing::is_map)) {
        throw drawing::Usage_Error(options.models.front() + ": expected a map or drawing alone, found others beside it");
    }
    const bool map = drawing::is_map(inputs.front());
    if (map) {
        map_background_of(options);
    } else {
        background_of(options);
        look_of(options, true);
        view::check_window_palette(options);
    }
    std::string title;
    for (const std::string& file : options.models) {
        title += (title.empty() ? "" : ", ") + file;
    }
    const std::unique_ptr<view::Window> window = view::open_window("view", title, size);
    std::unique_ptr<view::Base_Viewer> viewer;
    if (map) {
        check_map_options(options, map_options);
        viewer = std::make_unique<view::Map_Viewer>(options, map_options, inputs.front(), module, options.window.folder, *window);
    } else {
        viewer = std::make_unique<view::Viewer>(options, std::move(inputs), module, options.window.folder, *window);
    }
    window->run(*viewer, script);
}

} // namespace

Command view_command() {
    const auto options = std::make_shared<View_Options>();
    const auto map_options = std::make_shared<Map_Options>();
    Command command{
        .name = "view",
        .summary = "Turn a model in a window, or move a map or drawing.",
        .arguments = {model_argument(
            *options, "Models (PLY, OBJ, STL and whatever assimp reads), or a map (GeoJSON, TopoJSON) or drawing (DXF)")},
        .examples = {{"vorna view bunny.obj", "turn it with the mouse, h shows the keys"},
                     {"vorna view truck.gltf --edges --size 1600x1000", "as vorna render would draw it"},
                     {"vorna view countries.json --projection robinson --border dashed", "move a map"}},
        .sections = {{"Mouse and keys", view::help_lines()},
                     {"Maps and drawings", {"Every drag moves them; the keys + - a p c w r f h q do the same."}}},
        .run = [options, map_options](const Given& given) {
            options->limits = limits_of(*options, options->threads);
            std::vector<drawing::Input> inputs = open_inputs(*options);
            choose_up_axis(*options, inputs);
            reject_options_of_other_kind(given, drawing::is_map(inputs.front()), inputs.front().name);
            show(*options, std::move(inputs), *map_options, chosen_module(given));
            return exit_status::done;
        }};
    add_model_options(command.options, *options);
    Option& background = option_named(command.options, "--background");
    background.value = suggested_value("COLOR", {"gradient"});
    background.text =
        "Colour behind what is drawn; gradient light grey, TOP,BOTTOM a gradient of two colours; by default a gradient "
        "behind models, and white behind hidden lines, with a palette and behind maps";
    Option& palette = option_named(command.options, "--palette");
    palette.value = suggested_value("PALETTE", view::window_palettes());
    palette.text = "Palette of 8-bit pixels: cube (6x6x6 and greys), or levels of red, green and blue";
    std::vector<Option> of_window = window_options(options->window);
    of_window.insert(of_window.begin() + 1, {.names = {"--threads"},
                                             .value = whole_value("N", 1, 1024),
                                             .text = "Threads that read and draw; as many as there are processors if not given",
                                             .target = &options->threads,
                                             .group = of_window.front().group});
    command.options.insert(command.options.end(), std::make_move_iterator(of_window.begin()),
                           std::make_move_iterator(of_window.end()));
    add_map_options(command.options, *map_options);
    return command;
}

} // namespace vorna::app
