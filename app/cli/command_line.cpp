// The command line: the program with all its commands and their options.
#include "app/cli/command_line.h"

#include "app/commands/assemble_command.h"
#include "app/commands/check_command.h"
#include "app/commands/compare_command.h"
#include "app/commands/help_command.h"
#include "app/commands/info_command.h"
#include "app/commands/reduce_command.h"
#include "app/commands/render_command.h"
#include "app/commands/replay_command.h"
#include "app/commands/serve_command.h"
#include "app/commands/view_command.h"

namespace vorna::app {

Program make_program() {
    constexpr const char* group = "All commands";
    Program program;
    program.itself = {.name = "vorna",
                      .summary = "Draw models, maps and recordings exactly, without a display or a GPU.",
                      .options = {{.names = {"-h", "--help"}, .text = "Print this help and exit", .group = group},
                                  {.names = {"--version"}, .text = "Print the version and exit", .group = group},
                                  {.names = {"--module"},
                                   .value = text_value("MODULE"),
                                   .text = "Renderer module; by default the krb.vrd built or installed with this command",
                                   .target = &program.module->path,
                                   .group = group},
                                  {.names = {"--kernels"},
                                   .value = choice_value("NAME", {"portable", "baseline", "avx2", "avx512", "neon"}),
                                   .text = "Instruction set to draw with; by default the best that runs here",
                                   .target = &program.module->kernels,
                                   .group = group}},
                      .examples = {{"vorna render bunny.obj -o bunny.png", "a model as a picture"},
                                   {"vorna render countries.json -o world.png --projection robinson --border dashed", "a map"},
                                   {"vorna view bunny.obj", "turn the model in a window"},
                                   {"vorna render --help", "what else a command can do"}}};
    program.commands = {render_command(), view_command(),     replay_command(), info_command(), compare_command(),
                        reduce_command(), assemble_command(), serve_command(),  check_command()};
    program.commands.push_back(help_command(program.commands));
    return program;
}

} // namespace vorna::app
