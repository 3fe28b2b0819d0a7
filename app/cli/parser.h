// Parses command lines by the tables of options.
#pragma once

#include <string>
#include <vector>

#include "app/cli/options.h"

namespace vorna::app {

// What is to be done: a command that is to run, or a text that is to be printed.
struct Request {
    Given given; // without a command: print the text
    std::string text;
};

// Stores the values where the tables say. arguments: without the program's name; those behind -- are files, whatever their names
// begin with. Throws Usage_Error for arguments that it does not understand, with a message in one line: the option or argument,
// what was expected and what was found.
Request parsed(const Program& program, std::vector<std::string> arguments);

// Parses the arguments and runs the command, or prints the text. Returns the exit status.
int run_command_line(const Program& program, std::vector<std::string> arguments);

} // namespace vorna::app
