// What the commands share: errors with their exit status, and the choice of the renderer module.
#pragma once

#include <filesystem>
#include <initializer_list>
#include <string>
#include <vector>

#include "drawing/files/usage_error.h"
#include "drawing/recording/session.h"

namespace CLI {
class App;
class Validator;
} // namespace CLI

namespace vorna::app {

namespace exit_status {
inline constexpr int done = 0;
inline constexpr int failed = 1;
inline constexpr int wrong_usage = 2; // or wrong input
} // namespace exit_status

// The end of a command's help and manual page: examples with what they do, each a line that the command understands, what else is
// to be said, and the exit statuses. A heading ends in a colon, and what belongs to it is indented.
struct Example {
    const char *command, *meaning;
};
inline constexpr const char* usual_statuses = "0 done, 1 failed, 2 wrong usage or input.";
std::string footer(std::initializer_list<Example> examples, const std::string& more = {},
                   const std::string& statuses = usual_statuses);

// Puts options under a heading of the help: names with spaces between. Throws when there is none of such a name.
void group_options(CLI::App& command, const char* heading, const std::string& names);

// iso, front or back
std::string list_of(const std::vector<std::string>& names);

// Tells help and completion of values that an option may have. It refuses none: who reads them does, and says what was expected.
CLI::Validator values(const std::vector<std::string>& names);
// The same, and refuses all others.
CLI::Validator one_of(const std::vector<std::string>& names);

// Refuses what is no number from least to most; of int and std::int64_t what is not whole, too.
template <class Number> CLI::Validator between(Number least, Number most);

// Adds --max-memory, which every command has that reads what others have written.
void add_memory_option(CLI::App& command, std::string& text);

// Refuses names of files to be written that end as files of other kinds do: pictures, models and documents. endings: in lower
// case and without the dot, the first one as it should be.
CLI::Validator written_as(const std::vector<std::string>& endings);

// Adds --module and --kernels, which every command takes.
void add_module_options(CLI::App& application);

// What --kernels says, empty without it.
std::string chosen_kernels(const CLI::App& application);

// What the options say; without --module the one built or installed with the host library. Throws when there is none.
drawing::Module_Choice chosen_module(const CLI::App& application);

// A module of the command's own, built or installed in the renderer's folder. Throws when it is not there; the message ends with
// the hint.
std::string module_beside_renderer(const std::string& name, const std::string& hint);

// The file of this command.
std::filesystem::path executable_path();

} // namespace vorna::app
