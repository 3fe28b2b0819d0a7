// The command `info`: tells what recordings and maps consist of.
#include "app/commands/info_command.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/cli/command.h"
#include "app/cli/messages.h"
#include "drawing/files/input_file.h"
#include "drawing/files/memory.h"
#include "drawing/files/path.h"
#include "drawing/job/formats.h"
#include "drawing/map/map_facts.h"
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

// Whether a map, by its name. Maps in JSON are told from recordings by their contents.
bool is_named_map(const std::string& path) {
    const std::string suffix = drawing::path_of(path).extension().string();
    const drawing::Format* format = suffix.size() > 1 ? drawing::find_format(suffix.substr(1)) : nullptr;
    return format && format->kind == drawing::Input_Kind::map && format->suffix != "json";
}

// The layers of a map; none for a recording, which is read then.
std::vector<drawing::map::Layer_Summary> layers_of(const std::string& path, drawing::Load_Limits& limits,
                                                   std::optional<drawing::recording::Recording>& recording) {
    const auto read_map = [&] { return drawing::map::layer_summaries_of(drawing::open_input(path, "", limits), limits); };
    if (is_named_map(path)) {
        return read_map();
    }
    try {
        recording = recording_at(path, limits);
    } catch (const drawing::Usage_Error&) {
        if (!path.ends_with(".json")) {
            throw;
        }
        try {
            return read_map();
        } catch (const drawing::map::Map_Error&) {
        }
        throw;
    }
    return {};
}

// Everything is read before anything is printed.
void print(const Info_Arguments& arguments) {
    std::string text;
    drawing::Load_Limits limits(drawing::parsed_limit(arguments.max_memory));
    drawing::Json_Text list(true);
    list.start_list();
    for (const std::string& path : arguments.recordings) {
        std::optional<drawing::recording::Recording> recording;
        const std::vector<drawing::map::Layer_Summary> layers = layers_of(path, limits, recording);
        if (!recording && arguments.as_json) {
            list.start_object();
            list.member("map", path);
            list.name("layers");
            drawing::map::add_layers(list, layers);
            list.end_object();
        } else if (!recording) {
            text += drawing::printable(drawing::name_of_input(path)) + '\n' + drawing::map::text_of(layers);
        } else if (arguments.as_json) {
            list.start_object();
            list.member("picture", path);
            drawing::recording::add_summary(list, *recording);
            list.end_object();
        } else {
            text += drawing::printable(drawing::name_of_input(path)) + '\n' + drawing::recording::text_of(*recording);
        }
    }
    list.end_list();
    app::print(stdout, arguments.as_json ? list.take() + '\n' : text);
}

} // namespace

Command info_command() {
    const auto arguments = std::make_shared<Info_Arguments>();
    return {.name = "info",
            .summary = "Tell what recordings consist of: calls, points, textures; and maps: layers, fields, extent, projection.",
            .arguments = {{.names = {"recording"},
                           .value = text_value("RECORDING"),
                           .text = "Recordings, plain or compressed, and maps; - reads a recording from standard input",
                           .target = &arguments->recordings,
                           .is_required = true}},
            .options = {{.names = {"--json"}, .text = "Print a list of objects for programs", .target = &arguments->as_json},
                        memory_option(arguments->max_memory)},
            .examples = {{"vorna info bunny.json.gz", "what vorna render --record has written"},
                         {"vorna info rivers.gpkg", "layers and their fields, for --layer and --fill-by"}},
            .run = [arguments](const Given&) {
                print(*arguments);
                return exit_status::done;
            }};
}

} // namespace vorna::app
