// Completion for shells: commands, options, values that have names, and files of the kinds that a command reads and writes.
#pragma once

#include <string>

namespace vorna::app::manual {

struct Page;

// Each from the page of the program with those of its commands. They need nothing but the shell itself.
std::string bash_completion_of(const Page& program);
std::string zsh_completion_of(const Page& program);
std::string fish_completion_of(const Page& program);

} // namespace vorna::app::manual
