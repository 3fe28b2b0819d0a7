// The command `help`: what the other commands say of themselves.
#pragma once

namespace CLI {
class App;
}

namespace vorna::app {

// After all other commands: it knows those that are there.
void add_help_command(CLI::App& application, int& status);

} // namespace vorna::app
