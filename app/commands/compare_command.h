// The command `compare`: whether two PNG files hold the same pixels.
#pragma once

namespace CLI {
class App;
}

namespace vorna::app {

void add_compare_command(CLI::App& application, int& status);

} // namespace vorna::app
