// The command `render`: a model as a picture.
#pragma once

namespace CLI {
class App;
}

namespace app {

void add_render_command(CLI::App& application, int& status);

} // namespace app
