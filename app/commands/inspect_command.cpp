// The command `inspect`: goes through a recording call by call in a window.
#include "app/commands/inspect_command.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "app/cli/command.h"
#include "app/commands/window_options.h"
#include "app/view/inspector.h"
#include "app/view/window.h"
#include "drawing/files/input_file.h"
#include "drawing/files/memory.h"
#include "drawing/recording/document.h"
#include "drawing/recording/recording_file.h"

namespace vorna::app {
namespace {

struct Inspect_Options {
    std::string recording, max_memory;
    bool unchecked = false;
    Window_Options window;
};

// Half of what is left goes to states that are kept, by default not more than this; the rest to images and histories.
constexpr std::uint64_t most_memory_unasked = std::uint64_t{512} << 20;

void show(const Inspect_Options& options, const drawing::Module_Choice& module) {
    const std::optional<std::uint64_t> memory = drawing::parsed_limit(options.max_memory);
    const std::optional<VT_Int_Pair> size = window_size_of(options.window);
    drawing::Load_Limits limits(memory);
    const std::vector<view::Script_Step> script = script_of(options.window, limits);
    const drawing::recording::Recording recording = drawing::recording::load(options.recording, limits);
    drawing::recording::Steps_Settings settings;
    settings.replay.unchecked = options.unchecked;
    settings.memory = limits.memory_left() / 2;
    if (!memory) {
        settings.memory = std::min(settings.memory, most_memory_unasked);
    }
    settings.name = drawing::name_of_input(options.recording);
    settings.limits = &limits;
    const drawing::Load_Limits::Loan of_states(limits, settings.name, settings.memory);
    const std::unique_ptr<view::Window> window = view::open_window("inspect", options.recording, size);
    view::Inspector inspector({recording, drawing::name_of_input(options.recording), module, settings, limits},
                              options.window.folder, *window);
    window->run(inspector, script);
}

void run(const Inspect_Options& options, const drawing::Module_Choice& module) {
    const std::string name = drawing::name_of_input(options.recording);
    try {
        show(options, module);
    } catch (const drawing::recording::Recording_Error& error) {
        throw drawing::Usage_Error(name + ": " + error.what());
    } catch (const drawing::recording::Not_Drawn& error) {
        throw std::runtime_error(name + ": " + error.what());
    }
}

} // namespace

Command inspect_command() {
    const auto options = std::make_shared<Inspect_Options>();
    Command command{.name = "inspect",
                    .summary = "Go through a recording call by call in a window.",
                    .arguments = {{.names = {"recording"},
                                   .value = text_value("RECORDING"),
                                   .text = "The recording, plain or compressed; - reads standard input",
                                   .target = &options->recording,
                                   .is_required = true}},
                    .options = {memory_option(options->max_memory),
                                {.names = {"--unchecked"},
                                 .text = "Send coordinates that renderers trust without looking at them",
                                 .target = &options->unchecked}},
                    .examples = {{"vorna inspect crystals.json", "arrow keys go from call to call, h shows the other keys"},
                                 {"vorna inspect map.json.gz --size 1600x1000", "in a window of that size"}},
                    .sections = {{"Mouse and keys", view::inspector_help_lines()}},
                    .run = [options](const Given& given) {
                        run(*options, chosen_module(given));
                        return exit_status::done;
                    }};
    std::vector<Option> of_window = window_options(options->window);
    command.options.insert(command.options.end(), std::make_move_iterator(of_window.begin()),
                           std::make_move_iterator(of_window.end()));
    return command;
}

} // namespace vorna::app
