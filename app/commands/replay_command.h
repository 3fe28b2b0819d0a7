// vorna replay: pictures at slot level.
#pragma once

namespace CLI {
class App;
}

namespace vorna::app {

// The command runs while the application parses its arguments and leaves its exit status in the variable.
void add_replay_command(CLI::App& application, int& status);

} // namespace vorna::app
