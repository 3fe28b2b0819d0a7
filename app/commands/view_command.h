// The command `view`: a model in a window.
#pragma once

namespace CLI {
class App;
}

namespace vorna::app {

// Adds the command; its callback sets the exit status and throws for failures.
void add_view_command(CLI::App& application, int& status);

} // namespace vorna::app
