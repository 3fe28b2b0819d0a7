// The command line: all commands and their options.
#pragma once

#include <CLI/CLI.hpp>
#include <memory>

namespace vorna::app {

// Parsing it runs the command, which stores its exit status.
std::unique_ptr<CLI::App> make_command_line(int& status);

} // namespace vorna::app
