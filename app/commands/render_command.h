// The command `render`: a model as a picture.
#pragma once

namespace CLI {
class App;
}

namespace vorna::app {

void add_render_command(CLI::App& application, int& status);

} // namespace vorna::app
