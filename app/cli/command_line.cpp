// The command line: all commands and their options.
#include "app/cli/command_line.h"

#include <string>

#include "app/cli/command.h"
#include "app/cli/help.h"
#include "app/cli/usage.h"
#include "app/commands/assemble_command.h"
#include "app/commands/check_command.h"
#include "app/commands/compare_command.h"
#include "app/commands/help_command.h"
#include "app/commands/info_command.h"
#include "app/commands/render_command.h"
#include "app/commands/replay_command.h"
#include "app/commands/view_command.h"
#include "vorna/version.h"

namespace vorna::app {

std::unique_ptr<CLI::App> make_command_line(int& status) {
    auto application = std::make_unique<CLI::App>("Draw models, maps and pictures exactly, without a display or a GPU.", "vorna");
    application->formatter(manual::help_formatter()); // the commands take it over
    application->set_help_flag("-h,--help", "Print this help and exit");
    application->set_version_flag("--version", std::string("vorna ") + VORNA_VERSION_TEXT, "Print the version and exit");
    application->allow_windows_style_options(false); // a path may begin with a slash there too
    application->require_subcommand(1);
    application->footer(footer({{"vorna render bunny.obj -o bunny.png", "a model as a picture"},
                                {"vorna render countries.json -o world.png --projection robinson --border dashed", "a map"},
                                {"vorna view bunny.obj", "turn the model in a window"},
                                {"vorna render --help", "what else a command can do"}}));
    add_module_options(*application);
    add_render_command(*application, status);
    add_view_command(*application, status);
    add_replay_command(*application, status);
    add_info_command(*application, status);
    add_compare_command(*application, status);
    add_assemble_command(*application, status);
    add_check_command(*application, status);
    add_help_command(*application, status);
    refuse_what_makes_no_sense(*application);
    return application;
}

} // namespace vorna::app
