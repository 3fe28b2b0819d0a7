// The command `info`: what pictures are made of.
#pragma once

namespace CLI {
class App;
}

namespace vorna::app {

void add_info_command(CLI::App& application, int& status);

} // namespace vorna::app
