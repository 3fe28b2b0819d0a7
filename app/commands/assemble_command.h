// The command `assemble`: parts of a picture, drawn apart from each other, as one picture.
#pragma once

namespace CLI {
class App;
}

namespace vorna::app {

// status: where the command leaves its exit status.
void add_assemble_command(CLI::App& application, int& status);

} // namespace vorna::app
