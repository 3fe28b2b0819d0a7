// The command `help`: tells what the other commands do.
#include "app/commands/help_command.h"

#include <algorithm>
#include <iostream>
#include <memory>
#include <string>

#include "app/cli/command.h"
#include "app/cli/command_line.h"
#include "app/cli/help.h"
#include "app/cli/page.h"

namespace vorna::app {

Command help_command(const std::vector<Command>& others) {
    std::vector<std::string> names;
    names.reserve(others.size());
    for (const Command& command : others) {
        names.push_back(command.name);
    }
    const auto name = std::make_shared<std::string>();
    return {.name = "help",
            .summary = "Tell what vorna or a command of it can do.",
            .arguments =
                {{.names = {"command"}, .value = choice_value("COMMAND", names), .text = "The command", .target = name.get()}},
            .examples = {{"vorna help", "the commands"}, {"vorna help render", "the same as vorna render --help"}},
            .run = [name](const Given&) {
                const Program program = make_program();
                const auto command = std::ranges::find(program.commands, *name, &Command::name);
                std::cout << manual::help_of(command == program.commands.end() ? manual::page_of(program)
                                                                               : manual::page_of(program, *command));
                return exit_status::done;
            }};
}

} // namespace vorna::app
