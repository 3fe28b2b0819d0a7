// What the commands share: errors with their exit status, and the choice of the renderer module.
#pragma once

#include <stdexcept>
#include <string>

namespace CLI {
class App;
}

namespace app {

namespace exit_status {
inline constexpr int done = 0;
inline constexpr int failed = 1;
inline constexpr int wrong_usage = 2; // or wrong input
} // namespace exit_status

// Wrong usage or input; every other exception is a failure. The message is one line without the command's name.
class Usage_Error : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Which renderer draws.
struct Module_Choice {
    std::string path;
    std::string kernels; // empty = the renderer's own choice
};

// A module that comes with the command: beside the executable, else where it is installed. Throws when it is at neither place;
// the message ends with a hint, if there is one.
std::string module_beside(const std::string& name, const std::string& hint = "");

// Adds --module and --kernels, which every command takes.
void add_module_options(CLI::App& application);

// What the options say; without --module the module beside the executable, else the installed one. Throws when there is none.
Module_Choice chosen_module(const CLI::App& application);

} // namespace app
