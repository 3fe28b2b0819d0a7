// The command `help`: what the other commands say of themselves.
#include "app/commands/help_command.h"

#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "app/cli/command.h"
#include "app/cli/help.h"
#include "app/cli/page.h"

namespace vorna::app {

void add_help_command(CLI::App& application, int& status) {
    std::vector<std::string> names;
    for (const CLI::App* command : application.get_subcommands([](const CLI::App*) { return true; })) {
        names.push_back(command->get_name());
    }
    const auto name = std::make_shared<std::string>();
    CLI::App& command = *application.add_subcommand("help", "Tell what vorna or a command of it can do.");
    command.add_option("command", *name, "The command")->type_name("COMMAND")->check(one_of(names));
    command.footer(footer({{"vorna help", "the commands"}, {"vorna help render", "the same as vorna render --help"}}));
    command.fallthrough();
    command.callback([&application, &status, name] {
        std::cout << manual::help_of(manual::page_of(name->empty() ? application : *application.get_subcommand(*name)));
        status = exit_status::done;
    });
}

} // namespace vorna::app
