// The command `render`: models, maps and drawings as images.
#pragma once

namespace CLI {
class App;
}

namespace vorna::app {

void add_render_command(CLI::App& application, int& status);

} // namespace vorna::app
