// vorna check: whether a renderer module does what its host relies on.
#pragma once

namespace CLI {
class App;
}

namespace vorna::app {

// The command runs while the application parses its arguments and leaves its exit status in the variable.
void add_check_command(CLI::App& application, int& status);

} // namespace vorna::app
