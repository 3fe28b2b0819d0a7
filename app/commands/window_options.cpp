// Options of the commands that open windows.
#include "app/commands/window_options.h"

#include <filesystem>
#include <system_error>

#include "app/commands/model_options.h"
#include "drawing/files/path.h"
#include "drawing/files/usage_error.h"
#include "drawing/model/model_reader.h"

namespace vorna::app {

std::vector<Option> window_options(Window_Options& options) {
    constexpr const char* window = "Window";
    return {{.names = {"--size"},
             .value = text_value("WxH"),
             .text = "Width and height of the window; by default what suits the display",
             .target = &options.size,
             .group = window},
            {.names = {"--screenshots"},
             .value = text_value("FOLDER"),
             .text = "Folder for screenshots",
             .target = &options.folder,
             .group = window,
             .by_default = options.folder},
            {.names = {"--script"},
             .value = text_value("FILE"),
             .text = "Mouse and keys from a file, see docs/viewing.md",
             .target = &options.script,
             .group = window}};
}

std::optional<VT_Int_Pair> window_size_of(const Window_Options& options) {
    return options.size.empty() ? std::nullopt
                                : std::optional(parsed_pair(options.size, largest_picture_side,
                                                            "--size: expected WIDTHxHEIGHT with sides from 1 to 16383"));
}

std::vector<view::Script_Step> script_of(const Window_Options& options, drawing::Load_Limits& limits) {
    std::vector<view::Script_Step> steps;
    if (!options.script.empty()) {
        steps = view::parsed_script(options.script, drawing::model::read_file(options.script, limits));
    }
    std::error_code none;
    if (!std::filesystem::is_directory(drawing::path_of(options.folder), none)) {
        throw drawing::Usage_Error("--screenshots: expected a folder, found none called '" + options.folder + "'");
    }
    return steps;
}

} // namespace vorna::app
