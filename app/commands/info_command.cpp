// The command `info`: tells what recordings consist of.
#include "app/commands/info_command.h"

#include <memory>
#include <string>
#include <vector>

#include "app/cli/command.h"
#include "app/cli/messages.h"
#include "drawing/files/input_file.h"
#include "drawing/files/memory.h"
#include "drawing/recording/document.h"
#include "drawing/recording/recording_file.h"
#include "drawing/recording/summary.h"

namespace vorna::app {

namespace {

struct Info_Arguments {
    std::vector<std::string> recordings;
    bool as_json = false;
    std::string max_memory;
};

drawing::recording::Recording recording_at(const std::string& path, drawing::Load_Limits& limits) {
    try {
        return drawing::recording::load(path, limits);
    } catch (const drawing::recording::Recording_Error& error) {
        throw drawing::Usage_Error(drawing::name_of_input(path) + ": " + error.what());
    }
}

// Everything is read before anything is printed.
void print(const Info_Arguments& arguments) {
    std::string text;
    drawing::Load_Limits limits(drawing::parsed_limit(arguments.max_memory));
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const std::string& path : arguments.recordings) {
        const drawing::recording::Recording recording = recording_at(path, limits);
        if (arguments.as_json) {
            nlohmann::ordered_json entry{{"picture", path}};
            entry.update(drawing::recording::json_summary_of(recording));
            list.push_back(std::move(entry));
        } else {
            text += drawing::printable(drawing::name_of_input(path)) + '\n' + drawing::recording::text_of(recording);
        }
    }
    // Characters beyond ASCII are escaped, and invalid UTF-8 is replaced.
    constexpr auto replace = nlohmann::ordered_json::error_handler_t::replace;
    app::print(stdout, arguments.as_json ? list.dump(1, ' ', true, replace) + '\n' : text);
}

} // namespace

Command info_command() {
    const auto arguments = std::make_shared<Info_Arguments>();
    return {.name = "info",
            .summary = "Tell what recordings consist of: calls, points, textures.",
            .arguments = {{.names = {"recording"},
                           .value = text_value("RECORDING"),
                           .text = "Recordings, plain or compressed; - reads standard input",
                           .target = &arguments->recordings,
                           .is_required = true}},
            .options = {{.names = {"--json"}, .text = "Print a list of objects for programs", .target = &arguments->as_json},
                        memory_option(arguments->max_memory)},
            .examples = {{"vorna info bunny.json.gz", "what vorna render --record has written"}},
            .run = [arguments](const Given&) {
                print(*arguments);
                return exit_status::done;
            }};
}

} // namespace vorna::app
