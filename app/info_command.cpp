// The command `info`: what pictures are made of.
#include "app/info_command.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <vector>

#include "app/command.h"
#include "app/input_file.h"
#include "app/memory.h"
#include "app/messages.h"
#include "app/picture/document.h"
#include "app/picture/picture_file.h"
#include "app/picture/summary.h"

namespace app {

namespace {

struct Info_Arguments {
    std::vector<std::string> pictures;
    bool as_json = false;
    std::string max_memory;
};

picture::Picture picture_at(const std::string& path, Load_Limits& limits) {
    try {
        return picture::load(path, limits);
    } catch (const picture::Picture_Error& error) {
        throw Usage_Error(name_of_input(path) + ": " + error.what());
    }
}

// Everything is read before anything is printed.
void print(const Info_Arguments& arguments) {
    std::string text;
    Load_Limits limits(parsed_limit(arguments.max_memory));
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const std::string& path : arguments.pictures) {
        const picture::Picture picture = picture_at(path, limits);
        if (arguments.as_json) {
            nlohmann::ordered_json entry{{"picture", path}};
            entry.update(picture::json_summary_of(picture));
            list.push_back(std::move(entry));
        } else {
            text += printable(name_of_input(path)) + '\n' + picture::text_of(picture);
        }
    }
    // Signs beyond ASCII are escaped, and bytes that are none replaced.
    constexpr auto replace = nlohmann::ordered_json::error_handler_t::replace;
    app::print(stdout, arguments.as_json ? list.dump(1, ' ', true, replace) + '\n' : text);
}

} // namespace

void add_info_command(CLI::App& application, int& status) {
    const auto arguments = std::make_shared<Info_Arguments>();
    CLI::App& command = *application.add_subcommand("info", "Tell what pictures are made of: calls, points, textures.");
    command.add_option("picture", arguments->pictures, "Pictures, plain or compressed; - reads standard input")
        ->required()
        ->type_name("PICTURE");
    command.add_flag("--json", arguments->as_json, "Print a list of objects for programs");
    add_memory_option(command, arguments->max_memory);
    command.footer(footer({{"vorna info bunny.json.gz", "what vorna render --record has written"}}));
    command.fallthrough();
    command.callback([arguments, &status] {
        print(*arguments);
        status = exit_status::done;
    });
}

} // namespace app
